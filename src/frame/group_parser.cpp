#include "frame/group_parser.hpp"

#include <algorithm>

#include "frame/names.hpp"

namespace frame {

using names::is_digit;
using names::is_name_char;
using names::is_quote;
using names::is_space;
using names::lower;
using names::same_name;

namespace {

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

bool ends_value(char c) { return is_space(c) || c == ',' || c == '/' || c == '!' || c == '&'; }

}  // namespace

int GroupParser::parse() {
  unknown_ = {};
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
void GroupParser::skip_blank(bool commas) {
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
const Member* GroupParser::take_member() {
  status_ = kReadError;
  const std::size_t begin = at_;
  std::size_t behind = at_;
  while (behind < text_.size() && is_name_char(text_[behind])) ++behind;
  if (behind == text_.size()) status_ = kEndOfFile;
  const std::string_view name = text_.substr(begin, behind - begin);
  const auto found = std::find_if(members_.begin(), members_.end(),
                                  [&](const Member& m) { return same_name(m.name, name); });
  if (name.empty() || found == members_.end()) {
    unknown_ = name;
    return nullptr;
  }
  given_[static_cast<std::size_t>(found - members_.begin())] = begin;
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
bool GroupParser::take_index() {
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
bool GroupParser::position(std::string_view text, std::size_t& value) const {
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
  std::int32_t number = 0;
  if (!parse_number(text, number) || number < 1) return false;
  if (static_cast<std::size_t>(number) > end_) return false;
  value = static_cast<std::size_t>(number);
  return true;
}

/// True when a member's name and its equals sign stand at the current place.
bool GroupParser::at_next_member() const {
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
int GroupParser::take_values(const Member& member) {
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

int GroupParser::take_value(const Member& member) {
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

/// Takes a text in quotes, in which two quotes stand for one; a line end is no part of it.
bool GroupParser::take_quoted(std::string& value) {
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

void GroupParser::pass_fault() {
  do {
    std::string ignored;
    const std::size_t begin = at_;
    if (at_ < text_.size() && is_quote(text_[at_])) take_quoted(ignored);
    while (at_ < text_.size() && !ends_value(text_[at_])) ++at_;
    const bool stuck = at_ == begin && at_ < text_.size();
    if (stuck && text_[at_] != '/' && text_[at_] != '&') ++at_;
    skip_blank(true);
  } while (at_ < text_.size() && text_[at_] != '/' && text_[at_] != '&' && !at_next_member());
}

}  // namespace frame
