// The fine grid and its cells.
#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>

#include "trees/canopy.hpp"

namespace tsrf_module_jumoku {

namespace {

[[noreturn]] void fault_of_grid(frame::Log& log, std::string_view what) {
  if (log.collects()) log.data_error(what);
  log.line("### error : data error");
  log.line(what);
  log.program_error("### program error -1- (tsrf_module_jumoku)", "(set_grid)");
}

FineGrid fine_grid(frame::Log& log, const tsrf_main01::Axes& surfaces, std::int32_t NDIV,
                   std::int32_t layers) {
  FineGrid grid;
  grid.NDIV = NDIV;
  for (std::size_t a = 0; a < 3; ++a) {
    const std::int32_t parts = a < 2 ? NDIV : 1;
    const std::int64_t cells = a < 2 ? std::int64_t{surfaces[a].cells} * NDIV : layers;
    if (cells >= std::numeric_limits<std::int32_t>::max()) {
      fault_of_grid(log, "ndiv in TSRF_JUMOKU is too large");
    }
    grid.cells[a] = static_cast<std::int32_t>(cells);
    grid.width[a].reserve(static_cast<std::size_t>(cells));
    for (std::int32_t i = 0; i < grid.cells[a]; ++i) {
      grid.width[a].push_back(surfaces[a].dx(i / parts + 1) / parts);
    }
  }
  return grid;
}

/// The coarse cells with leaves, in the order k, j, i.
std::vector<Place> blocks_of(const jmk_module_data::Data& leaves, std::int32_t NDIV) {
  std::vector<Place> blocks;
  for (const jmk_module_data::LeafCell& leaf : leaves.cells) {
    blocks.push_back({(leaf.i - 1) / NDIV, (leaf.j - 1) / NDIV, leaf.k - 1});
  }
  std::sort(blocks.begin(), blocks.end(), in_order);
  blocks.erase(std::unique(blocks.begin(), blocks.end()), blocks.end());
  return blocks;
}

/// Lists the fine cells of the blocks, row by row.
void list_cells(const FineGrid& grid, const std::vector<Place>& blocks, BlockCells& cells) {
  const std::int32_t NDIV = grid.NDIV;
  cells.row_first.reserve(grid.row(0, grid.cells[2]) + 1);
  cells.at.reserve(blocks.size() * static_cast<std::size_t>(NDIV) * static_cast<std::size_t>(NDIV));
  auto block = blocks.begin();
  for (std::int32_t k = 0; k < grid.cells[2]; ++k) {
    for (std::int32_t j = 0; j < grid.cells[1]; ++j) {
      cells.row_first.push_back(static_cast<std::int32_t>(cells.at.size()));
      auto in_row = block;
      for (; in_row != blocks.end() && (*in_row)[2] == k && (*in_row)[1] == j / NDIV; ++in_row) {
        for (std::int32_t i = (*in_row)[0] * NDIV; i < ((*in_row)[0] + 1) * NDIV; ++i) {
          cells.at.push_back({i, j, k});
        }
      }
      if ((j + 1) % NDIV == 0) block = in_row;
    }
  }
  cells.row_first.push_back(static_cast<std::int32_t>(cells.at.size()));
}

void list_leaves(const FineGrid& grid, const jmk_module_data::Data& leaves, BlockCells& cells,
                 Leaves& out) {
  cells.leaf.assign(cells.count(), -1);
  for (const jmk_module_data::LeafCell& leaf : leaves.cells) {
    const Place place{leaf.i - 1, leaf.j - 1, leaf.k - 1};
    const std::int32_t cell = cells.find(grid, place);
    cells.leaf[static_cast<std::size_t>(cell)] = static_cast<std::int32_t>(out.cell.size());
    out.cell.push_back(cell);
    out.volume.push_back(grid.size(place, 0) * grid.size(place, 1) * grid.size(place, 2));
  }
}

/// Joins the cells by their faces; faces that join nothing are outer ones.
void join_cells(const FineGrid& grid, BlockCells& cells, std::vector<OuterFace>& outer) {
  const std::size_t n = cells.count();
  cells.next.resize(n * kFaces);
  for (std::size_t c = 0; c < n; ++c) {
    for (std::size_t face = 0; face < kFaces; ++face) {
      Place behind = cells.at[c];
      behind[axis_of(face)] += outward(face);
      const std::int32_t neighbour = cells.find(grid, behind);
      if (neighbour >= 0) {
        cells.next[slot(c, face)] =
            static_cast<std::int32_t>(slot(static_cast<std::size_t>(neighbour), opposite(face)));
      } else {
        cells.next[slot(c, face)] = static_cast<std::int32_t>(n * kFaces + outer.size());
        outer.push_back({static_cast<std::int32_t>(c), static_cast<std::int32_t>(face),
                         grid.face_area(cells.at[c], axis_of(face))});
      }
    }
  }
}

}  // namespace

std::int32_t BlockCells::find(const FineGrid& grid, const Place& place) const {
  for (std::size_t a = 0; a < 3; ++a) {
    if (place[a] < 0 || place[a] >= grid.cells[a]) return -1;
  }
  const std::size_t row = grid.row(place[1], place[2]);
  const auto first = at.begin() + row_first[row];
  const auto last = at.begin() + row_first[row + 1];
  const auto found = std::lower_bound(
      first, last, place[0], [](const Place& cell, std::int32_t i) { return cell[0] < i; });
  if (found == last || (*found)[0] != place[0]) return -1;
  return static_cast<std::int32_t>(found - at.begin());
}

bool in_order(const Place& a, const Place& b) {
  return std::tie(a[2], a[1], a[0]) < std::tie(b[2], b[1], b[0]);
}

void set_grid(frame::Log& log, const tsrf_main01::Grid& surfaces,
              const jmk_module_data::Data& cells, const tsrf_module_patch::Data& patch,
              Data& data) {
  const auto* const axes = std::get_if<tsrf_main01::Axes>(&surfaces);
  if (axes == nullptr) fault_of_grid(log, "lack of Grid data");
  const std::int32_t NDIV = data.settings.NDIV;
  const auto parts = static_cast<std::size_t>(NDIV) * static_cast<std::size_t>(NDIV);
  const std::size_t bytes = frame::bytes_of<Place>(cells.cells.size(), parts);
  frame::allocating(log, "grid of the canopy", bytes, [&] {
    const std::vector<Place> blocks = blocks_of(cells, NDIV);
    // Slots, the outer faces' included, are numbered in 32 bits.
    const double slots = 12.0 * NDIV * NDIV * std::max(1.0, static_cast<double>(blocks.size()));
    if (slots > std::numeric_limits<std::int32_t>::max()) {
      fault_of_grid(log, "ndiv in TSRF_JUMOKU is too large");
    }
    FineGrid grid = fine_grid(log, *axes, NDIV, cells.highest_layer);
    // Before a grid that is too fine takes memory that the patches do not ask for.
    data.fault = fault_of(log, patch, grid, (*axes)[2].cells, blocks);
    if (data.fault.kind != PatchFault::none) return;
    data.grid = std::move(grid);
    list_cells(data.grid, blocks, data.cells);
    list_leaves(data.grid, cells, data.cells, data.leaves);
    join_cells(data.grid, data.cells, data.outer);
  });
}

}  // namespace tsrf_module_jumoku
