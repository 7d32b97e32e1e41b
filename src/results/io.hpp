// tsrf_module_io: the result files.
//
// Repeating-day runs write each file at whole hours from the step; dated runs gather hourly means
// and write them month by month. Settings: group TSRF_IO.
#pragma once

#include <cstdint>
#include <limits>

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace tsrf_module_io {

struct Settings {
  double TIMES = std::numeric_limits<double>::max();  ///< start time override of a restart [s]
  std::int32_t REWIND_OUTFILE = 1;                    ///< >= 1: result files start over at hour 1
};

struct Data {
  Settings settings;
};

void inputdata(frame::Log& log, frame::TextInput& control, Data& data);

}  // namespace tsrf_module_io
