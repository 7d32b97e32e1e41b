#include "flow/density.hpp"

#include <algorithm>
#include <utility>

#include "flow/row_kernel.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

/// moles[i] += ys[i]/wm.
FLOW_CLONES void add_moles(std::size_t count, const double* ys, double wm, double* moles) {
  for (std::size_t i = 0; i < count; ++i) moles[i] += ys[i] / wm;
}

/// r holds the moles a mass on entry, the density on return. The column at cell i is
/// `base` + slope*centre[i].
FLOW_CLONES void divide_row(std::size_t count, double base, double slope, const double* centre,
                            const double* t, double* r) {
  for (std::size_t i = 0; i < count; ++i) {
    r[i] = (base + slope * centre[i]) / (kGasConstant * t[i] * r[i]);
  }
}

}  // namespace

AirColumn state_column(const Settings& settings, const GridTables& grid) {
  AirColumn column;
  for (std::size_t a = 0; a < 3; ++a) {
    column.origin[a] = grid.axis[a].x(1);
    if (settings.records.idrdp == 2) {
      column.slope[a] = settings.ambient.density * settings.control.gravity[a];
    }
  }
  return column;
}

void set_density(frame::Crew& crew, const Settings& settings, const GridTables& grid,
                 State& state) {
  const Box& box = grid.box;
  const AirColumn column = state_column(settings, grid);
  const double* const centre = grid.axis[0].centre.data() + (box.computed(0) ? 0 : kHalo);
  share_wide_rows(
      crew, box, [&](std::size_t place, std::size_t count, std::int32_t j, std::int32_t k) {
        double* const r = state.r[0].data() + place;
        std::fill_n(r, count, 0.0);
        for (std::size_t s = 0; s < state.ys.size(); ++s) {
          add_moles(count, state.ys[s].data() + place, settings.species.wm[s], r);
        }
        const double base = state.pt + column.at({0.0, grid.axis[1].xc(j), grid.axis[2].xc(k)});
        divide_row(count, base, column.slope[0], centre, state.t.data() + place, r);
      });
}

void flw_clrho(frame::Crew& crew, const Settings& settings, const GridTables& grid, State& state) {
  std::swap(state.r[1], state.r[0]);
  set_density(crew, settings, grid, state);
}

double density_of(const Group& group, const AirColumn& column, const Vector& x, double pt) {
  return (pt + column.at(x)) / (group.gas * group.t);
}

}  // namespace flow
