// The line of a step: how far a run is, on the log and now and then on standard output.
//
// Both drivers write it, each in its own unit of time.
#pragma once

#include <cstdint>
#include <string>

#include "frame/log.hpp"
#include "frame/numbers.hpp"

namespace frame {

/// "iter=" and its numbers: `time` in the driver's own unit, `dt` [s]. Goes to standard output as
/// well at every 50th iteration; the log is brought to its file, so that it can be watched.
inline void report_step(Log& log, std::int64_t iter, double time, double dt) {
  constexpr std::int64_t kScreenEvery = 50;
  std::string line = "iter=";
  append_int(line, iter, 8);
  append_e13(line, time);
  append_e13(line, dt);
  log.line(line);
  if (iter % kScreenEvery == 0 && !log.is_screen()) log.screen(line);
  log.flush();
}

}  // namespace frame
