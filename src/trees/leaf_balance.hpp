// jmk2_cal_canopy: the leaf temperatures of the canopy.
//
// Every leaf cell balances absorbed short wave, net long wave, sensible and latent heat. Newton
// steps for all cells at once go round the long-wave exchange among them, which is solved anew in
// each pass: a cell's own emission is in the derivative, that of the others is not. Called by
// tsrf_trcanopy.
#pragma once

#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "trees/canopy.hpp"
#include "trees/htrans.hpp"
#include "trees/radiat.hpp"

namespace jmk {

/// Finds the leaf temperatures from data.leaves (air, PAR, Sabs) and what long wave enters the
/// canopy by its outer faces, and leaves the long-wave fluxes in data.bands. Not to converge within
/// LOPHBL passes is a warning on the log; a temperature that is none ends the run.
void jmk2_cal_canopy(frame::Log& log, frame::Crew& crew, const jmk_module_htrans::Data& htrans,
                     const jmk_module_radiat::Data& radiat, tsrf_module_jumoku::Data& data);

}  // namespace jmk
