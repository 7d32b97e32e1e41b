// Monitors: the extremes of the fields, told once a step.
//
// Called behind a step by whoever writes its lines.
#pragma once

#include "flow/box.hpp"
#include "flow/state.hpp"

namespace flow {

/// A value and the cell where it was taken, the first of several in the order of cells.
struct Extreme {
  double value = 0.0;
  Triple cell{};
};

struct Monitors {
  Extreme velocity;  ///< speed at the centre [m/s]
  Extreme warmest, coldest;  ///< [K]
  Extreme mut;               ///< [Pa s]
  double k = 0.0, eps = 0.0;  ///< at the cell of the largest mut; without k-epsilon 0
};

/// Over the fluid cells. Reads ru, r level 1, t, mut, ak. `scratch` holds a row of cells.
Monitors take_monitors(const Flags& fluid, const State& state, std::span<double> scratch);

}  // namespace flow
