// The table of a run's files: the 26 names of `file_name`.
//
// Reads the names, reports them on the log and opens the files, those of a dated run through the
// names of its first month. Called by the main program at the start.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "driver/filnam.hpp"
#include "frame/log.hpp"
#include "frame/unit_table.hpp"

namespace frame {

/// When a file is opened.
enum class Opened { at_start, by_run_kind };
/// How a file is opened.
enum class Form { input, input_if_any, output, records };

/// One row of the table.
struct FileRow {
  std::string_view label;  ///< as on the log
  int unit;
  Opened opened;
  Form form;
};

/// What a file is called on the log, without the padding: "Sun data (in)".
[[nodiscard]] std::string title(const FileRow& row);

inline constexpr std::size_t kFiles = 26;
using FileNames = std::array<std::string, kFiles>;

/// The rows, in the order of the lines of `file_name`.
extern const std::array<FileRow, kFiles> kFileTable;

/// Reads `file_name` (unit 10), opens the files and settles whether this is a dated run. An output
/// whose name is also another file's ends the run before anything is written.
void read_file_table(Log& log, UnitTable& units, ubx_module_filnam::Data& filnam);

}  // namespace frame
