// heat: one line per building and hour with its heat budget per total floor area.
//
// Called with the building model on: from the step in a repeating-day run and at a month's close
// in a dated one.
#pragma once

#include <cstdint>
#include <span>

#include "buildings/bldng.hpp"
#include "results/io.hpp"

namespace tsrf_module_io {

using Budget = tsrf_module_bldng::Budget;

/// The buildings at an instant, or their means over an hour of the day.
struct BuildingColumns {
  std::span<const std::int32_t> BldID;
  std::span<const std::int32_t> floor;  ///< number of floors
  std::span<const double> area;         ///< of one storey [m2]
  std::span<const Budget> bldat;
  std::span<const double> Tr;  ///< room temperature [K]
  std::span<const double> Tm;  ///< slab temperature [K]
};

/// Writes the rows of the hour that `when` ends.
void write_heat(frame::Log& log, frame::TextOutput& file, const Settings& settings, When when,
                const BuildingColumns& buildings, FileStart& start);

}  // namespace tsrf_module_io
