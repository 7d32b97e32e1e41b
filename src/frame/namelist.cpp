#include "frame/namelist.hpp"

#include <algorithm>
#include <utility>

namespace frame {

namespace {

constexpr int kEndOfFile = -1;
constexpr int kReadError = 1;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_name_char(char c) {
  return (lower(c) >= 'a' && lower(c) <= 'z') || is_digit(c) || c == '_';
}
bool is_quote(char c) { return c == '\'' || c == '"'; }
bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool same_name(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower(x) == lower(y); });
}

std::string lower_case(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

bool is_array(const Target& target) {
  return std::holds_alternative<std::span<std::int32_t>>(target) ||
         std::holds_alternative<std::span<double>>(target);
}

std::size_t size_of(const Target& target) {
  if (const auto* ints = std::get_if<std::span<std::int32_t>>(&target)) return ints->size();
  if (const auto* reals = std::get_if<std::span<double>>(&target)) return reals->size();
  return 1;
}

bool parse_logical(std::string_view token, bool& value) {
  if (!token.empty() && token.front() == '.') token.remove_prefix(1);
  if (token.empty()) return false;
  const char first = lower(token.front());
  if (first != 't' && first != 'f') return false;
  const std::string_view word = first == 't' ? "true" : "false";
  if (!token.empty() && token.back() == '.') token.remove_suffix(1);
  if (token.size() != 1 && !same_name(token, word)) return false;
  value = first == 't';
  return true;
}

/// Puts one value (a token, or the text of a quoted one) into element `index` of a member.
bool store(const Target& target, std::size_t index, std::string_view token, bool quoted) {
  if (auto* const* text = std::get_if<std::string*>(&target)) {
    if (!quoted) return false;
    **text = token;
    return true;
  }
  if (quoted) return false;
  if (auto* const* number = std::get_if<std::int32_t*>(&target)) {
    return parse_number(token, **number);
  }
  if (auto* const* number = std::get_if<double*>(&target)) return parse_number(token, **number);
  if (auto* const* flag = std::get_if<bool*>(&target)) return parse_logical(token, **flag);
  if (const auto* ints = std::get_if<std::span<std::int32_t>>(&target)) {
    return parse_number(token, (*ints)[index]);
  }
  return parse_number(token, std::get<std::span<double>>(target)[index]);
}

/// Reads the text of one group behind its name, up to the slash that closes it.
class GroupParser {
 public:
  GroupParser(std::string_view text, std::size_t place, const std::vector<Member>& members)
      : text_(text), at_(place), members_(members) {}

  /// 0, or the status of the failure.
  int parse() {
    for (;;) {
      skip_blank(true);
      if (at_ == text_.size() || text_[at_] == '&') return kEndOfFile;
      if (text_[at_] == '/') return 0;
      const Member* member = take_member();
      if (member == nullptr) return status_;
      const int status = take_values(*member);
      if (status != 0) return status;
    }
  }
  [[nodiscard]] std::size_t place() const { return at_; }

 private:
  void skip_blank(bool commas) {
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (c == '!') {
        while (at_ < text_.size() && text_[at_] != '\n') ++at_;
      } else if (is_space(c) || (commas && c == ',')) {
        ++at_;
      } else {
        return;
      }
    }
  }

  /// Takes `NAME =`, of an array `NAME(i) =` or `NAME(i:j) =` too; null, with the status, when it
  /// is not a member of the group or has no elements to choose from.
  const Member* take_member() {
    status_ = kReadError;
    const std::size_t begin = at_;
    std::size_t behind = at_;
    while (behind < text_.size() && is_name_char(text_[behind])) ++behind;
    if (behind == text_.size()) status_ = kEndOfFile;
    const std::string_view name = text_.substr(begin, behind - begin);
    const auto found = std::find_if(members_.begin(), members_.end(),
                                    [&](const Member& m) { return same_name(m.name, name); });
    if (name.empty() || found == members_.end()) return nullptr;
    at_ = behind;
    skip_blank(false);
    element_ = 0;
    end_ = size_of(found->target);
    if (at_ < text_.size() && text_[at_] == '(') {
      if (!is_array(found->target) || !take_index()) return nullptr;
    }
    skip_blank(false);
    if (at_ == text_.size()) {
      status_ = kEndOfFile;
      return nullptr;
    }
    if (text_[at_] != '=') return nullptr;
    ++at_;
    return &*found;
  }

  /// Takes `(i)` or `(i:j)`: the elements, from 1, that the values are for.
  bool take_index() {
    const std::size_t close = text_.find(')', at_);
    if (close == std::string_view::npos) {
      status_ = kEndOfFile;
      return false;
    }
    const std::string_view inside = text_.substr(at_ + 1, close - at_ - 1);
    const std::size_t colon = inside.find(':');
    std::size_t first = 0;
    if (!position(inside.substr(0, colon), first)) return false;
    if (colon != std::string_view::npos && !position(inside.substr(colon + 1), end_)) return false;
    element_ = first - 1;
    at_ = close + 1;
    return first <= end_;
  }

  /// Reads the position of an element, 1 to `end_`.
  [[nodiscard]] bool position(std::string_view text, std::size_t& value) const {
    while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
    std::int32_t number = 0;
    if (!parse_number(text, number) || number < 1) return false;
    if (static_cast<std::size_t>(number) > end_) return false;
    value = static_cast<std::size_t>(number);
    return true;
  }

  /// True when a member's name and its equals sign stand at the current place.
  [[nodiscard]] bool at_next_member() const {
    std::size_t p = at_;
    while (p < text_.size() && is_name_char(text_[p])) ++p;
    if (p == at_) return false;
    const auto skip = [&] {
      while (p < text_.size() && is_space(text_[p])) ++p;
    };
    skip();
    if (p < text_.size() && text_[p] == '(') {
      while (p < text_.size() && text_[p] != ')') ++p;
      if (p < text_.size()) ++p;
      skip();
    }
    return p < text_.size() && text_[p] == '=';
  }

  /// Takes the values of a member up to the next member or the end of the group.
  int take_values(const Member& member) {
    bool comma = true;  // a comma that follows leaves a null behind
    for (;;) {
      skip_blank(false);
      if (at_ == text_.size()) return kEndOfFile;
      const char c = text_[at_];
      if (c == '/' || c == '&') return 0;
      if (c == ',') {
        ++at_;
        if (comma) ++element_;
        comma = true;
        continue;
      }
      if (at_next_member()) return 0;
      const int status = take_value(member);
      if (status != 0) return status;
      comma = false;
    }
  }

  int take_value(const Member& member) {
    std::int32_t repeats = 1;
    std::size_t digits = at_;
    while (digits < text_.size() && is_digit(text_[digits])) ++digits;
    if (digits > at_ && digits < text_.size() && text_[digits] == '*') {
      if (!parse_number(text_.substr(at_, digits - at_), repeats) || repeats < 1) return kReadError;
      at_ = digits + 1;
    }
    std::string quoted_text;
    std::string_view token;
    const bool quoted = at_ < text_.size() && is_quote(text_[at_]);
    const std::size_t begin = at_;
    if (quoted) {
      if (!take_quoted(quoted_text)) return kEndOfFile;
      token = quoted_text;
    } else {
      while (at_ < text_.size() && !ends_value(text_[at_])) ++at_;
      token = text_.substr(begin, at_ - begin);
    }
    const bool null = !quoted && token.empty();  // `3*`
    bool good = static_cast<std::size_t>(repeats) <= end_ - std::min(end_, element_);
    for (; good && repeats > 0; --repeats, ++element_) {
      good = null || store(member.target, element_, token, quoted);
    }
    if (!good) at_ = begin;
    return good ? 0 : kReadError;
  }

  static bool ends_value(char c) {
    return is_space(c) || c == ',' || c == '/' || c == '!' || c == '&';
  }

  /// Takes a text in quotes, in which two quotes stand for one; a line end is no part of it.
  bool take_quoted(std::string& value) {
    const char quote = text_[at_];
    for (std::size_t p = at_ + 1; p < text_.size(); ++p) {
      if (text_[p] == quote) {
        if (p + 1 == text_.size() || text_[p + 1] != quote) {
          at_ = p + 1;
          return true;
        }
        ++p;
      }
      if (text_[p] != '\n' && text_[p] != '\r') value += text_[p];
    }
    return false;
  }

  std::string_view text_;
  std::size_t at_;
  const std::vector<Member>& members_;
  std::size_t element_ = 0;  // the next element of the current member, from 0
  std::size_t end_ = 0;      // behind the last element that may be given
  int status_ = kReadError;
};

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
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? std::string("''") : std::string(1, c);
  return result + "'";
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
  if (place == std::string_view::npos) return false;
  place_ = file.line_text(file.line_at(place - name_.size()));
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
    const std::vector<std::string> lines = member.check();
    if (lines.empty()) continue;
    log.line("### error : data error");
    for (const std::string& line : lines) log.line(line);
    log.fail();
  }
}

std::string Group::text() const {
  std::string text = "&" + std::string(name_);
  for (const Member& member : members_) {
    text += "\n " + std::string(member.name) + " = " + values_text(member.target) + ",";
  }
  return text + "\n/";
}

}  // namespace frame
