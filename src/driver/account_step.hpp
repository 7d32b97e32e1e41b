// The energy account's place in a run: the modules that it looks at, its days and its file.
//
// Called by the driver before the first step and after each, by the step where it begins; nothing
// unless the account is asked for.
#pragma once

#include "driver/run.hpp"

namespace tsrf_main01 {

/// Refuses the name `account` where another file of the run has it. To be called when the settings
/// are read.
void check_account_name(Run& run);
/// Opens the file and sets the account up; when all is read that does not change.
void prepare_account(Run& run);
/// Notes what a step of the physics begins with, at model time `time` [s].
void note_account(Run& run, double time);
/// Adds the step of `dt` [s] from `time` [s]; at a day's end, or where the run ends, writes the
/// day.
void add_to_account(Run& run, double time, double dt, bool run_ends);

}  // namespace tsrf_main01
