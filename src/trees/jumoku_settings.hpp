// tsrf_module_jumoku, settings: how the grid of the trees lies in the grid of the surfaces (group
// TSRF_JUMOKU).
//
// Every run reads the group at its start: the reader of the patches needs NDIV even where the run
// has no trees. The canopy itself stands in trees/canopy.hpp.
#pragma once

#include <cstdint>

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace tsrf_module_jumoku {

struct Settings {
  std::int32_t NDIV = 1;          ///< fine cells in a coarse cell, in x and in y
  std::int32_t NSKIP_SUNDIR = 1;  ///< the beam is swept through the canopy every this many steps
};

/// Reads group TSRF_JUMOKU.
void inputdata(frame::Log& log, frame::TextInput& control, Settings& settings);

}  // namespace tsrf_module_jumoku
