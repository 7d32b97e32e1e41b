// A run as NetCDF-4: CF conventions, and the patches as faces of an unstructured mesh (UGRID).
//
// Each patch is one face of the mesh. UGRID has no holes and no faces of several pieces: there the
// face's line runs through all rings, with an edge there and back between each two, which leaves
// its area as it is.
#pragma once

#include <string>

#include "run/run_model.hpp"

namespace townskin_view {

/// What a file tells of its making.
struct Origin {
  std::string version;  ///< of the program
  std::string commit;   ///< empty where it is not known
  std::string command;  ///< as it was called
};

/// Writes `path` anew. A fault tells what the NetCDF library said.
void write_netcdf(const RunModel& run, const Origin& origin, const std::string& path);

/// Whether a file is one that this program wrote.
[[nodiscard]] bool is_own_netcdf(const std::string& path);

}  // namespace townskin_view
