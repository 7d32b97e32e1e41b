#include "city/attributes.hpp"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace townskin_case {
namespace {

constexpr double foot = 0.3048;  // [m]

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::optional<double> unit_of(const std::string& text) {
  for (const char* unit : {"", "m", "M", "meter", "meters", "metre", "metres"}) {
    if (text == unit) return 1.0;
  }
  for (const char* unit : {"ft", "FT", "feet", "foot", "'"}) {
    if (text == unit) return foot;
  }
  return std::nullopt;
}

}  // namespace

Attributes attributes_of(const Json* object) {
  Attributes attributes;
  if (object == nullptr || !object->is_object()) return attributes;
  for (const auto& [name, value] : object->items()) {
    if (auto text = as_text(value)) attributes[name] = *text;
  }
  return attributes;
}

std::optional<double> length_of(const std::string& given) {
  std::string text = trimmed(given);
  if (text.starts_with("+")) text.erase(0, 1);
  if (const auto comma = text.find(','); comma != std::string::npos) text[comma] = '.';
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || !std::isfinite(value)) return std::nullopt;
  const auto unit = unit_of(trimmed(text.substr(static_cast<std::size_t>(end - text.data()))));
  return unit ? std::optional(value * *unit) : std::nullopt;
}

std::optional<double> first_length(const Attributes& attributes, const Names& names) {
  for (const std::string& name : names) {
    const auto found = attributes.find(name);
    if (found == attributes.end()) continue;
    if (const auto length = length_of(found->second)) return length;
  }
  return std::nullopt;
}

std::optional<std::string> first_text(const Attributes& attributes, const Names& names) {
  for (const std::string& name : names) {
    const auto found = attributes.find(name);
    if (found == attributes.end()) continue;
    if (std::string text = trimmed(found->second); !text.empty()) return text;
  }
  return std::nullopt;
}

std::string name_of(const Json& feature, const Attributes& attributes, std::size_t number) {
  if (const Json* id = member(feature, "id")) {
    if (auto text = as_text(*id); text && !text->empty()) return *text;
  }
  const auto text = first_text(attributes, {"id", "ID", "@id", "gml_id", "gml:id", "fid", "osm_id",
                                            "identificatie", "Name", "name"});
  return text ? *text : std::string("#").append(std::to_string(number));
}

}  // namespace townskin_case
