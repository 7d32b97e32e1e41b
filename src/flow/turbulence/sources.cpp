#include "flow/turbulence/sources.hpp"

#include <algorithm>
#include <cmath>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

constexpr double kTiny = 1e-20;  ///< no divisor is below it

FLOW_INLINE double held(double divisor) { return divisor < kTiny ? kTiny : divisor; }

FLOW_CLONES void product_row(std::size_t count, const double* a, const double* b, double* out) {
  for (std::size_t i = 0; i < count; ++i) out[i] = a[i] * b[i];
}

/// out += gravity dT/dx, whose neighbours are `s` away.
template <class Weight>
FLOW_INLINE void add_slope(std::size_t count, double gravity, const double* t, std::size_t s,
                           Weight lower, Weight upper, double* __restrict out) {
  for (std::size_t i = 0; i < count; ++i) {
    out[i] += gravity * (upper[i] * (t[i + s] - t[i]) + lower[i] * (t[i] - t[i - s]));
  }
}

FLOW_CLONES void add_along(std::size_t count, double gravity, const double* t,
                           const CentreSlope& slope, double* out) {
  add_slope(count, gravity, t, 1, AxisMetric::from(slope.lower, 1),
            AxisMetric::from(slope.upper, 1), out);
}

FLOW_CLONES void add_across(std::size_t count, double gravity, const double* t, std::size_t s,
                            const CentreSlope& slope, std::int32_t index, double* out) {
  add_slope(count, gravity, t, s, Same{AxisMetric::at(slope.lower, index)},
            Same{AxisMetric::at(slope.upper, index)}, out);
}

FLOW_CLONES void scale_row(std::size_t count, double factor, const double* mut, const double* t,
                           double* out) {
  for (std::size_t i = 0; i < count; ++i) out[i] *= factor * mut[i] / t[i];
}

/// g . grad T of a cell beside the rim: across a face of the rim nothing is known of T.
double slope_beside(const Domain& domain, const RimCell& cell, const Field& t) {
  double sum = 0.0;
  for (std::size_t a = 0; a < 3; ++a) {
    const double gravity = domain.settings.control.gravity[a];
    if (gravity == 0.0) continue;
    const std::size_t s = t.box().stride(static_cast<int>(a));
    const std::int32_t own = cell.index[a];
    const AxisTable& table = domain.grid.axis[a];
    const double below = (t[cell.cell] - t[cell.cell - s]) / table.dxc(own - 1);
    const double above = (t[cell.cell + s] - t[cell.cell]) / table.dxc(own);
    const bool has_below = cell.face[a][0] == RimCell::kAir;
    const bool has_above = cell.face[a][1] == RimCell::kAir;
    if (has_below && has_above) {
      sum += gravity * (table.dxc(own) * below + table.dxc(own - 1) * above) /
             (table.dxc(own - 1) + table.dxc(own));
    } else if (has_below || has_above) {
      sum += gravity * (has_below ? below : above);
    }
  }
  return sum;
}

/// The rows that the sources are formed from.
struct Rows {
  const double *r, *k, *eps;
  const double *gs, *buoyancy;
  double *gain_k, *gain_e, *sink_k, *sink_e;
};

FLOW_CLONES void source_row(std::size_t count, const Rows& at) {
  for (std::size_t i = 0; i < count; ++i) {
    const double k = held(at.k[i]);
    const double rate = at.eps[i] / k;
    const double lift = at.buoyancy[i] < 0.0 ? 0.0 : at.buoyancy[i];
    const double brake = at.buoyancy[i] < 0.0 ? -at.buoyancy[i] : 0.0;
    at.gain_k[i] = at.gs[i] + lift;
    at.sink_k[i] = at.r[i] * rate + brake / k;
    at.gain_e[i] = rate * (kC1 * at.gs[i] + kC3 * lift);
    at.sink_e[i] = kC2 * at.r[i] * rate;
  }
}

/// square += the square of a velocity.
FLOW_CLONES void square_row(std::size_t count, const double* u, double* square) {
  for (std::size_t i = 0; i < count; ++i) square[i] += u[i] * u[i];
}

/// What leaves make of the flow's energy.
struct DragRows {
  const double *r, *adrg, *volume, *square, *k, *eps;
};

FLOW_CLONES void drag_row(std::size_t count, double c, double ce, const DragRows& at,
                          double* gain_k, double* gain_e) {
  for (std::size_t i = 0; i < count; ++i) {
    const double speed = std::sqrt(at.square[i]);
    const double made = at.r[i] * at.adrg[i] * c * (at.square[i] * speed) / held(at.volume[i]);
    gain_k[i] += made;
    gain_e[i] += ce * at.eps[i] * made / held(at.k[i]);
  }
}

}  // namespace

SourceRows::SourceRows(const Box& box) {
  const auto n = static_cast<std::size_t>(box.n[0]);
  for (auto* row : {&gain[0], &gain[1], &sink[0], &sink[1], &buoyancy, &gs}) row->assign(n, 0.0);
}

void flw_cldspf(const State& state, const CellRow& row, const double* strain, SourceRows& out) {
  product_row(out.gs.size(), state.mut.data() + row.place, strain, out.gs.data());
}

void set_buoyancy(const Domain& domain, const Strain& strain, const State& state, const Field& t,
                  const CellRow& row, SourceRows& out) {
  const Control& control = domain.settings.control;
  const std::size_t n = out.buoyancy.size();
  double* const slope = out.buoyancy.data();
  std::fill_n(slope, n, 0.0);
  if (!control.itemp || !(control.prturb > 0.0)) return;
  const double* const own = t.data() + row.place;
  for (std::size_t a = 0; a < 3; ++a) {
    const double gravity = control.gravity[a];
    if (gravity == 0.0) continue;
    if (a == 0) {
      add_along(n, gravity, own, strain.slopes[0], slope);
    } else {
      add_across(n, gravity, own, t.box().stride(static_cast<int>(a)), strain.slopes[a],
                 a == 1 ? row.j : row.k, slope);
    }
  }
  for (const RimCell& cell : cells_of_row(strain.cells, row.place, t.box())) {
    slope[cell.cell - row.place] = slope_beside(domain, cell, t);
  }
  scale_row(n, 1.0 / control.prturb, state.mut.data() + row.place, own, slope);
}

void set_sources(const State& state, const CellRow& row, SourceRows& out) {
  const auto of = [&row](const Field& field) { return field.data() + row.place; };
  source_row(out.gs.size(),
             {of(state.r[0]), of(state.ak[0]), of(state.ak[1]), out.gs.data(), out.buoyancy.data(),
              out.gain[0].data(), out.gain[1].data(), out.sink[0].data(), out.sink[1].data()});
}

void flw_clkdrg(const Domain& domain, const State& state, const Velocities& velocities,
                const CellRow& row, double c, double ce, SourceRows& out) {
  const Field& adrg = domain.urban.adrg;
  if (adrg.empty()) return;
  const Box& box = adrg.box();
  const std::size_t n = out.gs.size();
  double* const square = out.gs.data();  // the production is in the gains by now
  std::fill_n(square, n, 0.0);
  for (std::size_t a = 0; a < 3; ++a) {
    if (!box.computed(static_cast<int>(a))) continue;
    square_row(n, velocities.cell[a].data() + row.place, square);
  }
  const auto of = [&row](const Field& field) { return field.data() + row.place; };
  drag_row(
      n, c, ce,
      {of(state.r[0]), of(adrg), of(domain.openings.gmc), square, of(state.ak[0]), of(state.ak[1])},
      out.gain[0].data(), out.gain[1].data());
}

}  // namespace flow
