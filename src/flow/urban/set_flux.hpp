// kpc_set_flux: heat and vapour of the urban surfaces and of buildings, for the time of the run.
//
// Only the cells that the city's files name are touched. Called by the temperature step in the
// place of its sources, before the conversion of the potential temperature.
#pragma once

#include <span>

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

/// Adds what surfaces and buildings give off at `urban.TIME0` + `state.time`, per whole volume of
/// each cell:
///   heat [W/m3]: tdrg(2) - tdrg(1) T of the surfaces, and the sensible heat of buildings;
///   vapour[1] [kg/m3 s], where there are two species: tdrg(3)/1005 (q_sat(Ts) - ys(2)) with
///   Ts = tdrg(2)/tdrg(1), and the latent heat of buildings over 2.501e6.
/// Reads t, ys(2), pt and time of the state. `vapour` has a field for each species or is empty.
void kpc_set_flux(const Urban& urban, const State& state, Field& heat, std::span<Field> vapour);

/// For steps that take the exchange implicitly: adds -d(heat)/dT = tdrg(1) [W/m3 K], and
/// -d(vapour[1])/d(ys(2)) = tdrg(3)/1005 [kg/m3 s] where `vapour` is not null.
void kpc_add_exchange(const Urban& urban, const State& state, Field& heat, Field* vapour);

}  // namespace flow
