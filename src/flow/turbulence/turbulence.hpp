// Turbulence: the eddy viscosity, and with k-epsilon the step of k and epsilon.
//
// Two models: standard k-epsilon (Launder and Spalding 1974), whose k and epsilon are carried by
// the flow, and large eddies (Smagorinsky 1963), whose eddy viscosity follows from the strain. The
// normal part of the turbulent stress, 2/3 r k, is a part of the pressure p. The step of the flow
// calls set_eddy_viscosity before its time step is chosen and flw_clkeps behind the pressure.
#pragma once

#include "flow/scalars/advance.hpp"
#include "flow/turbulence/sources.hpp"
#include "flow/turbulence/wall_functions.hpp"
#include "frame/log.hpp"

namespace flow {

inline constexpr double kSigmaK = 1.0;
inline constexpr double kSigmaE = 1.3;

/// A face of the rim in its list.
struct RimPlace {
  std::size_t axis = 0, number = 0;
};

/// Memory of the turbulence models, taken once; empty where a model has no use for it.
struct TurbulenceWork {
  Strain strain;
  Field length2;                       ///< large eddies: square of the length [m2]
  std::vector<WallCell> wall_cells;    ///< from here on: k-epsilon
  std::vector<RimPlace> giving_walls;  ///< walls with k and epsilon given (`ik` 1)
  std::array<RimFactors, 2> transfer;  ///< what diffuses from these [kg/m2 s]; 0 at other faces
  std::vector<SourceRows> sources;     ///< for each hand
  std::array<Field, 2> dqdt;           ///< tendencies of k and epsilon
  std::array<Field, 2> sink;           ///< only with implicit steps
};

/// Errors: memory.
TurbulenceWork make_turbulence(frame::Log& log, const Domain& domain);

/// Forms mut of the model of the run; without one it does nothing. Reads r, mu, ru, k and epsilon;
/// `velocities` is memory.
void set_eddy_viscosity(const Domain& domain, Velocities& velocities, TurbulenceWork& work,
                        State& state);

/// Brings k and epsilon forward by dt [s], halos included. Reads r level 1, mu, mut, the new
/// ru and the temperature [K] that air keeps when it rises or sinks (t, or the potential one), with
/// their halos; `velocities`, `rows` and `system` are memory. First order in time, second
/// in space. Errors: those of flw_imdqdt, then "(flw_clkeps)".
void flw_clkeps(frame::Log& log, const Domain& domain, double dt, const Field& temperature,
                Velocities& velocities, SweepRows& rows, ScalarSystem& system, TurbulenceWork& work,
                State& state);

}  // namespace flow
