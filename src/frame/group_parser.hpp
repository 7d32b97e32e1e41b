// The text of one group of settings, read into its members.
//
// Used by Group (namelist.hpp), which finds the group and reports what the parser cannot take.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "frame/namelist.hpp"

namespace frame {

/// Reads a group behind its name, up to the slash that closes it.
class GroupParser {
 public:
  static constexpr int kEndOfFile = -1;
  static constexpr int kReadError = 1;
  static constexpr std::size_t kNotGiven = std::string_view::npos;

  GroupParser(std::string_view text, std::size_t place, const std::vector<Member>& members)
      : text_(text), at_(place), members_(members), given_(members.size(), kNotGiven) {}

  /// 0, or the status of the failure.
  int parse();
  /// Where the group ended, or what cannot be read stands.
  [[nodiscard]] std::size_t place() const { return at_; }

  /// Passes over what cannot be read, up to the next member or the end of the group; `parse` then
  /// goes on.
  void pass_fault();
  /// The name at `place` that no member has; empty when it is something else that cannot be read.
  [[nodiscard]] std::string_view unknown() const { return unknown_; }
  /// Per member: where its name stands.
  [[nodiscard]] const std::vector<std::size_t>& given() const { return given_; }

 private:
  void skip_blank(bool commas);
  const Member* take_member();
  bool take_index();
  [[nodiscard]] bool position(std::string_view text, std::size_t& value) const;
  [[nodiscard]] bool at_next_member() const;
  int take_values(const Member& member);
  int take_value(const Member& member);
  bool take_quoted(std::string& value);

  std::string_view text_;
  std::size_t at_;
  const std::vector<Member>& members_;
  std::vector<std::size_t> given_;
  std::string_view unknown_;
  std::size_t element_ = 0;  // the next element of the current member, from 0
  std::size_t end_ = 0;      // behind the last element that may be given
  int status_ = kReadError;
};

}  // namespace frame
