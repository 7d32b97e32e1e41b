// The grid cells that hold surfaces: what the files by cell have a line for.
//
// Found once at the start from the patches' shifted cells, as a sorted list; the sums of a cell
// then stand in arrays as long as the list, however large the grid is.
#pragma once

#include <cstdint>
#include <vector>

#include "inputs/patch.hpp"

namespace tsrf_module_io {

struct CellList {
  static constexpr std::int32_t kNone = -1;

  std::vector<std::int32_t> i, j, k;   ///< shifted indices, in the order of the file's lines
  std::vector<std::int32_t> PID;       ///< per cell: its largest patch, for messages
  std::vector<std::int32_t> of_patch;  ///< per patch: place of its cell, kNone when left out
  [[nodiscard]] std::size_t size() const { return k.size(); }
};

/// Which of i and j changes fastest in a list; k always changes slowest.
enum class CellOrder { i_fastest, j_fastest };

/// The cells of the patches whose type is one of `types`.
CellList list_cells(const tsrf_module_patch::Data& patch, tsrf_module_patch::Types types,
                    CellOrder order);

}  // namespace tsrf_module_io
