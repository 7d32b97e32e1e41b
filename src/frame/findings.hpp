// Findings: what a check of all files of a run has to say.
//
// A run ends at its first fault. A check reads the same files by the same readers and goes on: its
// log collects each fault, and each warning as a doubt, here. A reader says where it can go on:
// with the next item (`attempt`), or behind a record that cannot be read (`Log::lost_record`). A
// record that is lost is remembered by its words, so that what others miss of it is not told as
// well. Owned by the check, filled by the log; without it none of this costs a run anything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace frame {

class TextInput;

struct Finding {
  bool fault = true;                 ///< else a doubt: the run would go on
  std::vector<std::string> lines{};  ///< the words, as the log of a run has them
  std::string file{};                ///< as it is named to the log; empty: not known
  std::int64_t line = 0;             ///< in that file, from 1; 0: not known
  std::string hint{};
  std::int64_t count = 1;  ///< how often these words came
};

/// A member that a group of settings was given.
struct Setting {
  std::string group;   ///< upper case
  std::string member;  ///< upper case
  std::string file;
  std::int64_t line = 0;
  bool changed = false;  ///< its value is not the default
};

class Findings {
 public:
  /// Adds a finding. A line "%%% file NAME, line N" among the words, or at the end of a warning,
  /// tells its place.
  void add(Finding finding);
  /// Gives the last finding, if it has no place yet, this one.
  void place(std::string_view file, std::int64_t line);

  /// A record of `file` that could not be read, or the whole file where `text` is empty.
  void lose(std::string_view file, std::string_view text);
  /// Whether the record at a line was lost before.
  bool lost_at(std::string_view file, std::int64_t line) {
    return !lost_lines_.emplace(std::string(file), line).second;
  }
  /// A code that no file has, to stand where one was lost; what names it is no finding.
  std::int32_t stand_in() { return next_stand_in_++; }
  [[nodiscard]] std::int32_t stand_ins() const { return next_stand_in_; }
  [[nodiscard]] bool lost_file(std::string_view file) const;
  /// Whether a lost record of a file whose name ends in `file` has the word.
  [[nodiscard]] bool lost_word(std::string_view file, std::string_view word) const;
  [[nodiscard]] bool lost_any(std::string_view file) const;

  /// True from the second question on.
  bool told_of_length(std::string_view file) { return !long_.emplace(file).second; }
  /// Whether so many faults were found in a file that the rest of it is not worth reading.
  [[nodiscard]] bool enough_of(std::string_view file) const;

  [[nodiscard]] const std::vector<Finding>& all() const { return findings_; }
  [[nodiscard]] std::vector<Finding>& all() { return findings_; }

  std::vector<Setting> settings;  ///< all that were given, in their order
  std::int64_t memory = 0;        ///< that the run will take [bytes]; 0: not known
  std::set<std::string> groups;   ///< the groups that were asked for, upper case

 private:
  void merge();

  std::vector<Finding> findings_;
  std::map<std::string, std::size_t> known_;                 // words and place -> finding
  std::size_t merged_ = 0;                                   // findings that `known_` has
  std::map<std::string, std::int64_t, std::less<>> faults_;  // by file
  std::map<std::string, std::int64_t> kinds_;                // by file and words
  std::map<std::string, std::set<std::string, std::less<>>, std::less<>> lost_;
  std::set<std::string, std::less<>> lost_files_;
  std::set<std::string, std::less<>> long_;
  std::set<std::pair<std::string, std::int64_t>> lost_lines_;
  std::int32_t next_stand_in_ = INT32_MIN;
};

}  // namespace frame
