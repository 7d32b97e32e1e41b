// Doubts: what no reader can see in its own file.
//
// Each routine looks at one matter across the files that were read and adds what it finds to the
// findings of the run's log. A run does not end of any of it. Called by the check behind the
// reading.
#pragma once

#include "check/reading.hpp"

namespace check {

/// Groups without view factors, rows that do not close, pairs that do not agree (doubts_exchange).
void doubt_exchange(const Parts& parts, tsrf_main01::Run& run);
/// Sun that is still on its way between the patches when a step's sweeps end (doubts_sweeps).
void doubt_sweeps(const Parts& parts, tsrf_main01::Run& run);
/// Sun data against the model's own sun, radiation against its noon (doubts_sun).
void doubt_sun(const Parts& parts, tsrf_main01::Run& run);
/// Buildings without roof or too large for their patches, materials (doubts_town).
void doubt_buildings(const Parts& parts, tsrf_main01::Run& run);
void doubt_materials(const Parts& parts, tsrf_main01::Run& run);
/// Set points of the schedules that are open: by the reading, month by month in a dated run.
void doubt_set_points(tsrf_main01::Run& run);
/// Groups that nothing reads, settings without effect in the chosen mode (doubts_settings).
void doubt_settings(const Parts& parts, tsrf_main01::Run& run);
/// Memory that the run will take, against what there is (memory).
void doubt_memory(const Parts& parts, tsrf_main01::Run& run);

}  // namespace check
