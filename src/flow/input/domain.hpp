// flw_list_cmmbnd: the sub-domains of the grid.
//
// With one process there is one domain, the whole grid; the domain file, where a run has one, is
// held against that. Called by the start-up behind the boundary conditions.
#pragma once

#include "flow/box.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// Reads the domain file (null: the run has none): the number of domains, then for each the first
/// and last cell along x, y and z. `boundary` is read again for the flags of the domain's ends.
void flw_list_cmmbnd(frame::Log& log, frame::TextInput* file, frame::TextInput& boundary,
                     const Triple& cells);

}  // namespace flow
