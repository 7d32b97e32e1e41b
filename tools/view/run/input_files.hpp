// The files of a run directory: their names, and the core's readers on them.
//
// Nothing in the directory is made or changed: inputs are opened for reading only, results by
// run/lines.hpp.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "driver/file_table.hpp"
#include "driver/filnam.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace townskin_view {

/// A log that is kept in memory: what the core's readers say is told as a fault or a note.
class QuietLog {
 public:
  QuietLog() : log(said_, said_) {}
  /// Does `work`; what it failed with, in one line, or nothing.
  [[nodiscard]] std::string fault_of(const std::function<void()>& work);

 private:
  std::ostringstream said_;

 public:
  frame::Log log;
};

/// Names and places of a run's files.
struct RunFiles {
  std::string directory;
  frame::FileNames names;
  ubx_module_filnam::Data filnam;  ///< the names of a dated run's months

  [[nodiscard]] std::string path_of(const std::string& name) const;
  /// The path of a file, in a dated run of `month` (0: not by month). Empty where it has no name.
  [[nodiscard]] std::string path(int unit, std::int32_t month = 0) const;
  [[nodiscard]] std::string sun_path(std::int32_t month, std::int32_t day) const;
  /// The months of a dated run's files; {0} where a day repeats.
  [[nodiscard]] std::vector<std::int32_t> months() const;
  /// An input, opened; a file that is not there reads as an empty one.
  [[nodiscard]] std::unique_ptr<frame::TextInput> open(int unit, std::int32_t month = 0) const;
  /// Paths of all inputs that are there.
  [[nodiscard]] std::vector<std::string> inputs() const;
};

/// Reads `file_name` of the directory. A directory that has none, or one that is no run's, is a
/// Fault that says so.
[[nodiscard]] RunFiles read_file_name(const std::string& directory, QuietLog& quiet);

/// FNV-1a of 64 bits over the contents of files, one after the other, as 16 hexadecimal digits.
[[nodiscard]] std::string hash_of(const std::vector<std::string>& paths);

}  // namespace townskin_view
