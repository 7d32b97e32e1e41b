// When restart and history files are written.
//
// Both have a schedule record of one form (start, interval, end and the unit: iterations below 1,
// else time) and follow one rule, which the driver asks after each step.
#pragma once

#include <string_view>

#include "flow/input/record.hpp"
#include "flow/settings.hpp"

namespace flow {

/// How a schedule stands on the log: the line of its unit and the label of its values.
struct ScheduleLabels {
  std::string_view iterations, time, values;
};

/// Reads and tells the record of a schedule.
void take_schedule(RecordReader& records, Schedule& schedule, const ScheduleLabels& labels);

/// True when the file is to be written at the end of this step; the schedule then moves on. A
/// stop forces an output, unless there is no schedule at all.
bool is_due(Schedule& schedule, std::int32_t iter, double time, double dt, bool stop);

}  // namespace flow
