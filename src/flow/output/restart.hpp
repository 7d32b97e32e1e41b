// Restart of the flow: a state from its set in the restart file, and back.
//
// The file holds sets one after another (flow_set.hpp). A run that goes on keeps those up to the
// one that it started from; all others begin the file anew at their first output. A file is
// replaced in one stroke at each output, so that it holds whole sets at any moment.
#pragma once

#include <string>
#include <string_view>

#include "flow/grid_tables.hpp"
#include "flow/output/flow_set.hpp"
#include "frame/log.hpp"

namespace flow {

struct SetFile;

struct Restored {
  FlowSet set;
  std::uint64_t kept = 0;  ///< bytes of the file up to the end of the set
};

/// The set of iteration `iters`. Fails ("### error : restart file (flw_prep_init)") on sets of
/// another grid, on a file without a whole set, without the one wanted, or with values that are
/// not finite.
Restored restore(frame::Log& log, const SetFile& file, std::int32_t iters, const Triple& cells,
                 std::size_t ns);

/// Values that are not finite, and temperatures that are not above 0, end the run under `heading`.
void check_values(frame::Log& log, std::string_view heading, const FlowSet& set);

/// Brings a set to the run's mesh, whose cells divide those of the set: each takes the values of
/// the cell that it lies in, the fluxes are linear between the set's faces along their normal. k
/// and epsilon are taken where both have them.
void spread(const FlowSet& set, const GridTables& grid, State& state);

/// A set of the run's own mesh, with its clock. In a `closed` domain the thermodynamic pressure
/// and the mass that it keeps come from the set; one without them is warned about.
void take_over(frame::Log& log, const FlowSet& set, bool closed, const GridTables& grid,
               State& state);

}  // namespace flow
