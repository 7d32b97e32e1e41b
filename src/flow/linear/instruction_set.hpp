// The sets of instructions for which the passes of the linear solvers are compiled.
#pragma once

#include "frame/instruction_set.hpp"

namespace flow {

using frame::has;
using frame::InstructionSet;
using frame::kInstructionSets;
using frame::widest_set;

}  // namespace flow
