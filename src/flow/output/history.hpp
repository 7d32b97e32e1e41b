// History file: what happens at a few points, as unformatted records.
//
//   1     nhpnt, ns (int32)
//   2     i, j, k of each point (int32)
//   then for each output: time [s] (real) and iter (int32); and t of all points [K], p of all
//   [Pa], the mass fractions point by point, the three velocities of the cell's centre point by
//   point [m/s].
//
// Begun anew by each run, at its first output. Called by the driver.
#pragma once

#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/log.hpp"
#include "frame/text_output.hpp"

namespace flow {

struct HistoryFile {
  bool begun = false;  ///< the points are written
};

/// Adds the present state; reads r, p, t, ys and ru.
void write_history(frame::Log& log, frame::TextOutput& file, const HistoryPoints& history,
                   const State& state, HistoryFile& begun);

}  // namespace flow
