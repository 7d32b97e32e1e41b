// The daily residual: how far the columns are from where they were a day ago.
//
// A stop, not an accuracy: a run has converged when its day repeats. Called by the step at the end
// of each day.
#pragma once

#include "surface/surface_state.hpp"

namespace tsrf_main01 {

/// Square root of the largest, over computed patches, of the sum over a column's nodes (surface
/// and cells) of the squared change since the last day's end, over the sum of their squares; 0
/// where no patch counts. The present temperatures become those of the last day's end.
double daily_residual(tsrf_module_data::Data& state);

}  // namespace tsrf_main01
