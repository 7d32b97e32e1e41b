#include "surface/conduction.hpp"

#include <algorithm>
#include <array>
#include <map>

namespace solid1d {

namespace {

/// Patches of a block: some 4 kB of temperatures on their way through the layers.
constexpr std::size_t kColumnLanes = 128;
/// Blocks take their patches from a stretch this long, so that all kinds of a stretch find its
/// temperatures in the second cache.
constexpr std::size_t kStretch = 4096;
/// Blocks that one hand takes at once, some 20 microseconds.
constexpr std::size_t kBlocks = 32;

using Lanes = std::array<double, kColumnLanes>;

/// Everything that makes a column what it is, as a key that can be compared.
std::vector<double> signature(const tsrf_module_data::Data& state, std::size_t p, bool heated) {
  const std::int32_t cells = state.nlyr[p];
  std::vector<double> key = {static_cast<double>(cells), heated ? 1.0 : 0.0, state.gcond(p, 0)};
  for (std::int32_t k = 1; k <= cells; ++k) {
    key.insert(key.end(), {state.dzl(p, k - 1), state.capa(p, k - 1), state.gcond(p, k)});
  }
  return key;
}

/// Largest sum of conductances over heat capacity; the node behind the last cell takes part with
/// its marks of a place outside the column.
double stiffness(const tsrf_module_data::Data& state, std::size_t p) {
  double largest = 0.0;
  for (std::int32_t k = 1; k <= std::min(state.nlyr[p] + 1, state.mzg); ++k) {
    largest = std::max(largest, (state.gcond(p, k) + state.gcond(p, k - 1)) /
                                    (state.dzl(p, k - 1) * state.capa(p, k - 1)));
  }
  return largest;
}

void add_kind(const tsrf_module_data::Data& state, std::size_t p, bool heated, Work& work) {
  work.kinds.push_back({.cells = state.nlyr[p],
                        .first_cell = work.cells.size(),
                        .surface_gcond = state.gcond(p, 0),
                        .stiffness = stiffness(state, p),
                        .heated = heated});
  for (std::int32_t k = 1; k <= state.nlyr[p]; ++k) {
    work.cells.push_back(
        {.dzl = state.dzl(p, k - 1), .capa = state.capa(p, k - 1), .gcond = state.gcond(p, k)});
  }
}

/// Kind of every patch's column; -1 where it has none.
std::vector<std::int32_t> find_kinds(const tsrf_module_data::Data& state,
                                     std::span<const std::int32_t> heated, Work& work) {
  std::vector<std::int32_t> kind(state.lcal.size(), -1);
  std::map<std::vector<double>, std::int32_t> known;
  for (std::size_t p = 0; p < kind.size(); ++p) {
    if (state.lcal[p] < 1 || state.nlyr[p] < 1) continue;
    const bool source = std::ranges::binary_search(heated, static_cast<std::int32_t>(p));
    const auto [entry, is_new] = known.try_emplace(signature(state, p, source),
                                                   static_cast<std::int32_t>(work.kinds.size()));
    if (is_new) add_kind(state, p, source, work);
    kind[p] = entry->second;
  }
  return kind;
}

/// Cuts the patches of a stretch, which stand by kind from `begin` of the order on, into blocks.
void add_blocks(std::size_t begin, std::span<const std::int32_t> kind, Work& work) {
  for (std::size_t at = begin; at < work.order.size(); ++at) {
    const auto own = static_cast<std::size_t>(kind[work.order[at]]);
    const bool goes_on =
        at > begin && work.blocks.back().kind == own && work.blocks.back().count < kColumnLanes;
    if (!goes_on) work.blocks.push_back({at, 0, own});
    ++work.blocks.back().count;
  }
}

bool needs_implicit(const Kind& kind, double dt) { return kind.stiffness * dt > kExplicitLimit; }

/// The terms of the cells that hang on the step. `lower`, `diagonal` and `upper` are what forward
/// elimination makes of the rows of the matrix, which are the same in each step.
void set_step(double dt, Work& work) {
  work.dt = dt;
  for (Kind& kind : work.kinds) {
    kind.implicit = needs_implicit(kind, dt);
    double before = kind.surface_gcond;
    double upper = 0.0;  // of the row before
    for (std::int32_t k = 1; k <= kind.cells; ++k) {
      Cell& cell = work.cells[kind.first_cell + static_cast<std::size_t>(k - 1)];
      const double lower = -before / cell.dzl;
      const double next = -cell.gcond / cell.dzl;
      cell.rate = dt / cell.capa;
      // Surface and far node are held: they enter through the fluxes alone.
      cell.lower = k == 1 ? 0.0 : lower;
      cell.diagonal = cell.capa / dt - lower - next - cell.lower * upper;
      cell.upper = (k == kind.cells ? 0.0 : next) / cell.diagonal;
      upper = cell.upper;
      before = cell.gcond;
    }
  }
}

/// Solves the rows of a block's implicit columns; the right sides `rows` (kColumnLanes values a
/// cell) become the changes of temperature.
void solve_tridiag(std::span<const Cell> cells, std::size_t count, double* rows) {
  for (std::size_t k = 0; k < cells.size(); ++k) {
    double* const row = rows + k * kColumnLanes;
    const double* const before = k == 0 ? row : row - kColumnLanes;
    const double lower = cells[k].lower;
    const double diagonal = cells[k].diagonal;
    for (std::size_t i = 0; i < count; ++i) row[i] = (row[i] - lower * before[i]) / diagonal;
  }
  for (std::size_t k = cells.size() - 1; k-- > 0;) {
    double* const row = rows + k * kColumnLanes;
    const double upper = cells[k].upper;
    for (std::size_t i = 0; i < count; ++i) row[i] -= upper * row[i + kColumnLanes];
  }
}

/// The patches of one block on their way from the surface to the far node.
class Pass {
 public:
  Pass(const Work& work, const ColumnBlock& block, double* rows,
       const frame::PatchTable<double>& qlayer, tsrf_module_data::Data& state)
      : kind_(work.kinds[block.kind]),
        cells_(work.cells.data() + kind_.first_cell, static_cast<std::size_t>(kind_.cells)),
        patches_(work.order.data() + block.first, block.count),
        rows_(rows),
        qlayer_(qlayer),
        tlyr_(state.tlyr) {
    gather(0, here_);
    gather(1, next_);
    set_flux(kind_.surface_gcond);
  }

