// The files of a flow run: the names of `flow_file_name`.
//
// One name a line in a fixed order; a blank or missing line stands for a file that the run does
// not use. The first three must be there. Read by the program at the start; the driver opens the
// others when the control data have told which of them it needs.
#pragma once

#include <array>
#include <string>

#include "frame/log.hpp"
#include "frame/unit_table.hpp"

namespace flow {

enum FileRow : std::size_t {
  kControl,
  kGrid,
  kBoundary,
  kDomain,
  kRestart,
  kHistory,
  kInitial,
  kPorous,
  kSurfTemp,
  kBldLoad,
  kLad,
  kFiles,
};
using FileNames = std::array<std::string, kFiles>;

/// What a file is called on the log.
std::string title_of(FileRow row);

/// Reads `flow_file_name` in the directory of `units`, tells the names and opens control, grid and
/// boundary data and, where it has a name, the domain file. An output whose name is also another
/// file's ends the run before anything is written.
FileNames read_file_names(frame::Log& log, frame::UnitTable& units);

/// A data error when a file that the run needs has no name; `why` tells what needs it.
void need_name(frame::Log& log, const FileNames& names, FileRow row, bool needed,
               std::string_view why);

}  // namespace flow
