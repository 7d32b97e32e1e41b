// window: sun absorbed in glass and passed into rooms.
//
// Only the direct beam enters the glass; each cell of the column takes its share by Beer's law.
// Called by the step, with the building model on, between surface balance and conduction.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/matprp.hpp"
#include "inputs/srfprp.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_window {

/// The patches of glass: building surfaces whose material has position class 3.
struct Glass {
  std::vector<std::int32_t> patches;  ///< ascending
  std::vector<double> passes;  ///< share of the beam that each of their cells lets pass, in turn
};

/// Finds the glass. To be called once, when the columns are set.
void set_glass(frame::Log& log, const tsrf_module_lyrstrct::Data& lyrstrct,
               const tsrf_module_matprp::Data& matprp, const tsrf_module_data::Data& state,
               Glass& glass);

/// Sets, for the patches of glass, the change of the beam `Jdir` [W/m2] over each cell in `qlayer`
/// (row k-1 = cell k) and what passes the whole glass in `qtrans` [W/m2]. The change is not
/// positive and not divided by the cell's thickness; the conduction takes it as it stands. All
/// other entries of both arrays are 0 from the start and stay so.
void window(const Glass& glass, const tsrf_module_srfprp::Data& srfprp,
            const tsrf_module_data::Data& state, std::span<const double> Jdir,
            frame::PatchTable<double>& qlayer, std::span<double> qtrans);

}  // namespace tsrf_window
