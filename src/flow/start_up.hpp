// The start-up of a flow run, part by part: what its files tell, before any field is made.
//
// Called in this order by the driver (flw_main01), and by the check of a run directory, whose log
// goes on behind a fault.
#pragma once

#include "flow/main01.hpp"

namespace flow {

/// All that the control data tell but their groups. The control unit stands behind its first two
/// records.
void read_settings(Desk& desk, Settings& settings);

/// What follows of them: the air around. Specific heats that are not above 0 are a data error.
void settle_settings(frame::Log& log, Settings& settings);

/// The files beyond control, grid, boundary and domain data that the settings ask for.
struct Wanted {
  bool sets;     ///< restart data, read or written
  bool points;   ///< history data
  bool initial;  ///< the fields of a coarser mesh
};
/// A data error where one of them has no name.
Wanted wanted_files(frame::Log& log, const FileNames& names, const Settings& settings);

/// Boundary data, sub-domains and grid, which `settings` and the number of cells are held against.
void read_boundary(Desk& desk, Run& run);

/// What is open of cells and faces, with the city's files, and the rules that hold for all boundary
/// faces together.
void list_and_check_faces(Desk& desk, Run& run);

}  // namespace flow
