#include "city/crs_name.hpp"

#include <regex>

namespace townskin_case {

std::string crs_key(const std::string& name) {
  // PROJ takes a string of its own for a system only where that is said.
  if (name.find("+proj=") != std::string::npos) {
    return name.find("+type=crs") != std::string::npos ? name : name + " +type=crs";
  }
  // A long text is WKT, which the expressions are not for.
  if (name.size() > 200) return name;
  static const std::regex bare(R"(\s*(\d{3,6})\s*)");
  static const std::regex named(R"((?:.*\W)?epsg\W+(?:0[:/]+|[\d.]+[:/]+)?(\d{3,6})(?:\D.*)?)",
                                std::regex::icase);
  static const std::regex degrees(R"(.*crs:?/?84.*)", std::regex::icase);
  std::smatch match;
  if (std::regex_match(name, match, bare)) return "EPSG:" + match[1].str();
  const std::string first = name.substr(0, name.find(','));  // urn:ogc:def:crs,crs:EPSG::1,crs:...
  const bool compound = first.size() < name.size() && first.starts_with("urn:");
  const std::string rest = compound ? name.substr(first.size() + 1) : name;
  const std::string plane = compound ? rest.substr(0, rest.find(',')) : name;
  if (std::regex_match(plane, match, named)) return "EPSG:" + match[1].str();
  if (std::regex_match(plane, degrees)) return "OGC:CRS84";
  return name;
}

}  // namespace townskin_case
