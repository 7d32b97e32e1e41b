// The last stage of a scalar's step: from the tendency to the new values.
//
//   r gmc dq/dt = R
//
// explicit, or implicit for the change d of a cell's value, (r gmc + dt L) d = dt R, with upwind
// advection and diffusion in L. R is the whole rate in both: a steady state has R = 0 and is the
// same, L only settles the road to it. A sink that grows with the value is held in either form, so
// that it never takes more than there is. Called by the steps of temperature and species and of
// turbulence. First order in time.
#pragma once

#include <limits>

#include "flow/linear/imdqdt.hpp"
#include "flow/scalars/transport.hpp"

namespace flow {

/// Memory of the implicit form, one for all scalars; empty in an explicit run.
struct ScalarSystem {
  SevenPoint rows;
  BcgstbSystem system;
};
ScalarSystem make_scalar_system(frame::Log& log, const Domain& domain);

struct ScalarStep {
  Field* q = nullptr;  ///< to be brought forward
  Transported by;      ///< what went through transport; its tendency is the whole rate R
  /// Rate of a sink over the value, which R holds already [kg/m3 s], per volume of the whole cell.
  const Field* sink = nullptr;
  /// Exchange with the conditions of the rim, by open area [kg/m2 s]; none: null.
  const RimFactors* transfer = nullptr;
  /// Change of q over the change of what was transported; null: 1.
  const Field* factor = nullptr;
  double least = std::numeric_limits<double>::lowest();  ///< that q may have
  double most = std::numeric_limits<double>::max();
  bool holds = false;  ///< q beyond `least` or `most` is put there; else it is at fault
};

/// Brings q of all cells forward by dt [s], halos included, row by row; cells that are not fluid
/// keep theirs. Reads r level 1 and, implicit, ru and mut; the implicit form uses up the
/// tendencies. Returns the first variable that has a value that is not finite or out of its range,
/// or their number. Errors: those of flw_imdqdt.
[[nodiscard]] std::size_t advance_scalars(frame::Log& log, const Domain& domain, const State& state,
                                          double dt, std::span<const ScalarStep> steps,
                                          ScalarSystem& implicit);

/// Ends the run with the first fluid cell whose value is not finite or out of its range: "### error
/// :" and `what`, then the cell and the value.
[[noreturn]] void fail_at_first(frame::Log& log, std::string_view what, const Flags& fluid,
                                const ScalarStep& step);

}  // namespace flow
