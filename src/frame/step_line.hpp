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
  const auto form = [&](std::string& line) {
    line += "iter=";
    append_int(line, iter, 8);
    append_e13(line, time);
    append_e13(line, dt);
  };
  log.form_line(form);
  if (iter % kScreenEvery == 0 && !log.is_screen()) {
    std::string line;
    form(line);
    log.screen(line);
  }
  log.flush();
}

}  // namespace frame
