// ubx_module_unstdy: unsteady coupling with an urban flow beyond the domain.
//
// Only the check of the time steps is there: a run that asks for the coupling is held to its rules
// and goes on without it.
#pragma once

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// Reads the group UNSTEADY, wherever it stands (the place in the records is kept), and holds the
/// largest steps of both columns [s] against it.
void unst_chk_deltt(frame::Log& log, frame::TextInput& control, double dtmax1, double dtmax2);

}  // namespace flow
