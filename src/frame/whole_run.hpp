// A run from its first to its last word: what every program of the system does around its driver.
//
// Sets up the process layer and the log, does the work that the program brings and ends the run
// with one of two final messages. This is the one place that turns a failure into a process
// status.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "frame/log.hpp"
#include "frame/process_layer.hpp"
#include "frame/unit_table.hpp"

namespace frame {

/// Where a run lives and where its messages go.
struct Place {
  std::string directory = ".";      ///< holds the table of files; all names are relative to it
  std::ostream& screen;             ///< standard output
  std::ostream& errors;             ///< standard error
  bool errors_is_terminal = false;  ///< show one updating line of progress there
};

/// Everything between the opening of the log and the final message.
using Work = std::function<void(Log& log, UnitTable& units, ProcessLayer& layer)>;

/// Does `work` as a run of its own; returns the process status (0 after a normal end).
int whole_run(const Place& place, const Work& work);

/// Sizes of the grid and number of species: the first two records of the control data.
struct GridSize {
  std::int32_t mx = 0;
  std::int32_t my = 0;
  std::int32_t mz = 0;
  std::int32_t ns = 0;
};
inline constexpr std::int32_t kMostSpecies = 2;

/// Rewinds the control data and reads both records; what follows them is read next. Each size is
/// at least 1, `ns` 1 or 2.
GridSize read_grid_size(Log& log, TextInput& control);

}  // namespace frame
