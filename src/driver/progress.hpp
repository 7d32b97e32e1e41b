// The progress record: how far a run is, for whoever watches its ProgressLog.
//
// One row an hour of model time: the wall clock, the seconds used, and an estimate of the seconds
// that the daily cycle still needs to repeat itself, drawn on from the fall of the logarithm of
// the daily residual. Owned by the run; written by the step, closed by the main program.
#pragma once

#include <cstdint>
#include <functional>

#include "frame/log.hpp"
#include "frame/text_output.hpp"

namespace progress {

/// A reading of the wall clock.
struct WallClock {
  int year, month, day, hour, minute, second;
};
/// The wall clock of the machine, in local time.
WallClock wall_clock();

struct Data {
  std::function<WallClock()> clock = wall_clock;
  bool noted = false;           ///< a reading has been taken
  WallClock last{};             ///< the last reading
  std::int64_t days = 0;        ///< midnights passed since the first reading
  double start = 0.0;           ///< when the run's steps began [s]
  double improved = 0.0;        ///< when the last day's residual came [s]
  double best = -1e20;          ///< logarithm of that residual
  std::int32_t estimate = 999;  ///< seconds left, as last estimated
  double res = 1e20;            ///< that residual, for the terminal's line
};

/// Notes the origin of all times; at the end of the preparation.
void note_start(Data& data);
/// The row of a step that ends at second `sod1` of the day, with the daily residual `res` (1e20
/// unless a day ends). Nothing between whole hours.
void update(frame::Log& log, frame::TextOutput& file, std::int32_t sod1, double res, Data& data);
/// The stamp that closes the file: the wall clock and twice -1.
void write_closing_stamp(frame::Log& log, frame::TextOutput& file, const Data& data);

}  // namespace progress
