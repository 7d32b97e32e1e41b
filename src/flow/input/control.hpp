// Control records: what the control data tell the flow solver.
//
// Each reader takes the records that follow at the present place, writes them on the log with
// their labels and checks them; docs/flow_files.md lists every record. Called in this order by the
// start-up, behind the two records that the main program reads.
#pragma once

#include "flow/settings.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// The 19 records of run, schedule, steps, switches, schemes, solvers, start and ambient air.
/// `ns` is the number of species. Errors: "### data error (flw_read_cntdat)" and the rule.
Control flw_read_cntdat(frame::Log& log, frame::TextInput& file, std::int32_t ns);

/// The records of the gas: viscosity, Prandtl and Schmidt numbers, molar masses and specific
/// heats. Errors: "### data error (flw_read_spcies)" and the rule.
Species flw_read_spcies(frame::Log& log, frame::TextInput& file, std::int32_t ns);

/// The records of the history file: its points, cells of the grid, and its schedule. Errors:
/// "### data error (flw_read_hstpnt)" and the rule.
HistoryPoints flw_read_hstpnt(frame::Log& log, frame::TextInput& file, const Triple& cells);

/// The four short records. From any of them on they may be missing (the end of the file, or a
/// namelist group in their place); the defaults of ShortRecords then hold.
ShortRecords read_short_records(frame::Log& log, frame::TextInput& file);

}  // namespace flow
