// The sub-domains: how the grid is split among the processes.
//
// Each process computes one box of cells. The table of all boxes is read and checked once at the
// start (list_cmmbnd.hpp); from it alone come the lists of what a process gets from whom (dc1.hpp,
// indcmm.hpp), so that every process, or a test in the place of all of them, can form the lists of
// any rank. Owned by the run.
#pragma once

#include <cstdint>
#include <vector>

#include "flow/box.hpp"

namespace flow {

/// The box of one process: its first and last cells, in the numbers of the whole grid.
struct SubDomain {
  Triple first{}, last{};

  [[nodiscard]] Box box() const {
    return {{last[0] - first[0] + 1, last[1] - first[1] + 1, last[2] - first[2] + 1}};
  }
};

/// All boxes, by rank. They lie in the grid, do not meet and leave no cell over.
struct SubDomains {
  Triple cells{};  ///< of the whole grid
  std::vector<SubDomain> of;

  /// True where the grid has more than one cell along an axis; then also a box of one cell has
  /// halos there.
  [[nodiscard]] bool computed(int axis) const { return cells[static_cast<std::size_t>(axis)] > 1; }
};

}  // namespace flow
