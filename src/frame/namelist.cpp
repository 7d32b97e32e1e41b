#include "frame/namelist.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "frame/group_parser.hpp"
#include "frame/names.hpp"

namespace frame {

using names::is_name_char;
using names::is_quote;
using names::lower_case;
using names::same_name;

namespace {

/// The place behind a text in quotes that opens, behind blanks, at `place` and closes on its line;
/// `place` itself where none does.
std::size_t behind_quoted(std::string_view text, std::size_t place) {
  std::size_t open = place;
  while (open < text.size() && (text[open] == ' ' || text[open] == '\t')) ++open;
  if (open == text.size() || !is_quote(text[open])) return place;
  for (std::size_t p = open + 1; p < text.size() && text[p] != '\n'; ++p) {
    if (text[p] == text[open]) return p + 1;
  }
  return place;
}

/// The place behind `&name`, or npos. Comments, and the texts that members of other groups are
/// given, are passed over.
std::size_t find_group(std::string_view text, std::string_view name) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '!') {
      i = text.find('\n', i);
      if (i == std::string_view::npos) break;
      continue;
    }
    if (text[i] == '=') i = behind_quoted(text, i + 1) - 1;
    if (text[i] != '&') continue;
    const std::size_t behind = i + 1 + name.size();
    if (behind > text.size() || !same_name(text.substr(i + 1, name.size()), name)) continue;
    if (behind == text.size() || !is_name_char(text[behind])) return behind;
  }
  return std::string_view::npos;
}

std::string quoted(const std::string& text) {
  std::string result(1, '\'');
  for (const char c : text) result.append(c == '\'' ? 2 : 1, c);
  result += '\'';
  return result;
}

std::string values_text(const Target& target) {
  const auto list = [](const auto& values) {
    std::string text;
    for (const auto& value : values) text += (text.empty() ? "" : ", ") + items(value);
    return text;
  };
  if (auto* const* number = std::get_if<std::int32_t*>(&target)) return items(**number);
  if (auto* const* number = std::get_if<double*>(&target)) return items(**number);
  if (auto* const* flag = std::get_if<bool*>(&target)) return **flag ? ".true." : ".false.";
  if (auto* const* text = std::get_if<std::string*>(&target)) return quoted(**text);
  if (const auto* ints = std::get_if<std::span<std::int32_t>>(&target)) return list(*ints);
  return list(std::get<std::span<double>>(target));
}

}  // namespace

Check positive(std::string_view words, const std::int32_t& value) {
  return holds<std::int32_t>(
      words, value, [](std::int32_t v) { return v > 0; }, "it must be > 0");
}
Check positive(std::string_view words, const double& value) {
  return holds<double>(
      words, value, [](double v) { return v > 0.0; }, "it must be > 0");
}
Check not_negative(std::string_view words, const double& value) {
  return holds<double>(
      words, value, [](double v) { return v >= 0.0; }, "it must be >= 0");
}

bool Group::read(Log& log, TextInput& file, std::string_view reader) {
  file.rewind();
  const std::size_t place = find_group(file.content(), name_);
  if (log.collects()) note_asked(log, file, place);
  if (place == std::string_view::npos) return false;
  place_ = file.line_text(file.line_at(place - name_.size()));
  if (log.collects()) {
    read_on(log, file, place);
    return true;
  }
  GroupParser parser(file.content(), place, members_);
  const int status = parser.parse();
  log.line(text());
  if (status != 0) {
    file.seek(parser.place());
    report(log, file, status, reader);
  }
  check(log);
  return true;
}

void Group::report(Log& log, TextInput& file, int status, std::string_view reader) const {
  file.mark_fault();
  log.read_error(file, status < 1 ? "### error : end of file" : "### error : read error",
                 "namelist = " + lower_case(name_), items("iostat =", status), reader);
}

void Group::check(Log& log) const {
  for (const Member& member : members_) {
    if (!member.check) continue;
    std::vector<std::string> lines{"### error : data error"};
    std::ranges::move(member.check(), std::back_inserter(lines));
    if (lines.size() == 1) continue;
    if (!log.collects()) log.fail_with(lines);
    note_fault(log, member, std::move(lines));
  }
}

std::string Group::text() const {
  std::string text(1, '&');
  text += name_;
  for (const Member& member : members_) {
    text += "\n " + std::string(member.name) + " = " + values_text(member.target) + ",";
  }
  return text + "\n/";
}

}  // namespace frame