  void advance_explicit() {
    for (std::int32_t k = 1; k <= kind_.cells; ++k) {
      const Cell& cell = enter(k);
      double* const row = tlyr_.row(k).data();
      for (std::size_t i = 0; i < patches_.size(); ++i) {
        row[patches_[i]] = here_[i] + cell.rate * gain_[i];
      }
    }
  }

  void advance_implicit() {
    for (std::int32_t k = 1; k <= kind_.cells; ++k) {
      enter(k);
      std::copy_n(gain_.begin(), patches_.size(), changes_of(k));
    }
    solve_tridiag(cells_, patches_.size(), rows_);
    for (std::int32_t k = 1; k <= kind_.cells; ++k) {
      const double* const change = changes_of(k);
      double* const row = tlyr_.row(k).data();
      for (std::size_t i = 0; i < patches_.size(); ++i) row[patches_[i]] += change[i];
    }
  }

 private:
  void gather(std::int32_t k, Lanes& values) const {
    const double* const row = tlyr_.row(k).data();
    for (std::size_t i = 0; i < patches_.size(); ++i) values[i] = row[patches_[i]];
  }
  void set_flux(double gcond) {
    for (std::size_t i = 0; i < patches_.size(); ++i) flux_[i] = (next_[i] - here_[i]) * gcond;
  }
  [[nodiscard]] double* changes_of(std::int32_t k) const {
    return rows_ + static_cast<std::size_t>(k - 1) * kColumnLanes;
  }

