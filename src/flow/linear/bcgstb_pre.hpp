// flw_bcgstb_pre: a general matrix of seven diagonals, scaled by its diagonal and factorised.
//
// The factor is the diagonal incomplete one without modification: lower and upper couplings are
// kept, and the diagonal alone is changed (Meijerink and van der Vorst 1977; Pommerell 1992 calls
// it D-ILU). Used by flw_imdqdt.
#pragma once

#include <array>
#include <vector>

#include "flow/box.hpp"
#include "flow/linear/bcgstb_passes.hpp"
#include "flow/linear/diagonals.hpp"
#include "frame/log.hpp"

namespace flow {

/// Rows of the fluid cells: diagonal * q + sum over the axes of (lower * the value of the
/// neighbour at the smaller index + upper * that at the larger one) = right side. The diagonal is
/// not 0. On a periodic y the lower coupling of cell 1 reaches cell ny, the upper one of cell ny
/// reaches cell 1; all other couplings beyond the box are ignored, and so are those with a cell
/// that is not fluid.
struct SevenPoint {
  Field diagonal;
  std::array<Field, 3> lower, upper;

  SevenPoint() = default;
  explicit SevenPoint(const Box& box)
      : diagonal(box, 1.0),
        lower{Field(box), Field(box), Field(box)},
        upper{Field(box), Field(box), Field(box)} {}
};

/// The scaled matrix, whose diagonal is 1, its factor and the vectors of the solution.
struct BcgstbSystem {
  Diagonals points;
  Values inside;                       ///< 1 in the cells of the system, else 0
  Values scale;                        ///< 1 / diagonal; 0 outside the system
  std::array<Values, 3> lower, upper;  ///< couplings, by the axes of `points`
  Values d;                            ///< factor; 0 outside the system
  std::vector<double> wrap_lower, wrap_upper;
  Values b, x, r, first, p, v, y, z, t;
  BcgstbPasses passes{};

  [[nodiscard]] BcgstbArrays arrays() const;
};

/// Takes the memory for the systems of a run on the fluid cells; `set` is the set of instructions
/// that the solutions will use.
void flw_bcgstb_size(frame::Log& log, const Flags& fluid, bool periodic_y, BcgstbSystem& system,
                     InstructionSet set = widest_set());

/// Scales and factorises `rows`, whose box is that of the system.
/// Errors, on standard output: "### interface error -n- (flw_bcgstb_pre)" with n 1 for vectors that
/// do not fit the layers, 2 for rows that do not fit a layer, 3 for a pivot that is not above 0.
void flw_bcgstb_pre(frame::Log& log, const SevenPoint& rows, BcgstbSystem& system);

}  // namespace flow
