// flw_module_fv: the open fractions of cells and faces.
//
// Group VFRAC asks for obstacles and porous cells. Without it everything is open.
#pragma once

#include "flow/state.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// Reads the group and fills the fractions (mkofrac). The place in the control data is kept.
Openings mkofrac(frame::Log& log, frame::TextInput& control, const Box& box);

}  // namespace flow
