// flw_iccg_pre: the symmetric system of the pressure equation, scaled and factorised.
//
// The incomplete Cholesky factor without fill (Meijerink and van der Vorst 1977), with a part of
// the dropped fill moved to the diagonal (Gustafsson 1978). It is made once for a matrix and serves
// all right sides. Used by the pressure step.
#pragma once

#include <array>
#include <vector>

#include "flow/box.hpp"
#include "flow/linear/diagonals.hpp"
#include "flow/linear/iccg_passes.hpp"
#include "frame/log.hpp"

namespace flow {

/// A symmetric matrix by its lower half. Couplings are those of a cell with its neighbour at the
/// smaller index; `wrap` couples cell ny with cell 1 of a periodic y and stands at ny. Only fluid
/// cells count; a coupling with another cell is 0.
struct FiveBlocks {
  Field diagonal;
  std::array<Field, 3> lower;
  Field wrap;

  FiveBlocks() = default;
  explicit FiveBlocks(const Box& box)
      : diagonal(box), lower{Field(box), Field(box), Field(box)}, wrap(box) {}
};

/// The scaled matrix, whose diagonal is 1, its factor and the vectors of the solution.
struct IccgSystem {
  Diagonals points;
  std::array<Values, 3> a;  ///< couplings with the lower neighbours, by the axes of `points`
  Values scale;             ///< 1 / sqrt(diagonal); 0 outside the system
  Values d;                 ///< factor; 0 outside the system
  std::vector<double> wrap_coupling, wrap_factor;
  Values b, x, r, p, y;
  IccgPasses passes{};

  [[nodiscard]] IccgArrays arrays();
};

/// Scales and factorises `blocks`; `fluid` is > 0 in the cells of the system. `set` is the set of
/// instructions that the solution will use. The memory of `system` is taken anew.
/// Errors: "### interface error -1- (flw_iccg_pre)" for a pivot that is not above 0, behind a line
/// on the log that tells it: scaling spoils the balance of rows, and where neighbours differ much a
/// gsfcg near 1 takes more from a pivot than it has.
void flw_iccg_pre(frame::Log& log, const FiveBlocks& blocks, const Flags& fluid, bool periodic_y,
                  double gsfcg, IccgSystem& system, InstructionSet set = widest_set());

}  // namespace flow
