// A file of unformatted sequential records, each framed by its 32-bit byte length before and
// after: the form of the restart file.
//
// Reading takes the whole file; writing replaces it in one stroke (a new file beside the old one,
// under a name that is free, flushed to the disk, then renamed), so that a run killed at any moment
// leaves the old state or the new one, and nothing else that stands there is touched. Used by the
// restart routines only.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace frame {

class Log;

class RecordFile {
 public:
  explicit RecordFile(std::string path) : name_(std::move(path)) {}
  [[nodiscard]] const std::string& name() const { return name_; }

  /// True when the file can be read and written (or made, where it is not there); `reason` says
  /// why not. An empty file is made where there is none.
  bool check_access();
  [[nodiscard]] const std::string& reason() const { return reason_; }

  /// Reads the file. False when its frames are not whole: a record cut short, a length mark
  /// missing or unlike its partner. A file that is not there or empty has no records.
  bool load();
  /// The records that `load` found.
  [[nodiscard]] const std::vector<std::span<const std::byte>>& records() const { return records_; }
  /// Gives the memory of the loaded records back.
  void unload();

  /// Replaces the file by the given records. Fails, naming the file and the system's reason, when
  /// that cannot be done; the old file then stands as it was.
  void replace(Log& log, std::span<const std::span<const std::byte>> records);

 private:
  std::string name_;
  std::string reason_;
  std::vector<std::byte> content_;
  std::vector<std::span<const std::byte>> records_;
};

}  // namespace frame
