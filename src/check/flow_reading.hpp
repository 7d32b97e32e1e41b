// The files of a flow run, read as the flow solver would read them, by a log that collects faults.
//
// Nothing is run and nothing is written; restart data and fields of a coarser mesh are not looked
// into. Called by the check of a directory that has a flow_file_name.
#pragma once

#include "driver/file_table.hpp"
#include "frame/log.hpp"
#include "frame/unit_table.hpp"

namespace check {

/// Reads all that `flow_file_name` in the directory of `units` lists. Files of `surface`, the list
/// of the surface run beside it, may lack: that run writes them first.
void read_flow(frame::Log& log, frame::UnitTable& units, const frame::FileNames& surface);

}  // namespace check
