// What the tool has to say: repairs, warnings and faults, each with the file and the feature that
// it is about.
//
// Every part of the tool reports here; the program writes all of it to standard error and to
// case.log at the end. A fault ends the work by an exception, so that nothing is written.
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace townskin_case {

/// Where something comes from.
struct Origin {
  std::string file;
  std::string feature;  ///< its id, or "#" and its number in the file, from 1
};

/// Ends the work: a message for the user, without a full stop.
class Fault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Report {
 public:
  explicit Report(bool strict = false) : strict_(strict) {}

  /// Something that was set right: `what` is the kind, the same words for all of its kind, such as
  /// "ring closed".
  void repair(const std::string& what, const Origin& origin);
  /// Something that is left out because it cannot be repaired; a fault where the user is strict.
  void leave_out(const std::string& why, const Origin& origin);
  void warning(const std::string& text);
  [[noreturn]] static void fault(const std::string& text, const Origin& origin);

  [[nodiscard]] std::size_t count(const std::string& what) const;
  /// All of it as lines: each kind with its count, then where (so many of a kind by name); then the
  /// warnings.
  [[nodiscard]] std::vector<std::string> lines(std::size_t named_at_most = SIZE_MAX) const;

 private:
  bool strict_;
  std::map<std::string, std::vector<Origin>> repairs_, left_out_;
  std::vector<std::string> warnings_;
};

}  // namespace townskin_case
