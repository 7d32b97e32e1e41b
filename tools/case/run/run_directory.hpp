// The directory of a run as it grows: under another name, so that one which was cut short is never
// taken for a run, until it is whole.
#pragma once

#include <string>

#include "report.hpp"

namespace townskin_case {

class RunDirectory {
 public:
  /// Makes the growing directory beside `target`. A fault if the target is there, unless `force`;
  /// even then if it is no run, lest something else be lost.
  RunDirectory(const std::string& target, bool force);
  /// Removes what did not become whole.
  ~RunDirectory();
  RunDirectory(const RunDirectory&) = delete;
  RunDirectory& operator=(const RunDirectory&) = delete;

  [[nodiscard]] const std::string& path() const { return growing_; }
  /// Gives the directory its name; an older run of that name goes only now.
  void finish();

  /// The faults of the constructor, before any work is done.
  static void check_target(const std::string& target, bool force);
  /// Removes what a run of this name left that was killed as it grew: directories which hold the
  /// mark of one and whose maker is gone. An older run that was being replaced then is only told
  /// of.
  static void tidy(const std::string& target, Report& report);

 private:
  std::string target_, growing_;
  int mark_ = -1;  ///< open and locked as long as the directory grows
};

}  // namespace townskin_case
