// Monitors: the extremes of the fields, told once a step.
//
// Called behind a step by the writer of its lines (output/monitor.hpp).
#pragma once

#include "flow/box.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"

namespace flow {

/// A value and the cell where it was taken, the first of several in the order of cells.
struct Extreme {
  double value = 0.0;
  Triple cell{};
};

struct Monitors {
  Extreme velocity;          ///< speed at the centre [m/s]
  Extreme warmest, coldest;  ///< [K]
  Extreme mut;               ///< [Pa s]
  bool finite = true;        ///< the fields of all fluid cells are finite
  bool any = false;          ///< there is a cell of fluid
};

/// One pass over the fluid cells. Reads ru, r level 1, p, t and, when `turbulent`, mut, k and
/// epsilon.
Monitors take_monitors(frame::Crew& crew, const Flags& fluid, const State& state, bool turbulent);

}  // namespace flow
