#include "flow/linear/amgcg_pre.hpp"

#include <algorithm>

namespace flow {

namespace {

/// Cells that the coarsest level has at most, where coarser ones can be made.
constexpr std::size_t kFewCells = 64;

/// Sweeps of one colour on each side of the correction. A correction that is constant over a coarse
/// cell leaves the more to the smoother, the more levels take part: more sweeps on coarse levels
/// keep the iterations from growing with the grid (Bramble, Pasciak and Xu 1991).
std::int32_t sweeps_of(std::size_t level) {
  return 4 + 2 * static_cast<std::int32_t>(std::min<std::size_t>(level, 2));
}

/// Calls `work(slot, cell)` for all cells: the slot on the finest level, the place in a field.
template <class Work>
void each_slot(const AmgLevel& level, const Box& box, Work&& work) {
  for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    const std::size_t even = level.slot(0, j - 1, k - 1);
    const std::size_t odd = even + level.odd();
    const auto n = static_cast<std::size_t>(box.n[0]);
    for (std::size_t i = 0; i + 1 < n; i += 2) {
      work(even + i / 2, place + i);
      work(odd + i / 2, place + i + 1);
    }
    if (n % 2 != 0) work(even + n / 2, place + n - 1);
  });
}

/// Levels until few cells are left, and the way between them.
void make_levels(AmgGrid grid, AmgSystem& system) {
  std::vector<std::array<AmgMerge, 3>> merges;
  double limit = 0.0;
  do {
    system.levels.push_back(make_amg_level(grid));
    system.levels.back().sweeps = sweeps_of(merges.size());
    grid = coarsen(grid, limit, merges.emplace_back());
  } while (grid.size() > kFewCells);
  system.last = sized_level(grid.n);
  system.direct = AmgDirect(grid);
  system.work.assign(grid.size(), 0.0);
  for (std::size_t l = 0; l < merges.size(); ++l) {
    join_levels(merges[l], system.levels[l], system.coarser(l));
  }
}

}  // namespace

void flw_amgcg_pre(frame::Log& log, const FiveBlocks& blocks, const Flags& fluid,
                   const AmgGeometry& geometry, AmgSystem& system, InstructionSet set) {
  frame::allocating(log, "amgcg", frame::bytes_of<double>(fluid.all().size(), 26), [&] {
    system = {};
    make_levels(make_amg_grid(blocks, fluid, geometry), system);
    const std::size_t size = system.finest().size();
    for (Values* vector : {&system.b, &system.x, &system.p, &system.s, &system.w}) {
      vector->assign(size, 0.0);
    }
    system.sums.resize(static_cast<std::size_t>(system.finest().n[2]));
  });
  system.passes = amg_passes(set);
}

void gather_rows(const AmgSystem& system, const Field& from, Values& to) {
  const AmgLevel& level = system.levels.front();
  each_slot(level, from.box(), [&](std::size_t slot, std::size_t place) {
    to[slot] = level.inverse[slot] > 0.0 ? from[place] : 0.0;
  });
}

void scatter_rows(const AmgSystem& system, const Values& from, Field& to) {
  each_slot(system.levels.front(), to.box(),
            [&](std::size_t slot, std::size_t place) { to[place] = from[slot]; });
}

}  // namespace flow
