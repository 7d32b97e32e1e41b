// Sun & Sky rad.: one line per whole hour with the three fluxes from the sky.
//
// Called from the step by the process that writes, with the fluxes that the step works with.
#pragma once

#include <cstdint>

#include "inputs/calendar.hpp"
#include "radiation/phydat.hpp"
#include "results/io.hpp"

namespace tsrf_module_io {

/// Where a step stands in time.
struct StepDates {
  std::int32_t sod1;                 ///< second of the day at the step's end, 1..86400
  tsrf_module_calendar::Date date0;  ///< calendar of the step's start
  tsrf_module_calendar::Date date1;  ///< calendar of the step's end
  std::int64_t iter = 0;             ///< number of the step
};

/// Writes the row of a step that ends on a whole hour. A dated run's rows carry month and day, at
/// hour 24 those of the day that ends, and its file runs on; a repeating day's file starts over as
/// the settings say. The hour of date1 must be that of sod1 (0 standing for 24).
void write_sunskyrad(frame::Log& log, frame::TextOutput& file, const Settings& settings, bool dated,
                     const StepDates& dates, const tsrf_module_phydat::SkyFluxes& sky,
                     FileStart& start);

}  // namespace tsrf_module_io
