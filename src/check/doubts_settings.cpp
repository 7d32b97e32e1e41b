// Settings that nothing asks for.
#include <algorithm>
#include <array>

#include "check/doubts.hpp"
#include "frame/names.hpp"
#include "frame/nearest_name.hpp"

namespace check {

namespace {

using tsrf_main01::Run;

bool has_kind(const Run& run, tsrf_module_patch::Type type) {
  return std::ranges::find(run.inputs.patch.type, type) != run.inputs.patch.type.end();
}
bool no_buildings(const Run& run) { return !run.buildings.on(); }
bool no_canopy(const Run& run) { return !run.trees.cells.CALJMK; }
bool no_leaves(const Run& run) { return no_canopy(run) && !run.surface.data.settings.LTRSMPL; }
bool simple_trees(const Run& run) { return run.surface.data.settings.LTRSMPL; }
bool no_panels(const Run& run) { return !has_kind(run, tsrf_module_patch::kSolarPanel); }
bool no_water(const Run& run) { return !has_kind(run, tsrf_module_patch::kWater); }
bool repeating(const Run& run) { return !run.inputs.filnam.dated; }
bool dated(const Run& run) { return run.inputs.filnam.dated; }
bool always(const Run&) { return true; }

/// A member (or all of its group) that has no effect in a mode.
struct Idle {
  std::string_view group;
  std::string_view member;  ///< empty: all
  bool (*in)(const Run&);
  std::string_view why;
};
constexpr std::array<Idle, 19> kIdle{{
    {"TSRF_BLDNG", "BHRED", always, "it has no effect"},
    {"TSRF_BLDNG", "DHRED", always, "it has no effect"},
    {"TSRF_BLDNG", "", no_buildings, "it has no effect with LCBLD <= 0"},
    {"TSRF_RMHEAT", "", no_buildings, "it has no effect with LCBLD <= 0"},
    {"TSRF_DATA", "DZW", no_buildings, "it has no effect with LCBLD <= 0"},
    {"TSRF_JUMOKU", "", no_canopy, "it has no effect with CALJMK = .false."},
    {"JMK_RADIAT", "", no_canopy, "it has no effect with CALJMK = .false."},
    {"JMK_HTRANS", "", no_leaves, "it has no effect without trees"},
    {"JMK_STOMATAL", "", no_leaves, "it has no effect without trees"},
    {"JMK_DATA", "", simple_trees, "it has no effect with LTRSMPL = .true."},
    {"TSRF_FIXTMP", "", no_panels, "it has no effect without patches of type 5"},
    {"TSRF_WTRTMP", "", no_water, "it has no effect without patches of type 4"},
    {"TSRF_SHADE", "NBIT", repeating, "it has no effect in a run of one day"},
    {"TSRF_SHADE", "NITEM", repeating, "it has no effect in a run of one day"},
    {"TSRF_MONTHLY", "", repeating, "it has no effect without DIR_NAME"},
    {"JMK_RADSKY", "PPA_MONTH", repeating, "it has no effect in a run of one day"},
    {"JMK_RADSKY", "PPA", dated, "it has no effect in a dated run, PPA_MONTH has"},
    {"DATE_AND_PLACE", "SHANGLE", dated, "it has no effect in a dated run"},
    {"DATE_AND_PLACE", "SDECL", dated, "it has no effect in a dated run"},
}};
// What existing control data have although it does nothing in the mode that they choose.
constexpr std::array<std::string_view, 3> kPassed{"PPA", "SHANGLE", "SDECL"};

/// Groups that a reader asks for only in some mode, of this program or of the flow.
constexpr std::array<std::string_view, 9> kElsewhere{"TSRF_MONTHLY", "JMK_DATA",     "JMK_RADIAT",
                                                     "JMK_HTRANS",   "JMK_STOMATAL", "VFRAC",
                                                     "KPC_DATA",     "UNSTEADY",     "DIR_NAME"};

const Idle* idle(const Run& run, const std::string& group, const std::string& member) {
  for (const Idle& row : kIdle) {
    const bool named = row.group == group && (row.member.empty() || row.member == member);
    if (named && row.in(run)) return &row;
  }
  return nullptr;
}

void look_at_members(Run& run, frame::Findings& findings) {
  for (const frame::Setting& setting : std::vector(findings.settings)) {
    const bool passed = std::ranges::find(kPassed, setting.member) != kPassed.end();
    if (!setting.changed || passed || setting.member == "LCBLD" || setting.member == "DZW")
      continue;
    const Idle* row = idle(run, setting.group, setting.member);
    if (row == nullptr) continue;
    findings.add({.fault = false,
                  .lines = {"namelist = " + frame::names::lower_case(setting.group) + ", member " +
                                setting.member,
                            std::string(row->why)},
                  .file = setting.file,
                  .line = setting.line});
  }
}

/// Each `&NAME` that opens a group in `file`.
void look_at_groups(Run& run, const frame::TextInput& file, frame::Findings& findings) {
  std::vector<std::string> known(findings.groups.begin(), findings.groups.end());
  for (const std::string_view name : kElsewhere) known.emplace_back(name);
  std::vector<std::string> seen;
  const std::string_view text = file.content();
  for (std::size_t at = 0; (at = text.find('&', at)) != std::string_view::npos; ++at) {
    const std::size_t line = text.rfind('\n', at) + 1;
    const std::string_view before = text.substr(line, at - line);
    if (before.find_first_not_of(" \t") != std::string_view::npos) continue;
    std::size_t end = at + 1;
    while (end < text.size() && frame::names::is_name_char(text[end])) ++end;
    const std::string name = frame::names::upper_case(text.substr(at + 1, end - at - 1));
    if (name.empty() || name == "END" || name.size() > 64) continue;
    const bool again = std::ranges::find(seen, name) != seen.end();
    seen.push_back(name);
    frame::Finding doubt{.fault = false,
                         .lines = {"namelist = " + frame::names::lower_case(name)},
                         .file = file.name(),
                         .line = file.line_at(at)};
    if (std::ranges::find(known, name) == known.end()) {
      const std::string nearest = frame::nearest_name(name, known);
      doubt.lines.emplace_back("no program reads a group of this name");
      if (!nearest.empty()) doubt.hint = "did you mean " + nearest + "?";
    } else if (again) {
      doubt.lines.emplace_back("it stands twice, the first counts");
    } else if (const Idle* row = idle(run, name, "");
               row != nullptr && !findings.groups.contains(name)) {
      doubt.lines.emplace_back(row->why);
    } else {
      continue;
    }
    findings.add(std::move(doubt));
  }
}

}  // namespace

void doubt_settings(const Parts& parts, Run& run) {
  if (!parts.settings) return;
  frame::Findings& findings = run.desk.log.findings();
  look_at_groups(run, run.desk.units.input(frame::kUnitControl), findings);
  if (parts.patches) look_at_members(run, findings);
}

}  // namespace check
