// flw_imdqdt: the implicit step of one variable, a general matrix of seven diagonals.
//
// Called by the momentum and scalar steps when they are implicit: they assemble the rows, this
// solves them by Bi-CGSTAB and tells so in one line of the log. The equations are scaled by their
// diagonals; where a row couples to a cell that is not fluid, the coupling is ignored.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "flow/box.hpp"
#include "flow/linear/bcgstb.hpp"
#include "frame/log.hpp"

namespace flow {

/// Rows of the fluid cells: diagonal * q + sum over the axes of (lower * the value of the
/// neighbour at the smaller index + upper * that at the larger one) = right side. The diagonal is
/// not 0. On a periodic y the lower coupling of cell 1 reaches cell ny, the upper one of cell ny
/// reaches cell 1; all other couplings beyond the box are ignored, and so are those of an axis
/// with one cell.
struct SevenPoint {
  Field diagonal;
  std::array<Field, 3> lower, upper;

  SevenPoint() = default;
  explicit SevenPoint(const Box& box)
      : diagonal(box, 1.0),
        lower{Field(box), Field(box), Field(box)},
        upper{Field(box), Field(box), Field(box)} {}
};

/// Limits of the solution: `itrbcg` and `epsbcg` of the control data.
struct ImplicitLimits {
  std::int32_t itmax = 1;
  double epsrel = 0.0;
};

/// Solves `rows` for the fluid cells. `q` holds the right side on entry and the solution on
/// return; cells that are not fluid get 0, halos are left alone. `work` was sized by
/// make_implicit_work for the same box and flags. One line goes to the log: "bcgstb", count, "L2",
/// ratio to the first norm, final norm, flag of non-convergence.
/// Errors: "### error : bcgstb (flw_imdqdt)", "not converged", "(flw_imdqdt)".
void flw_imdqdt(frame::Log& log, const SevenPoint& rows, const ImplicitLimits& limits,
                BcgstbSystem& work, Field& q);

/// Takes the memory that flw_imdqdt works in, once for a run and all its variables.
BcgstbSystem make_implicit_work(frame::Log& log, const Flags& fluid, bool periodic_y);

}  // namespace flow
