// The ambient air, and what the choice of a density asks of it.
//
// Called once by the start-up, when control data and species are read.
#pragma once

#include "flow/settings.hpp"
#include "frame/log.hpp"

namespace flow {

/// Density of the ambient air by the ideal-gas law, and the lower limits of k and epsilon, on the
/// log too; the ambient mass fractions are scaled to the sum 1. Reads `pp0`, the ambient air, the
/// molar masses and `mu`. A density that is no positive number is a data error.
Ambient ambient_state(frame::Log& log, Control& control, const Species& species);

/// Holds the form of the density (`idrdp`) against that of the temperature (`itmpt`): density 2
/// takes the column of the ambient air into itself, so that buoyancy is measured from nothing;
/// density 1 with a potential temperature has no sense and stops the run.
void chk_bc_exnr(frame::Log& log, const ShortRecords& records, Ambient& ambient);

}  // namespace flow
