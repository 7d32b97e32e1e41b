// flw_main01: the driver of the flow solver.
//
// Brings a run up in one fixed order, marches it step by step until its last iteration, its end
// time or the file "EXIT", writes its outputs and closes with the accounts. Called by the program.
#pragma once

#include <iosfwd>

#include "flow/input/files.hpp"
#include "flow/run.hpp"
#include "frame/accounts.hpp"
#include "frame/log.hpp"
#include "frame/process_layer.hpp"
#include "frame/unit_table.hpp"
#include "frame/whole_run.hpp"

namespace flow {

/// What the driver reports, reads and writes through.
struct Desk {
  frame::Log& log;
  frame::UnitTable& units;
  const frame::ProcessLayer& layer;
  FileNames names;
  frame::GridSize size;
  std::ostream* terminal = nullptr;  ///< where one updating line shows how far the run is
  frame::Accounts accounts{};
};

/// Runs from the third record of the control data to the accounts. The control unit stands behind
/// its first two records.
void flw_main01(Desk& desk, Run& run);

}  // namespace flow
