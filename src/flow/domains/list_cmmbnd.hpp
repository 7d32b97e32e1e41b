// flw_list_cmmbnd: reads the sub-domains of the grid.
//
// With one process the file may be left out, and then there is one domain, the whole grid. Called
// by the start-up behind the boundary conditions.
#pragma once

#include "flow/domains/domains.hpp"
#include "frame/log.hpp"
#include "frame/process_layer.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// Reads the domain file (null: the run has none): the number of domains, then for each its rank
/// and its first and last cells along x, y and z. `boundary` is read again for the flags of the
/// ends of the grid. Errors: those of flw_module_dc1 for a table that does not split the grid.
SubDomains flw_list_cmmbnd(frame::Log& log, const frame::ProcessLayer& layer,
                           frame::TextInput* file, frame::TextInput& boundary, const Triple& cells);

}  // namespace flow