  /// Steps on to cell k: `here_` is its temperature, `gain_` what flows into it by volume.
  const Cell& enter(std::int32_t k) {
    const Cell& cell = cells_[static_cast<std::size_t>(k - 1)];
    std::copy_n(next_.begin(), patches_.size(), here_.begin());
    gather(k + 1, next_);
    for (std::size_t i = 0; i < patches_.size(); ++i) {
      const double flux = (next_[i] - here_[i]) * cell.gcond;
      gain_[i] = (flux - flux_[i]) / cell.dzl;
      flux_[i] = flux;
    }
    if (kind_.heated) {
      const double* const source = qlayer_.row(k - 1).data();
      for (std::size_t i = 0; i < patches_.size(); ++i) gain_[i] += source[patches_[i]];
    }
    return cell;
  }

  const Kind& kind_;
  std::span<const Cell> cells_;
  std::span<const std::uint32_t> patches_;
  double* rows_;
  const frame::PatchTable<double>& qlayer_;
  frame::PatchTable<double>& tlyr_;
  Lanes here_, next_, flux_, gain_;
};

}  // namespace

void set_columns(frame::Log& log, const tsrf_module_data::Data& state,
                 std::span<const std::int32_t> heated, Work& work) {
  const frame::Tag tag(log, "(solid1d)(set_columns)");
  frame::allocating(
      log, "kinds of columns", frame::bytes_of<std::int32_t>(state.lcal.size(), 2), [&] {
        work = {};
        const std::vector<std::int32_t> kind = find_kinds(state, heated, work);
        for (std::size_t first = 0; first < kind.size(); first += kStretch) {
          const std::size_t last = std::min(first + kStretch, kind.size());
          const std::size_t begin = work.order.size();
          for (std::size_t p = first; p < last; ++p) {
            if (kind[p] >= 0) work.order.push_back(static_cast<std::uint32_t>(p));
          }
          std::ranges::stable_sort(work.order.begin() + static_cast<std::ptrdiff_t>(begin),
                                   work.order.end(), {}, [&](std::uint32_t p) { return kind[p]; });
          add_blocks(begin, kind, work);
        }
        for (const Kind& k : work.kinds) work.most_cells = std::max(work.most_cells, k.cells);
      });
}

void warn_of_implicit(frame::Log& log, double dt, const tsrf_module_patch::Data& patch,
                      const Work& work) {
  std::size_t columns = 0;
  double area = 0.0;
  const ColumnBlock* worst = nullptr;
  for (const ColumnBlock& block : work.blocks) {
    const Kind& kind = work.kinds[block.kind];
    if (!needs_implicit(kind, dt)) continue;
    columns += block.count;
    for (std::size_t n = 0; n < block.count; ++n) area += patch.area[work.order[block.first + n]];
    const bool more =
        worst == nullptr || kind.surface_gcond > work.kinds[worst->kind].surface_gcond;
    if (more) worst = &block;
  }
  if (worst == nullptr) return;
  const Kind& kind = work.kinds[worst->kind];
  const std::size_t p = work.order[worst->first];
  using frame::items;
  log.warning(items("%%% warning :", columns, "columns of", area, "m2 are implicit at dtmax =", dt,
                    "s; their surfaces act as if they had more heat capacity"),
              items("%%% the most : PID =", patch.PID[p], "SurfID =", patch.SurfID[p], ":",
                    kind.surface_gcond * dt,
                    "J/m2 K; explicit up to dtmax =", kExplicitLimit / kind.stiffness, "s"));
}

void solid1d(frame::Crew& crew, double dt, const frame::PatchTable<double>& qlayer,
             tsrf_module_data::Data& state, Work& work) {
  if (dt != work.dt) set_step(dt, work);
  const std::size_t scratch = static_cast<std::size_t>(work.most_cells) * kColumnLanes;
  work.rows.resize(crew.hands() * scratch);
  crew.share(work.blocks.size(), kBlocks, [&](frame::Crew::Stretch part) {
    double* const rows = work.rows.data() + part.hand * scratch;
    for (std::size_t n = part.first; n < part.last; ++n) {
      const ColumnBlock& block = work.blocks[n];
      Pass pass(work, block, rows, qlayer, state);
      if (work.kinds[block.kind].implicit) {
        pass.advance_implicit();
      } else {
        pass.advance_explicit();
      }
    }
  });
}

void list_arrays(const Work& work, frame::ArrayList& list) {
  list.add("column kinds", work.kinds, work.cells, work.order, work.blocks, work.rows);
}

}  // namespace solid1d
