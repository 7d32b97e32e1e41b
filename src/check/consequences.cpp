#include "check/consequences.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "frame/numbers.hpp"

namespace check {

namespace {

using frame::Finding;

/// Words that tell of something that a file lacks.
struct Missing {
  std::string_view words;
  int unit;
  bool any;  ///< any lost record will do, not just one with the value
};
constexpr std::array<Missing, 17> kMissing{{
    {"it is not defined in MatEleProp data", frame::kUnitMatEleProp, false},
    {"it is not defined in SurfProp data", frame::kUnitSurfProp, false},
    {"it is not defined in PatchIndex data", frame::kUnitPatchIndex, false},
    {"it is not defined in Building data", frame::kUnitBuilding, false},
    {"it is not defined in Patch data", frame::kUnitPatch, false},
    {"it is not defined in Patch data", frame::kUnitTreePatch, false},
    {"it is not defined WaterTemp data", frame::kUnitWaterTemp, false},
    {"it is not defined in TreeData", frame::kUnitLadSimple, false},
    {"it is not defined in RmHeat", frame::kUnitRmHeat, false},
    {"it is not defined in 1st time block", frame::kUnitRmHeat, true},
    {"it must be = no. of PIDs in Patch data", frame::kUnitPatchIndex, true},
    {"it must be = no. of PIDs in Patch data", frame::kUnitPatch, true},
    {"it has no Patch", frame::kUnitPatch, true},
    {"it has no Patch of pos 1", frame::kUnitPatch, true},
    {"it does not have view factor of sky", frame::kUnitFormFactor, true},
    {"lack of SunRad in Weather data", frame::kUnitWeather, true},
    {"### error : invalid multi-day data", frame::kUnitSurfProp, true},
}};

/// The numbers of a line behind its equals sign.
std::vector<std::string> values_of(std::string_view line) {
  std::vector<std::string> values;
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return values;
  line.remove_prefix(equals + 1);
  while (!line.empty()) {
    const std::size_t begin = std::min(line.find_first_not_of(' '), line.size());
    line.remove_prefix(begin);
    const std::size_t end = std::min(line.find(' '), line.size());
    if (end > 0) values.emplace_back(line.substr(0, end));
    line.remove_prefix(end);
  }
  return values;
}

bool names_stand_in(const Finding& finding, std::int32_t stand_ins) {
  return std::ranges::any_of(finding.lines, [&](const std::string& line) {
    return std::ranges::any_of(values_of(line), [&](const std::string& value) {
      std::int32_t code = 0;
      return frame::parse_number(value, code) && code < stand_ins;
    });
  });
}

/// Whether a file was told to lack all that it should have.
bool told_empty(const std::vector<Finding>& all, const std::string& words) {
  const std::size_t at = words.find(" in ");
  if (at == std::string::npos) return false;
  const std::string lack = "lack of " + words.substr(at + 4);
  return std::ranges::any_of(all, [&](const Finding& finding) {
    return std::ranges::any_of(finding.lines, [&](const std::string& line) {
      return line.find(lack) != std::string::npos;
    });
  });
}

bool list_is_amiss(const Parts& parts, const frame::Findings& findings) {
  const auto lost = [&](int unit) {
    const auto name = parts.names.find(unit);
    return name != parts.names.end() && findings.lost_any(name->second);
  };
  const bool counted = std::ranges::any_of(findings.all(), [](const Finding& finding) {
    return std::ranges::any_of(finding.lines, [](const std::string& line) {
      return line.starts_with("no. of PIDs in PatchIndex data");
    });
  });
  return counted || lost(frame::kUnitPatch) || lost(frame::kUnitTreePatch);
}

bool follows(const Finding& finding, const Parts& parts, const frame::Findings& findings) {
  if (names_stand_in(finding, findings.stand_ins())) return true;
  // A group of number 0 is a fault of its own.
  const bool of_group_0 = std::ranges::any_of(finding.lines, [](const std::string& l) {
    return l == "SrcPgID of FormFactor data = 0" || l == "PgID in PatchIndex data = 0";
  });
  if (!finding.fault && of_group_0) return true;
  // A patch whose line is lost cannot be told from one that has none.
  const auto index = parts.names.find(frame::kUnitPatchIndex);
  const bool of_patch = std::ranges::any_of(
      finding.lines, [](const std::string& l) { return l.starts_with("PID in Patch data ="); });
  if (of_patch && index != parts.names.end() && findings.lost_any(index->second)) {
    const std::string_view words = "it is not defined in PatchIndex data";
    if (std::ranges::find(finding.lines, words) != finding.lines.end()) return true;
  }
  // Blocks of Sun data cannot be held against a list of patches that is not whole.
  const bool of_blocks = std::ranges::any_of(finding.lines, [](const std::string& l) {
    return l.starts_with("no. of lines of a date in Sun data") ||
           l == "### program error -2- (tsrf_module_shade)";
  });
  if (of_blocks && list_is_amiss(parts, findings)) return true;
  for (const Missing& missing : kMissing) {
    if (std::ranges::find(finding.lines, missing.words) == finding.lines.end()) continue;
    const auto name = parts.names.find(missing.unit);
    if (name == parts.names.end()) continue;
    if (told_empty(findings.all(), std::string(missing.words))) return true;
    if (missing.any && findings.lost_any(name->second)) return true;
    if (findings.lost_file(name->second)) return true;
    for (const std::string& line : finding.lines) {
      for (const std::string& value : values_of(line)) {
        if (findings.lost_word(name->second, value)) return true;
      }
    }
  }
  return false;
}

/// What is said of a file that could not be opened.
bool of_lost_file(const Finding& finding, const Parts& parts, const frame::Findings& findings) {
  if (!finding.file.empty() && findings.lost_file(finding.file)) {
    return finding.lines.front().starts_with("### error : lack") || finding.line == 1;
  }
  if (!finding.file.empty()) return false;
  for (const frame::FileRow& row : frame::kFileTable) {
    const auto name = parts.names.find(row.unit);
    if (name == parts.names.end() || !findings.lost_file(name->second)) continue;
    const std::string title = frame::title(row);  // "Sun data (in)"
    const std::string lack = "lack of " + title.substr(0, title.find(" ("));
    for (const std::string& line : finding.lines) {
      if (line.find(lack) != std::string::npos) return true;
      if (line.find(" in " + title.substr(0, title.find(" ("))) != std::string::npos) return true;
    }
  }
  return false;
}

}  // namespace

void drop_consequences(const Parts& parts, frame::Findings& findings) {
  std::vector<Finding> kept;
  for (const Finding& finding : findings.all()) {
    if (follows(finding, parts, findings) || of_lost_file(finding, parts, findings)) continue;
    kept.push_back(finding);
  }
  findings.all() = std::move(kept);
}

}  // namespace check
