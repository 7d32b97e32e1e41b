// tsrf_module_patch: the list of patches, the elements that the whole model works on.
//
// Reads the Patch and TreePatch files into one list; every other data set refers to it by PID, and
// a patch refers to the others by its SurfID and BldID. Called once at the start.
#pragma once

#include <cstdint>
#include <vector>

#include "frame/code_index.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/grid_index.hpp"

namespace tsrf_module_patch {

enum Type : std::int32_t {
  kBuilding = 1,
  kTree = 2,
  kLand = 3,
  kWater = 4,
  kSolarPanel = 5,
  kMirror = 6,  ///< takes the second extra row of surface properties
  kFarBoundary = 7,
};

struct Data {
  std::int32_t mpatch = 0;       ///< number of patches: the Patch file's lines, then TreePatch's
  std::int32_t patch_lines = 0;  ///< how many of them come from the Patch file
  std::vector<std::int32_t> PID;
  std::vector<std::int32_t> i, j, k;     ///< cell as read
  std::vector<std::int32_t> si, sj, sk;  ///< shifted cell: in the grid, one above k; of a tree
                                         ///< patch the cell of the fine grid in front of its face,
                                         ///< which may lie one outside the grid
  std::vector<double> area;              ///< [m2]
  std::vector<double> nx, ny, nz;        ///< outward unit normal
  std::vector<std::int32_t> type;
  std::vector<std::int32_t> SurfID;  ///< material; on a tree patch the face number BndC 1..6
  std::vector<std::int32_t> BldID;
  frame::CodeIndex by_pid;  ///< PID -> position
};

/// Reads both files. A patch without area gets 1e-20 m2. `mx`, `my`, `mz` are the grid's cells,
/// `NDIV` the division of a cell by the fine grid of the trees.
void read_patch(frame::Log& log, frame::TextInput& patch_file, frame::TextInput& treepatch_file,
                std::int32_t mx, std::int32_t my, std::int32_t mz,
                const tsrf_module_grdindx::Data& grid_index, std::int32_t NDIV, Data& data);

}  // namespace tsrf_module_patch
