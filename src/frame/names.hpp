// Characters and names as the groups of settings have them: case does not count.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace frame::names {

inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
inline char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
inline bool is_digit(char c) { return c >= '0' && c <= '9'; }
inline bool is_name_char(char c) {
  return (lower(c) >= 'a' && lower(c) <= 'z') || is_digit(c) || c == '_';
}
inline bool is_quote(char c) { return c == '\'' || c == '"'; }
inline bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

inline bool same_name(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower(x) == lower(y); });
}
inline std::string lower_case(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}
inline std::string upper_case(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), upper);
  return result;
}

}  // namespace frame::names
