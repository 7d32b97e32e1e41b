// Namelist groups: the named settings of a control file.
//
// A module declares its group once, as a table of members: name, where the value goes (whatever
// stands there is the default) and the rule that it must keep, with the words of the failure.
// Reading, the echo on the log and the checks all follow from that table:
//
//     frame::Group group("TSRF_WEATHER", {{"NSTRDT", data.NSTRDT, greater("nstrdt =", data.NSTRDT,
//     1)},
//                                         {"NCYCL", data.NCYCL}});
//     group.read(log, control);   // reads, echoes, checks; a group that is not there is no fault
//
// A group opens with `&NAME` anywhere in the file, in any case, and closes with a slash; between
// stand `MEMBER = values`, members in any order, `!` starts a comment. Used by every module that
// has settings; called once from the start of a run.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace frame {

/// Where a member's value goes.
using Target = std::variant<std::int32_t*, double*, bool*, std::string*, std::span<std::int32_t>,
                            std::span<double>>;

/// The lines that report a broken rule, without the heading; none when the rule holds.
using Check = std::function<std::vector<std::string>()>;

struct Member {
  Member(std::string_view member_name, std::int32_t& value, Check member_check = {})
      : name(member_name), target(&value), check(std::move(member_check)) {}
  Member(std::string_view member_name, double& value, Check member_check = {})
      : name(member_name), target(&value), check(std::move(member_check)) {}
  Member(std::string_view member_name, bool& value, Check member_check = {})
      : name(member_name), target(&value), check(std::move(member_check)) {}
  Member(std::string_view member_name, std::string& value, Check member_check = {})
      : name(member_name), target(&value), check(std::move(member_check)) {}
  Member(std::string_view member_name, std::span<std::int32_t> values, Check member_check = {})
      : name(member_name), target(values), check(std::move(member_check)) {}
  Member(std::string_view member_name, std::span<double> values, Check member_check = {})
      : name(member_name), target(values), check(std::move(member_check)) {}

  std::string_view name;  ///< upper case
  Target target;
  Check check;
};

/// Rules. `words` is the text before the value ("dzg ="), the value is read when the rule is
/// checked, `rule` is the text of the last line ("it must be > 0").
template <class Number>
Check holds(std::string_view words, const Number& value, bool (*good)(Number),
            std::string_view rule) {
  return [words, &value, good, rule]() -> std::vector<std::string> {
    if (good(value)) return {};
    return {items(words, value), std::string(rule)};
  };
}
/// `value` > 0, with the words "it must be > 0".
Check positive(std::string_view words, const std::int32_t& value);
Check positive(std::string_view words, const double& value);
/// `value` >= 0, with the words "it must be >= 0".
Check not_negative(std::string_view words, const double& value);

class Group {
 public:
  Group(std::string_view name, std::vector<Member> members)
      : name_(name), members_(std::move(members)) {}

  /// Rewinds `file`, reads the group, echoes it on the log, checks the members in the order of the
  /// table. A group that is not in the file leaves all members as they are and is not echoed;
  /// returns whether it was found. A group that cannot be read, or that never closes, fails with
  /// the group's name in lower case and the tag `reader`; a broken rule fails as a data error.
  /// A check that must hold even when the group is absent is the caller's (`check`). Where the log
  /// collects faults, what cannot be read is passed over, each member is checked, and one that
  /// breaks its rule gets its default back.
  bool read(Log& log, TextInput& file, std::string_view reader = "(flw_nml_errmsg0)");
  /// Checks the members only.
  void check(Log& log) const;
  /// The group as text, as it is echoed.
  [[nodiscard]] std::string text() const;

  [[nodiscard]] std::string_view name() const { return name_; }
  /// Where `read` found the group, for the log: "%%% file NAME, line N"; empty when it did not.
  [[nodiscard]] const std::string& place() const { return place_; }
  [[nodiscard]] const std::vector<Member>& members() const { return members_; }

 private:
  [[noreturn]] void report(Log& log, TextInput& file, int status, std::string_view reader) const;

  // The forms of a log that collects (group_check.cpp).
  void note_asked(Log& log, const TextInput& file, std::size_t place);
  void read_on(Log& log, TextInput& file, std::size_t place);
  void note_fault(Log& log, const Member& member, std::vector<std::string> lines) const;

  std::string_view name_;
  std::vector<Member> members_;
  std::string place_;
  std::string file_;                 // of a log that collects
  std::vector<std::int64_t> lines_;  // and there, per member: line of its value, or of the group
};

}  // namespace frame
