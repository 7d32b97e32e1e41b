// flw_main00: the main program of the surface model.
//
// Reads the table of files and the grid's sizes and hands everything to the driver of the surface
// model; what comes before and after is the frame's (frame/whole_run.hpp).
#pragma once

#include "frame/whole_run.hpp"

namespace flw_main00 {

using Place = frame::Place;

/// Runs one district to its end; returns the process status (0 after a normal end).
int run(const Place& place);

}  // namespace flw_main00
