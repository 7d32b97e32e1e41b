// The program townskin_flow: one run of the flow solver.
//
// Reads `flow_file_name` and the first two records of the control data and hands everything to the
// driver; what comes before and after is the frame's (frame/whole_run.hpp).
#pragma once

#include "frame/whole_run.hpp"

namespace flow {

/// Runs the flow of a directory to its end; returns the process status (0 after a normal end).
int run_program(const frame::Place& place);

}  // namespace flow
