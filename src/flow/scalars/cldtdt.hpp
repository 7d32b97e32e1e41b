// flw_cldtdt: temperature and species, one step.
//
//   r (T_new - T_old)/dt   = -div(ru T) + T div(ru) + (div(conductivity grad T) + heat)/cp
//   r (ys_new - ys_old)/dt = -div(ru ys) + ys div(ru) + div(diffusivity grad ys) + vapour
//
// by the open fractions of cells and faces. Of two species, the most that there can be, the second
// goes forward so and the first is what it leaves: the gas that it diffuses in takes whatever flux
// makes the sum of both 0, so that the fractions sum to 1 and stay in 0..1. Both equations go
// through one sweep, and sources and walls add to what it leaves. Called once a step, behind the
// time step and before momentum; the density must be computed anew behind it.
#pragma once

#include "flow/scalars/advance.hpp"
#include "flow/scalars/exner.hpp"
#include "flow/scalars/wet.hpp"

namespace flow {

/// What is brought into the air of the cells, per volume of the whole cell. A field that nothing
/// writes stays empty; whoever writes one gives it its size before the first step.
struct ScalarSources {
  Field heat;      ///< [W/m3]
  Field exchange;  ///< part of `heat` that falls with the temperature, over cp [kg/m3 s]
  Field vapour;    ///< mass of the second species [kg/m3 s], with the temperature of the cell
  Field drain;     ///< minus `vapour`, for the continuity equation: there where `vapour` is
};

/// Memory of the step, taken once.
struct Scalars {
  ScalarSources sources;
  Exner exner;
  Wet wet;
  SweepRows rows;
  Field dtdt;  ///< [kg K/m3 s]
  Field dydt;  ///< of the second species [kg/m3 s]; empty where there is one
};
Scalars make_scalars(frame::Log& log, const Domain& domain);

/// Specific heats that are not above 0 at the temperatures of the start and of the ambient air are
/// a data error.
void check_specific_heat(frame::Log& log, const Control& control, const Species& species);

/// Brings t and ys forward by dt [s], halos included. Reads r level 1, ru, mu, mut, cp, dif.
/// Second order in space (the limiter of advection apart), first order in time. Errors: those of
/// flw_imdqdt; a temperature that is not finite and above 0, a fraction that is not finite.
void flw_cldtdt(frame::Log& log, const Domain& domain, double dt, Scalars& work,
                ScalarSystem& system, State& state);

}  // namespace flow
