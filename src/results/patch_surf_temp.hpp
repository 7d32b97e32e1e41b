// PatchSurfTemp: one line per patch and hour with its surface temperature, radiosities and fluxes.
//
// Called from the step in a repeating-day run, with the present values, and at a month's close in
// a dated run, with the means of an hour of the day.
#pragma once

#include <cstdint>
#include <span>

#include "frame/crew.hpp"
#include "inputs/patch.hpp"
#include "results/io.hpp"

namespace tsrf_module_io {

/// The columns of one hour, each mpatch long.
struct PatchColumns {
  std::span<const double> temperature;  ///< surface temperature less `zero` in deg C
  double zero = kCelsius;               ///< 273.15 for kelvin, 0 for deg C
  std::span<const double> JRl;         ///< long-wave radiosity [W/m2]; empty: no radiosity store, 0
  std::span<const double> JRs;         ///< short-wave radiosity [W/m2]; the same
  std::span<const double> latent;      ///< qsurf row 5 [W/m2]
  std::span<const double> conductive;  ///< qsurf row 6 [W/m2]
  std::span<const double> area;        ///< [m2]
};

/// Writes the rows of `hour`; `when` is the end of the step.
void write_patchsurftemp(frame::Log& log, frame::Crew& crew, frame::TextOutput& file,
                         const Settings& settings, When when, const tsrf_module_patch::Data& patch,
                         const PatchColumns& columns, FileStart& start);

}  // namespace tsrf_module_io
