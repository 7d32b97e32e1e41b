#include "flow/linear/amg_grid.hpp"

#include <algorithm>

namespace flow {

namespace {

/// Calls `work(cell, index)` for all cells of a grid, in the order of their numbers.
template <class Work>
void each_cell(const Triple& n, Work&& work) {
  std::size_t cell = 0;
  for (std::int32_t k = 0; k < n[2]; ++k) {
    for (std::int32_t j = 0; j < n[1]; ++j) {
      for (std::int32_t i = 0; i < n[0]; ++i) work(cell++, Triple{i, j, k});
    }
  }
}

/// The neighbour at the smaller index, the last one for the first.
Triple before(const Triple& n, Triple at, std::size_t axis) {
  at[axis] = at[axis] > 0 ? at[axis] - 1 : n[axis] - 1;
  return at;
}

/// A cell is thin up to this many times the width of the level: cells that differ little are merged
/// together.
constexpr double kThin = 1.3;

AmgMerge merge_axis(const std::vector<double>& width, double limit) {
  AmgMerge merge;
  const auto thin = [&](std::size_t i) { return i < width.size() && width[i] <= kThin * limit; };
  for (std::size_t i = 0; i < width.size();) {
    std::size_t take = thin(i) && thin(i + 1) ? 2 : 1;
    if (take == 2 && i + 3 == width.size() && thin(i + 2)) take = 3;
    merge.parent.insert(merge.parent.end(), take, merge.cells++);
    i += take;
  }
  return merge;
}

std::vector<double> merged_widths(const AmgMerge& merge, const std::vector<double>& fine) {
  std::vector<double> width(static_cast<std::size_t>(merge.cells), 0.0);
  for (std::size_t i = 0; i < fine.size(); ++i) {
    width[static_cast<std::size_t>(merge.parent[i])] += fine[i];
  }
  return width;
}

double thinnest(const AmgGrid& grid) {
  double least = 0.0;
  for (std::size_t a = 0; a < 3; ++a) {
    if (grid.n[a] == 1) continue;
    for (const double w : grid.width[a]) least = least > 0.0 ? std::min(least, w) : w;
  }
  return least;
}

/// Finer of a distance over the coarser: between the centres of a cell and the one before.
double nearer(const AmgGrid& fine, const AmgGrid& coarse, const AmgMerge& merge, std::size_t axis,
              std::int32_t cell, std::int32_t neighbour) {
  const auto u = [](std::int32_t index) { return static_cast<std::size_t>(index); };
  const std::vector<double>& f = fine.width[axis];
  const std::vector<double>& c = coarse.width[axis];
  return (f[u(cell)] + f[u(neighbour)]) /
         (c[u(merge.parent[u(cell)])] + c[u(merge.parent[u(neighbour)])]);
}

}  // namespace

bool AmgMerge::in_pairs() const {
  const auto n = static_cast<std::int32_t>(parent.size());
  for (std::int32_t i = 0; i < n; ++i) {
    const bool joins = i == n - 1 && n > 2 && parent[static_cast<std::size_t>(i)] == i / 2 - 1;
    if (parent[static_cast<std::size_t>(i)] != i / 2 && !joins) return false;
  }
  return n > 1;
}

std::vector<double> AmgGrid::beyond() const {
  std::vector<double> sum = other;
  for (const HeldFace& face : held) sum[face.cell] += face.coupling;
  return sum;
}

std::vector<double> AmgGrid::diagonal() const {
  std::vector<double> sum = beyond();
  each_cell(n, [&](std::size_t cell, const Triple& index) {
    for (std::size_t a = 0; a < 3; ++a) {
      if (c[a][cell] == 0.0) continue;
      const auto [i, j, k] = before(n, index, a);
      sum[cell] += c[a][cell];
      sum[at(i, j, k)] += c[a][cell];
    }
  });
  return sum;
}

Triple index_of(const Box& box, std::size_t place) {
  const std::size_t row = place / box.extent(0);
  const auto index = [](std::size_t at) { return static_cast<std::int32_t>(at) - kHalo; };
  return {index(place % box.extent(0)), index(row % box.extent(1)), index(row / box.extent(1))};
}

AmgGrid make_amg_grid(const FiveBlocks& blocks, const Flags& fluid, const AmgGeometry& geometry) {
  const Box& box = fluid.box();
  AmgGrid grid;
  grid.n = box.n;
  grid.width = geometry.width;
  const auto cells = static_cast<std::size_t>(box.cells());
  for (auto& c : grid.c) c.assign(cells, 0.0);
  grid.other.assign(cells, 0.0);
  std::vector<double> diagonal(cells, 0.0);
  each_cell(box.n, [&](std::size_t cell, const Triple& index) {
    const std::size_t place = box.at(index[0] + 1, index[1] + 1, index[2] + 1);
    if (fluid[place] <= 0) return;
    diagonal[cell] = blocks.diagonal[place];
    for (std::size_t a = 0; a < 3; ++a) {
      if (index[a] > 0) grid.c[a][cell] = -blocks.lower[a][place];
    }
    if (geometry.periodic_y && index[1] == 0 && box.n[1] > 1) {
      grid.c[1][cell] = -blocks.wrap(index[0] + 1, box.n[1], index[2] + 1);
    }
  });
  for (const HeldFace& face : geometry.held) {
    const auto [i, j, k] = index_of(box, face.cell);
    grid.held.push_back({grid.at(i, j, k), face.axis, face.coupling});
  }
  const std::vector<double> known = grid.diagonal();
  for (std::size_t cell = 0; cell < cells; ++cell) {
    const double rest = diagonal[cell] - known[cell];
    if (rest > 1e-12 * diagonal[cell]) grid.other[cell] = rest;  // else rounding
  }
  return grid;
}

AmgGrid coarsen(const AmgGrid& fine, double& limit, std::array<AmgMerge, 3>& merge) {
  AmgGrid coarse;
  limit = std::max(2.0 * limit, thinnest(fine));
  for (;; limit *= 2.0) {
    for (std::size_t a = 0; a < 3; ++a) {
      merge[a] = merge_axis(fine.width[a], limit);
      coarse.n[a] = merge[a].cells;
    }
    if (coarse.n != fine.n || fine.size() == 1) break;
  }
  for (std::size_t a = 0; a < 3; ++a) coarse.width[a] = merged_widths(merge[a], fine.width[a]);
  const auto cells = static_cast<std::size_t>(Box{coarse.n}.cells());
  for (auto& c : coarse.c) c.assign(cells, 0.0);
  coarse.other.assign(cells, 0.0);

  const auto parent = [&](const Triple& index) {
    Triple of{};
    for (std::size_t a = 0; a < 3; ++a) of[a] = merge[a].parent[static_cast<std::size_t>(index[a])];
    return coarse.at(of[0], of[1], of[2]);
  };
  std::vector<std::size_t> parents(fine.size());
  each_cell(fine.n, [&](std::size_t cell, const Triple& index) {
    const std::size_t to = parents[cell] = parent(index);
    coarse.other[to] += fine.other[cell];
    for (std::size_t a = 0; a < 3; ++a) {
      if (fine.c[a][cell] == 0.0) continue;
      const Triple next = before(fine.n, index, a);
      if (parent(next) == to) continue;
      coarse.c[a][to] += fine.c[a][cell] * nearer(fine, coarse, merge[a], a, index[a], next[a]);
    }
  });
  for (const HeldFace& face : fine.held) {
    const auto a = static_cast<std::size_t>(face.axis);
    const std::size_t stride = a == 0   ? 1
                               : a == 1 ? static_cast<std::size_t>(fine.n[0])
                                        : fine.size() / static_cast<std::size_t>(fine.n[2]);
    const std::size_t i = face.cell / stride % static_cast<std::size_t>(fine.n[a]);
    const double part =
        fine.width[a][i] / coarse.width[a][static_cast<std::size_t>(merge[a].parent[i])];
    coarse.held.push_back({parents[face.cell], face.axis, face.coupling * part});
  }
  return coarse;
}

}  // namespace flow
