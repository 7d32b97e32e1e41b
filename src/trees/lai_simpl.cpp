#include "trees/lai_simpl.hpp"

#include <cstddef>
#include <map>
#include <utility>

#include "trees/jmk_group.hpp"
#include "trees/model_area.hpp"

namespace tsrf_module_data {

namespace {

using frame::items;

constexpr double kFirstLeafTemperature = 300.0;  // [K]

struct PlanTree {
  double LAD = 0.0;
  double H = 0.0;
};
/// Trees by plan cell of the grid.
using Plan = std::map<std::pair<std::int32_t, std::int32_t>, PlanTree>;

Plan read_plan(frame::Log& log, frame::TextInput& file, const jmk::ModelArea& area) {
  Plan plan;
  file.pass_title(log, 4);
  std::int32_t i = 0, j = 0;
  PlanTree tree;
  frame::ReadStatus status{};
  const auto take = [&] {
    if (!area.holds(i, j)) {
      log.data_error(items("i,j of simple-LAD data=", i, j), "they are out of range");
    }
    if (tree.LAD < 0.0 || tree.H < 0.0) {
      log.data_error(items("lad,h of simple-LAD data=", tree.LAD, tree.H), "they must be >= 0",
                     items("i,j =", i, j));
    }
    if (tree.LAD > jmk::kMostOfLeaves) {
      log.data_error(items("lad of simple-LAD data=", tree.LAD), jmk::kMostOfLeavesRule,
                     items("i,j =", i, j));
    }
    if (!plan.emplace(std::pair(area.grid_i(i), area.grid_j(j)), tree).second) {
      log.data_error(items("duplicated i,j of simple-LAD data=", i, j));
    }
  };
  while ((status = file.read(i, j, tree.LAD, tree.H)) != frame::ReadStatus::end) {
    if (status == frame::ReadStatus::error) {
      log.lost_record(file, "### read error : LAD_simple data");
    } else {
      frame::attempt(log, &file, take);
    }
  }
  return plan;
}

}  // namespace

void read_lai_simpl(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                    const tsrf_module_grdindx::Data& grid_index, std::int32_t mx, std::int32_t my,
                    Data& data) {
  const frame::Tag tag(log, "(tsrf_module_data)(read_lai_simpl)");
  frame::allocating(log, "trees over patches", frame::bytes_of<char>(file.content().size()), [&] {
    const Plan plan = read_plan(log, file, jmk::ModelArea(mx, my, grid_index, 1));
    for (std::size_t p = 0; p < patch.type.size(); ++p) {
      if (patch.type[p] != tsrf_module_patch::kLand) continue;
      const auto place = plan.find({patch.si[p], patch.sj[p]});
      if (place == plan.end()) continue;
      data.treemk[p] = 1;
      data.treeax(p, 0) = place->second.LAD;
      data.treeax(p, 1) = place->second.H;
      data.treeax(p, 2) = kFirstLeafTemperature;
    }
  });
}

}  // namespace tsrf_module_data
