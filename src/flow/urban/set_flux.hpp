// kpc_set_flux: heat and vapour of the urban surfaces and of buildings, for the time of the run.
//
// Called by the temperature step in the place of its sources, before the conversion of the
// potential temperature.
#pragma once

#include "flow/state.hpp"
#include "flow/urban/urban.hpp"

namespace flow {

/// Two hours of a table and the part of the second.
struct Moment {
  std::size_t before = 0, after = 0;  ///< places of `hours`
  double part = 0.0;
};

/// Where a table stands at a second of the day. Linear between hours; a table of 24 hours goes
/// round, any other holds its first value before its first hour and its last behind its last.
Moment moment_of(const std::vector<std::int32_t>& hours, double seconds_of_day);

/// Writes what surfaces and buildings give off at `urban.TIME0` + `state.time`, per whole volume,
/// to the cells that the files name, and to no other:
///   heat [W/m3]: tdrg(2) - tdrg(1) T of the surfaces, and the sensible heat of buildings;
///   vapour [kg/m3 s], where it is not null: tdrg(3)/1005 (q_sat(Ts) - ys(2)) with
///   Ts = tdrg(2)/tdrg(1), and the latent heat of buildings over 2.501e6.
/// Reads t, ys(2), pt and time of the state.
void kpc_set_flux(const Urban& urban, const State& state, Field& heat, Field* vapour);

/// For a step that takes the exchange with surfaces at its end: writes -d(heat)/dT over the
/// specific heat, tdrg(1)/cp [kg/m3 s], to the same cells. Reads cp and time of the state.
void kpc_set_exchange(const Urban& urban, const State& state, Field& exchange);

}  // namespace flow
