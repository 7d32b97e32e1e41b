#include "flow/linear/amgcg_pre.hpp"

#include <algorithm>

#include "flow/share.hpp"

namespace flow {

namespace {

/// Cells that the coarsest level has at most, where coarser ones can be made.
constexpr std::size_t kFewCells = 64;

/// Sweeps of one colour on each side of the correction. A correction that is constant over a coarse
/// cell leaves the more to the smoother, the more levels take part: more sweeps on coarse levels
/// keep the iterations from growing with the grid (Bramble, Pasciak and Xu 1991).
std::int32_t sweeps_of(std::size_t level, bool broken) {
  return (broken ? 6 : 4) + 2 * static_cast<std::int32_t>(std::min<std::size_t>(level, 2));
}

/// True where the air is full of single obstacles: more than a quarter of the couplings that its
/// cells would have in the open are not there. Its coarse grids tell less, and the smoother has to
/// do more.
bool is_broken(const AmgGrid& grid) {
  std::size_t cells = 0;
  std::size_t couplings = 0;
  for (const double d : grid.diagonal()) cells += d > 0.0 ? 1 : 0;
  std::size_t axes = 0;
  for (std::size_t a = 0; a < 3; ++a) {
    axes += grid.n[a] > 1 ? 1 : 0;
    for (const double c : grid.c[a]) couplings += c > 0.0 ? 1 : 0;
  }
  return 4 * couplings < 3 * axes * cells;
}

/// Calls `work(slot, cell)` for all cells: the slot on the finest level, the place in a field.
template <class Work>
void each_slot(frame::Crew& crew, const AmgLevel& level, const Box& box, Work&& work) {
  share_rows(crew, box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
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

/// The levels below the finest until few cells are left, and the way between them.
void make_levels(AmgGrid grid, AmgSystem& system) {
  std::vector<std::array<AmgMerge, 3>> merges;
  double limit = 0.0;
  const bool broken = is_broken(grid);
  for (;;) {
    system.levels.back().sweeps = sweeps_of(merges.size(), broken);
    grid = coarsen(grid, limit, merges.emplace_back());
    if (grid.size() <= kFewCells) break;
    system.levels.push_back(make_amg_level(grid));
    note_equal_rows(system.levels.back());
  }
  system.last = sized_level(grid.n);
  system.direct = AmgDirect(grid);
  system.work.assign(grid.size(), 0.0);
  for (std::size_t l = 0; l < merges.size(); ++l) {
    join_levels(merges[l], system.levels[l], system.coarser(l));
  }
}

/// The system in double precision.
void make_exact(const AmgGrid& grid, AmgSystem& system) {
  const AmgLevel& finest = system.finest();
  AmgExact& exact = system.exact;
  for (Values* vector : {&exact.c[0], &exact.c[1], &exact.c[2], &exact.d, &exact.b, &exact.x}) {
    vector->assign(finest.size(), 0.0);
  }
  exact.weight = finest.inverse;
  const std::vector<double> diagonal = grid.diagonal();
  each_cell_slot(finest, [&](std::size_t cell, std::size_t slot) {
    for (std::size_t a = 0; a < 3; ++a) exact.c[a][slot] = grid.c[a][cell];
    exact.d[slot] = diagonal[cell];
  });
}

void note_finest_rows(AmgSystem& system) {
  const AmgExact& exact = system.exact;
  std::vector<Bytes> others{std::as_bytes(std::span(exact.weight))};
  for (const Values* vector : {&exact.c[0], &exact.c[1], &exact.c[2], &exact.d}) {
    others.push_back(std::as_bytes(std::span(*vector)));
  }
  note_equal_rows(system.finest(), std::move(others));
}

}  // namespace

void flw_amgcg_pre(frame::Log& log, const FiveBlocks& blocks, const Flags& fluid,
                   const AmgGeometry& geometry, AmgSystem& system, InstructionSet set) {
  frame::allocating(log, "amgcg", frame::bytes_of<double>(fluid.all().size(), 26), [&] {
    system = {};
    AmgGrid grid = make_amg_grid(blocks, fluid, geometry);
    system.levels.push_back(make_amg_level(grid));
    make_exact(grid, system);
    for (const std::size_t place : geometry.uncounted) {
      const auto [i, j, k] = index_of(fluid.box(), place);
      system.exact.weight[system.finest().slot(i, j, k)] = 0.0F;
    }
    note_finest_rows(system);
    make_levels(std::move(grid), system);
    for (Floats* vector : {&system.x, &system.p, &system.s, &system.w}) {
      vector->assign(system.finest().size(), 0.0F);
    }
    const auto layers = static_cast<std::size_t>(system.finest().n[2]);
    system.sums.resize(layers);
    system.row_sums.resize(static_cast<std::size_t>(system.finest().n[1]));
    system.norms.assign(kLanes * layers, 0.0);
  });
  system.passes = amg_passes(set);
}

void gather_rows(frame::Crew& crew, const Field& from, AmgSystem& system) {
  const AmgLevel& level = system.finest();
  each_slot(crew, level, from.box(), [&](std::size_t slot, std::size_t place) {
    system.exact.b[slot] = level.inverse[slot] > 0.0F ? from[place] : 0.0;
  });
}

void scatter_rows(frame::Crew& crew, const AmgSystem& system, Field& to) {
  each_slot(crew, system.levels.front(), to.box(),
            [&](std::size_t slot, std::size_t place) { to[place] = system.exact.x[slot]; });
}

}  // namespace flow
