// The eddy viscosity mut of both turbulence models.
//
// Formed at the start of each step from what the step before left, so that it is no part of the
// state: a run that is taken up again forms the same.
#pragma once

#include "flow/terms/domain.hpp"
#include "flow/turbulence/strain.hpp"

namespace flow {

inline constexpr double kCmu = 0.09;
inline constexpr double kSmagorinsky = 0.1;

/// mut = 0.09 r k^2/eps (Jones and Launder 1972) in the cells of fluid, 0 in others; halos filled.
void set_k_epsilon_viscosity(const Domain& domain, State& state);

/// Squares of the length of the large-eddy model [m2]: 1/l^2 = 1/(0.1 D)^2 + 1/(0.42 y)^2 (Mason
/// and Thomson 1992) with y the distance from the nearest wall. D is the cube root of the cell's
/// volume; with one or two axes computed, of the widths along these alone, their square root or
/// the width itself.
Field mixing_length_squares(const Domain& domain);

/// mut = r l^2 sqrt(2 S:S) (Smagorinsky 1963) in the cells of fluid, 0 in others; halos filled.
/// Reads r level 1, mu and ru; `velocities` and `strain` are memory.
void set_les_viscosity(const Domain& domain, const Field& length2, Velocities& velocities,
                       Strain& strain, State& state);

}  // namespace flow
