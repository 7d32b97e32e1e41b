// flw_amgcg_pre: the symmetric system of the pressure equation on all levels of its multigrid.
//
// Made once for a matrix; it serves all right sides. Used by the pressure step.
#pragma once

#include <array>
#include <vector>

#include "flow/linear/amg_direct.hpp"
#include "flow/linear/amg_level.hpp"
#include "flow/linear/amg_passes.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"

namespace flow {

/// Levels from the finest on, without the coarsest, which `direct` solves, and the vectors of the
/// solution on the finest.
struct AmgSystem {
  std::vector<AmgLevel> levels;
  AmgLevel last;  ///< of the coarsest: sizes and `between` alone
  AmgDirect direct;
  AmgExact exact;
  Floats x, p, s, w;                 ///< of AmgVectors
  std::vector<AmgSums> sums;         ///< of each layer
  std::vector<AmgRowSums> row_sums;  ///< of the rows of a layer
  Values norms;                      ///< kLanes for each layer
  std::vector<double> work;          ///< of `direct`
  AmgPasses passes{};

  [[nodiscard]] AmgLevel& finest() { return levels.front(); }
  [[nodiscard]] AmgLevel& coarser(std::size_t level) {
    return level + 1 < levels.size() ? levels[level + 1] : last;
  }
};

/// Sets all levels up; `fluid` is > 0 in the cells of the system. A cell whose diagonal is 0 keeps
/// the solution 0. `set` is the set of instructions that the solution will use. The memory of
/// `system` is taken anew.
void flw_amgcg_pre(frame::Log& log, const FiveBlocks& blocks, const Flags& fluid,
                   const AmgGeometry& geometry, AmgSystem& system,
                   InstructionSet set = widest_set());

/// Brings the cells of a field to their slots in exact.b; those outside the system get 0.
void gather_rows(frame::Crew& crew, const Field& from, AmgSystem& system);
/// Brings exact.x to the cells of a field.
void scatter_rows(frame::Crew& crew, const AmgSystem& system, Field& to);

}  // namespace flow
