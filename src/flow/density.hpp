// flw_clrho: density by the equation of state of an ideal gas mixture.
//
// The density follows the thermodynamic pressure, which is one number for the whole domain, and
// not the pressure of the flow: it carries no sound. Called first in a step, again behind the
// temperature step, and by the pressure step of a closed domain.
#pragma once

#include "flow/boundary.hpp"
#include "flow/grid_tables.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"

namespace flow {

/// What the pressure of the equation of state adds to the thermodynamic one at a place: with
/// `idrdp` 2 the column of ambient air above or below the first node, else nothing.
struct AirColumn {
  Vector slope{};   ///< rate along each axis [Pa/m]
  Vector origin{};  ///< the first node [m]

  [[nodiscard]] double at(const Vector& x) const {
    double sum = 0.0;
    for (std::size_t a = 0; a < 3; ++a) sum += slope[a] * (x[a] - origin[a]);
    return sum;
  }
};
AirColumn state_column(const Settings& settings, const GridTables& grid);

/// Level 1 of `r` becomes pt/(8.314 T sum(ys/wm)). Reads t, ys with their halos and pt; writes r
/// level 1, halos of the computed axes included.
void set_density(frame::Crew& crew, const Settings& settings, const GridTables& grid, State& state);

/// flw_clrho: level 2 takes what level 1 was, then set_density. Reads t, ys, pt; writes r.
void flw_clrho(frame::Crew& crew, const Settings& settings, const GridTables& grid, State& state);

/// Density of the air that enters with the values of a group at the place `x` of its face.
double density_of(const Group& group, const AirColumn& column, const Vector& x, double pt);

}  // namespace flow
