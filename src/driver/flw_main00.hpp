// flw_main00: the main program.
//
// Sets up the process layer and the log, reads the table of files and the grid's sizes, hands
// everything to the driver of the surface model and ends the run with one of two final messages.
// This is the one place that turns a failure into a process status.
#pragma once

#include <iosfwd>
#include <string>

namespace flw_main00 {

/// Where a run lives and where its messages go.
struct Place {
  std::string directory = ".";      ///< holds `file_name`; all names are relative to it
  std::ostream& screen;             ///< standard output
  std::ostream& errors;             ///< standard error
  bool errors_is_terminal = false;  ///< show one updating line of progress there
};

/// Runs one district to its end; returns the process status (0 after a normal end).
int run(const Place& place);

}  // namespace flw_main00
