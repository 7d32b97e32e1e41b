// Groups, view factors and sunlit fractions of a run, by the core's readers. Called by read_run.
#pragma once

#include "radiation/raddat.hpp"
#include "run/input_files.hpp"
#include "run/inputs.hpp"
#include "run/run_model.hpp"

namespace townskin_view {

/// The group of every patch; without them each patch counts as its own.
void read_groups(const RunFiles& files, QuietLog& quiet, const CoreInputs& core,
                 tsrf_module_raddat::Data& raddat, RunModel& run);

/// The sky view factors as a field and, as asked for, the partners of groups. The table of view
/// factors is given back before this returns.
void read_exchange(const RunFiles& files, QuietLog& quiet, const CoreInputs& core,
                   const Wanted& wanted, tsrf_module_raddat::Data& raddat, RunModel& run);

/// Sunlit fractions at the hours of results, for a day that repeats: those of the step that ends
/// then.
void read_sunlit(const RunFiles& files, QuietLog& quiet, const CoreInputs& core, RunModel& run);

}  // namespace townskin_view
