#include "trees/jmk_data.hpp"

#include <algorithm>
#include <tuple>

#include "frame/namelist.hpp"
#include "trees/jmk_group.hpp"
#include "trees/model_area.hpp"

namespace jmk_module_data {

namespace {

using frame::items;

auto place(const LeafCell& cell) { return std::tuple(cell.k, cell.j, cell.i); }

std::vector<LeafCell> read_lines(frame::Log& log, frame::TextInput& file,
                                 const jmk::ModelArea& area, std::int32_t layers) {
  std::vector<LeafCell> lines;
  LeafCell line{};
  file.pass_title(log, 4);
  frame::ReadStatus status{};
  while ((status = file.read(line.i, line.j, line.k, line.TreeID)) != frame::ReadStatus::end) {
    if (status == frame::ReadStatus::error) {
      log.lost_record(file, "### read error : LAD data");
      continue;
    }
    const bool inside = frame::attempt(log, &file, [&] {
      if (area.holds(line.i, line.j) && line.k >= 0 && line.k < layers) return;
      log.data_error(items("i,j,k of LAD data=", line.i, line.j, line.k), "they are out of range");
    });
    if (!inside) continue;
    // Like patches, leaves are stored one layer above the k of their file.
    lines.push_back({area.grid_i(line.i), area.grid_j(line.j), line.k + 1, line.TreeID});
  }
  return lines;
}

/// Brings the cells in order; a line that repeats an earlier one counts once.
void put_in_order(frame::Log& log, std::vector<LeafCell>& cells) {
  std::stable_sort(cells.begin(), cells.end(),
                   [](const LeafCell& a, const LeafCell& b) { return place(a) < place(b); });
  const auto same_place = [](const LeafCell& a, const LeafCell& b) { return place(a) == place(b); };
  const auto of_two_kinds = [&](const LeafCell& a, const LeafCell& b) {
    return same_place(a, b) && a.TreeID != b.TreeID;
  };
  auto two_kinds = std::adjacent_find(cells.begin(), cells.end(), of_two_kinds);
  while (two_kinds != cells.end()) {
    frame::attempt(log, [&] {
      log.data_error(items("i,j,k of LAD data=", two_kinds->i, two_kinds->j, two_kinds->k - 1),
                     "two TreeID are specified",
                     items("treeid =", two_kinds->TreeID, (two_kinds + 1)->TreeID));
    });
    two_kinds = std::adjacent_find(two_kinds + 1, cells.end(), of_two_kinds);
  }
  cells.erase(std::unique(cells.begin(), cells.end(), same_place), cells.end());
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(jmk_module_data)(inputdata)");
  frame::Group group("JMK_DATA", {{"CALJMK", data.CALJMK}});
  group.read(log, control, jmk::kReader);
}

void read_lad(frame::Log& log, frame::TextInput& file, const std::array<std::int32_t, 3>& grid,
              const tsrf_module_grdindx::Data& grid_index, std::int32_t NDIV, Data& data) {
  const frame::Tag tag(log, "(jmk2_prep_init)(read_lad)");
  const jmk::ModelArea area(grid[0], grid[1], grid_index, NDIV);
  frame::allocating(log, "LAD", frame::bytes_of<char>(file.content().size()), [&] {
    data.cells = read_lines(log, file, area, grid[2]);
    if (data.cells.empty()) log.data_error("lack of LAD data");
    put_in_order(log, data.cells);
    std::erase_if(data.cells, [](const LeafCell& cell) { return cell.TreeID == 0; });
  });
  data.highest_layer = data.cells.empty() ? 0 : data.cells.back().k;
}

}  // namespace jmk_module_data
