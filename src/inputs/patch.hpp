// tsrf_module_patch: the list of patches, the elements that the whole model works on.
//
// Reads the Patch and TreePatch files into one list; every other data set refers to it by PID, and
// a patch refers to the others by its SurfID and BldID. Called once at the start.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/code_index.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/grid_index.hpp"

namespace tsrf_module_patch {

/// Kinds of patches, by the numbers that the files give them.
enum Kind : std::int32_t {
  kOther = 0,  ///< any number that is not listed here
  kBuilding = 1,
  kTree = 2,
  kLand = 3,
  kWater = 4,
  kSolarPanel = 5,
  kMirror = 6,  ///< reflects all that comes
  kFarBoundary = 7,
};

/// The kind of a patch. A number outside 1 to 7 is no fault: such a patch is of the kind `kOther`
/// and takes part only where that kind is named.
class Type {
 public:
  constexpr Type(std::int32_t number)
      : kind_(number >= kBuilding && number <= kFarBoundary ? static_cast<std::uint8_t>(number)
                                                            : std::uint8_t{kOther}) {}
  friend constexpr bool operator==(Type a, Type b) { return a.kind_ == b.kind_; }

 private:
  friend class Types;
  std::uint8_t kind_;
};

/// A set of kinds, as a mask over patches.
class Types {
 public:
  constexpr Types(std::initializer_list<Type> types) {
    for (const Type type : types) bits_ |= 1U << type.kind_;
  }
  [[nodiscard]] constexpr bool contains(Type type) const { return (bits_ >> type.kind_ & 1U) != 0; }

 private:
  std::uint32_t bits_ = 0;
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
  std::vector<Type> type;
  std::vector<std::int32_t> SurfID;  ///< material; on a tree patch the face number BndC 1..6
  std::vector<std::int32_t> BldID;
  frame::CodeIndex by_pid;  ///< PID -> position
};

/// Reads both files. A patch without area gets 1e-20 m2. `mx`, `my`, `mz` are the grid's cells,
/// `NDIV` the division of a cell by the fine grid of the trees.
void read_patch(frame::Log& log, frame::TextInput& patch_file, frame::TextInput& treepatch_file,
                std::int32_t mx, std::int32_t my, std::int32_t mz,
                const tsrf_module_grdindx::Data& grid_index, std::int32_t NDIV, Data& data);

/// Tells what the arrays take.
void list_arrays(const Data& data, frame::ArrayList& list);

}  // namespace tsrf_module_patch
