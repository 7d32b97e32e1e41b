#include "trees/treedat.hpp"

#include <utility>

#include "frame/code_index.hpp"
#include "trees/jmk_group.hpp"

namespace tsrf_module_treedat {

namespace {

using frame::items;

Data read_lines(frame::Log& log, frame::TextInput& file) {
  Data table;
  std::int32_t TreeID = 0;
  double lad = 0.0;
  file.pass_title(log, 2);
  frame::ReadStatus status{};
  while ((status = file.read(TreeID, lad)) != frame::ReadStatus::end) {
    if (status == frame::ReadStatus::error) {
      log.lost_record(file, "### read error : LAD_simple data");
      continue;
    }
    const bool good = frame::attempt(log, &file, [&] {
      if (lad > 0.0 && !(lad > jmk::kMostOfLeaves)) return;
      log.data_error(items("lad in SurfProp data =", lad),
                     lad > 0.0 ? jmk::kMostOfLeavesRule : "it must be > 0",
                     items("treeid =", TreeID));
    });
    if (!good) lad = 1.0;
    table.TreeID.push_back(TreeID);
    table.lad.push_back(lad);
  }
  return table;
}

void check_unique(frame::Log& log, const std::vector<std::int32_t>& codes) {
  const frame::CodeIndex index(codes);
  frame::report_repeats(log, index, codes, [&](std::size_t first, std::size_t second) {
    log.data_error(items("TreeID in Tree data =", codes[second]),
                   "it is specified redundantly in line no. n1 & n2",
                   items("n1,n2 =", first + 1, second + 1));
  });
}

}  // namespace

void read_treedat(frame::Log& log, frame::TextInput& file, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_treedat)(read_treedat)");
  frame::allocating(log, "TreeID,LAD", frame::bytes_of<char>(file.content().size()), [&] {
    Data table = read_lines(log, file);
    check_unique(log, table.TreeID);
    const bool first = data.TreeID.empty();
    if (!first && table.TreeID != data.TreeID) log.fail("### error : invalid multi-day data");
    data = std::move(table);
  });
}

void set_meshid(frame::Log& log, const Data& data, jmk_module_data::Data& cells) {
  const frame::Tag tag(log, "(tsrf_module_treedat)(set_meshid)");
  frame::allocating(log, "TreeID", frame::bytes_of<std::int32_t>(data.TreeID.size(), 2), [&] {
    const frame::CodeIndex index(data.TreeID);
    for (jmk_module_data::LeafCell& cell : cells.cells) {
      cell.row = index.find(cell.TreeID);
      if (cell.row >= 0) continue;
      frame::attempt(log, [&] {
        log.data_error(items("TreeID in TreeMesh data =", cell.TreeID),
                       "it is not defined in TreeData");
      });
      if (data.TreeID.empty()) log.fail();
      cell.row = 0;
    }
  });
}

}  // namespace tsrf_module_treedat
