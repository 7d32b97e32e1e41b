// What a run may write, and what it has written.
//
// Nothing that a run reads, in whatever month or on whatever day, may be written by it, and no two
// results share a file. Asked by the file table before anything is written, by the monthly results
// before a month replaces another, and by the main program for the log's last lines.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "driver/file_table.hpp"
#include "driver/filnam.hpp"
#include "frame/log.hpp"
#include "frame/unit_table.hpp"

namespace frame {

/// Fails when the log or an output has the name of another file that the run reads or writes; in a
/// dated run of any month and, for Sun, of any day.
void check_outputs(Log& log, const UnitTable& units, const FileNames& names,
                   const ubx_module_filnam::Data& filnam);

/// The unit of the energy account, which is no line of `file_name`.
inline constexpr int kUnitAccount = 41;
/// The same for the energy account, whose group stands at `place` and whose name is fixed.
void check_account_name(Log& log, const UnitTable& units, const ubx_module_filnam::Data& filnam,
                        const std::string& place);

/// Tells the log each result file and the rows that the run wrote into it, or that it wrote none.
void report_results(Log& log, const UnitTable& units);

}  // namespace frame
