// The files of a month: opened under the month's names when it closes, written, closed.
//
// Called by the driver after each step of a dated run.
#pragma once

#include "driver/filnam.hpp"
#include "frame/unit_table.hpp"
#include "inputs/calendar.hpp"
#include "results/monthly.hpp"

namespace tsrf_module_io {

/// When `time` [s] opens a month, or the run ends: opens the files of the month that closes, writes
/// them as write_month does and closes them. Fails at the first step of a month whose files are
/// those that this run has written for another month.
void output_month(frame::Log& log, frame::Crew& crew, frame::UnitTable& units,
                  const ubx_module_filnam::Data& filnam, tsrf_module_calendar::Data& calendar,
                  double time, bool lend, const MonthRows& rows, Monthly& monthly);

}  // namespace tsrf_module_io
