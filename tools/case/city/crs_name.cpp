#include "city/crs_name.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace townskin_case {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_word(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

/// A number of a system: three to six digits and nothing else.
bool is_code(std::string_view text) {
  return text.size() >= 3 && text.size() <= 6 && std::ranges::all_of(text, is_digit);
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

/// Takes what consists of digits, and of dots where they count, from the front.
std::string_view take_number(std::string_view& text, bool dots) {
  std::size_t count = 0;
  while (count < text.size() && (is_digit(text[count]) || (dots && text[count] == '.'))) ++count;
  const std::string_view number = text.substr(0, count);
  text.remove_prefix(count);
  return number;
}

/// The code behind "epsg", over a version between both; empty where there is none.
std::string_view code_behind(std::string_view text) {
  const auto between = [&text] {
    const std::size_t before = text.size();
    while (!text.empty() && !is_word(text.front())) text.remove_prefix(1);
    return before > text.size();
  };
  if (!between()) return {};
  std::string_view ahead = text;
  const std::string_view version = take_number(ahead, true);
  if (!version.empty() && (ahead.starts_with(':') || ahead.starts_with('/'))) {
    text = ahead;
    between();
  }
  const std::string_view code = take_number(text, false);
  return is_code(code) ? code : std::string_view{};
}

std::string_view epsg_code(std::string_view lower) {
  for (std::size_t at = lower.find("epsg"); at != std::string_view::npos;
       at = lower.find("epsg", at + 1)) {
    if (at > 0 && is_word(lower[at - 1])) continue;
    const std::string_view code = code_behind(lower.substr(at + 4));
    if (!code.empty()) return code;
  }
  return {};
}

/// Degrees on WGS 84 by the name of another authority: "CRS84", "crs:84".
bool is_crs84(std::string_view lower) {
  return std::ranges::any_of(
      std::array{"crs84", "crs:84", "crs/84", "crs:/84"},
      [lower](const char* name) { return lower.find(name) != std::string_view::npos; });
}

}  // namespace

std::string crs_key(const std::string& name) {
  // PROJ takes a string of its own for a system only where that is said.
  if (name.find("+proj=") != std::string::npos) {
    return name.find("+type=crs") != std::string::npos ? name : name + " +type=crs";
  }
  if (name.size() > 200) return name;  // WKT
  if (is_code(trimmed(name))) return "EPSG:" + std::string(trimmed(name));
  const std::string first = name.substr(0, name.find(','));  // urn:ogc:def:crs,crs:EPSG::1,crs:...
  const bool compound = first.size() < name.size() && first.starts_with("urn:");
  const std::string rest = compound ? name.substr(first.size() + 1) : name;
  std::string lower = compound ? rest.substr(0, rest.find(',')) : name;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const std::string_view code = epsg_code(lower);
  if (!code.empty()) return std::string("EPSG:").append(code);
  return is_crs84(lower) ? "OGC:CRS84" : name;
}

}  // namespace townskin_case
