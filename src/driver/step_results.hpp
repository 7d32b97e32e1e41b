// Results of a step: the hourly rows of a repeating-day run, the sums and the monthly files of a
// dated one.
//
// Binds the writers of the results to the modules that hold the values. Called by the step and the
// driver.
#pragma once

#include <cstdint>

#include "driver/run.hpp"

namespace tsrf_main01 {

/// Before the step, dated run: gathers the temperatures and radiosities that the last step left,
/// into the hour that ends with second `sod1` of the day.
void gather_temperatures(Run& run, std::int32_t sod1);
/// After the step: gathers (dated run) or writes (repeating day, at whole hours) the rest.
void write_results(Run& run, std::int64_t iter, std::int32_t sod1);
/// Dated run: when `time` opens a month, or the run ends, writes the files of the month that
/// closes. `iter` is the number of the step that ended.
void write_closed_month(Run& run, std::int64_t iter, double time, bool run_ends);

}  // namespace tsrf_main01
