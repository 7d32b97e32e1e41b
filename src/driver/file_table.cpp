#include "driver/file_table.hpp"

#include <algorithm>

#include "driver/result_files.hpp"
#include "frame/file_names.hpp"
#include "frame/findings.hpp"

namespace frame {

using enum Opened;
using enum Form;

const std::array<FileRow, kFiles> kFileTable = {{
    {"control data (in)        :", kUnitControl, at_start, input},
    {"Grid data (in)           :", kUnitGrid, at_start, input},
    {"Weather data (in)        :", kUnitWeather, at_start, input},
    {"Patch data (in)          :", kUnitPatch, at_start, input},
    {"PatchIndex data (in)     :", kUnitPatchIndex, at_start, input},
    {"TreePatch data (in)      :", kUnitTreePatch, at_start, input},
    {"FormFactor data (in)     :", kUnitFormFactor, at_start, input},
    {"Sun data (in)            :", kUnitSun, by_run_kind, input},
    {"BldSurf data (in)        :", kUnitBldSurf, at_start, input},
    {"SurfProp data (in)       :", kUnitSurfProp, by_run_kind, input},
    {"LAD_simple data (in)     :", kUnitLadSimple, by_run_kind, input},
    {"LAD data (in)            :", kUnitLad, at_start, input},
    {"WaterTemp data (in)      :", kUnitWaterTemp, by_run_kind, input},
    {"MatEleProp data (in)     :", kUnitMatEleProp, at_start, input},
    {"Building data (in)       :", kUnitBuilding, by_run_kind, input},
    {"RmHeat data (in)         :", kUnitRmHeat, by_run_kind, input},
    {"StHeat data (in)         :", kUnitStHeat, by_run_kind, input_if_any},
    {"SurfTemp data (out)      :", kUnitSurfTemp, by_run_kind, output},
    {"PatchSurfTemp data (out) :", kUnitPatchSurfTemp, by_run_kind, output},
    {"ProgressLog data (out)   :", kUnitProgressLog, at_start, output},
    {"Sun & Sky rad. (out)     :", kUnitSunSky, at_start, output},
    {"heat (out)               :", kUnitHeat, by_run_kind, output},
    {"PgidPrd data (in)        :", kUnitPgidPrd, at_start, input},
    {"initial/restart (in/out) :", kUnitRestart, at_start, records},
    {"Porous data file (in)    :", kUnitPorous, at_start, input},
    {"BldLoad data file (out)  :", kUnitBldLoad, by_run_kind, output},
}};

namespace {

constexpr std::size_t kNameColumns = 260;

// The order in which files are opened, so that of several missing files the same one is reported.
constexpr std::array<int, 15> kOpenedAtStart = {
    kUnitControl,     kUnitGrid,       kUnitWeather, kUnitPatch,   kUnitPatchIndex,
    kUnitTreePatch,   kUnitFormFactor, kUnitBldSurf, kUnitLad,     kUnitMatEleProp,
    kUnitProgressLog, kUnitSunSky,     kUnitPgidPrd, kUnitRestart, kUnitPorous};
constexpr std::array<int, 11> kOpenedByRunKind = {
    kUnitSun,      kUnitSurfProp,      kUnitLadSimple, kUnitWaterTemp, kUnitBuilding, kUnitRmHeat,
    kUnitSurfTemp, kUnitPatchSurfTemp, kUnitBldLoad,   kUnitStHeat,    kUnitHeat};
// The rows of a dated run's registry of named files, in its order.
constexpr std::array<int, 11> kRegistry = {
    kUnitSun,    kUnitSurfProp, kUnitLadSimple,     kUnitWaterTemp, kUnitBuilding, kUnitRmHeat,
    kUnitStHeat, kUnitSurfTemp, kUnitPatchSurfTemp, kUnitBldLoad,   kUnitHeat};

std::size_t row_of(int unit) {
  const auto found = std::find_if(kFileTable.begin(), kFileTable.end(),
                                  [&](const FileRow& row) { return row.unit == unit; });
  return static_cast<std::size_t>(found - kFileTable.begin());
}

FileNames read_names(Log& log, TextInput& file) {
  FileNames names;
  for (std::string& name : names) {
    std::string_view line;
    if (!file.next_line(line)) {
      log.error_and_log("### cannot read " + file.name() + " : fewer than 26 lines");
      throw Stop{kStatusOpenError};
    }
    line = line.substr(0, kNameColumns);
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    name = line;
  }
  for (std::size_t i = 0; i < kFiles; ++i) log.line(kFileTable[i].label, names[i]);
  return names;
}

/// The form of open_row for a check of all files: nothing is made, and what cannot be read is taken
/// as empty. The row's line of `file_name` is the place of the fault.
void look_at_row(Log& log, UnitTable& units, std::size_t row, const std::string& name) {
  const FileRow& file = kFileTable[row];
  const bool opened = !name.empty() && attempt(log, [&] {
    if (file.form == output || file.form == records) {
      units.check_output(log, name);
    } else {
      units.check_plain(log, name);
      units.open_input(log, file.unit, name);
    }
  });
  if (opened || file.form == output || file.form == records) return;
  units.put_empty(file.unit, name);
  if (file.form == input) log.findings().lose(units.input(file.unit).name(), {});
}

void open_row(Log& log, UnitTable& units, int unit, const FileNames& names) {
  const std::size_t row = row_of(unit);
  if (log.collects()) return look_at_row(log, units, row, names[row]);
  switch (kFileTable[row].form) {
    case input:
      units.open_input(log, unit, names[row]);
      break;
    case input_if_any:
      units.open_input_if_any(log, unit, names[row]);
      break;
    case output:
      units.open_output(log, unit, names[row]);
      break;
    case records:
      units.open_records(log, unit, names[row]);
      break;
  }
}

/// A row that is always opened must have a name.
void check_names(Log& log, const FileNames& names) {
  for (std::size_t i = 0; i < kFiles; ++i) {
    if (!names[i].empty() || kFileTable[i].form == input_if_any) continue;
    attempt(log, [&] {
      log.error_and_log("### cannot open " + title(kFileTable[i]) + " : line " +
                        std::to_string(i + 1) + " of file_name is blank");
      throw Stop{kStatusOpenError};
    });
  }
}

}  // namespace

std::string title(const FileRow& row) { return title_of(row.label); }

void read_file_table(Log& log, UnitTable& units, ubx_module_filnam::Data& filnam) {
  const Tag tag(log, "(read_file_table)");
  TextInput& file = units.input(kUnitFileName);
  const FileNames names = read_names(log, file);
  filnam.names.assign(names.begin(), names.end());
  check_names(log, names);
  for (const int unit : kOpenedAtStart) open_row(log, units, unit, names);
  ubx_module_filnam::inputdata(log, file, units.input(kUnitControl), filnam);
  for (std::size_t i = 0; i < kRegistry.size(); ++i) {
    const int unit = kRegistry[i];
    ubx_module_filnam::set_file(filnam, static_cast<std::int32_t>(i) + 1, unit,
                                names[row_of(unit)]);
  }
  attempt(log, [&] { check_outputs(log, units, names, filnam); });
  if (filnam.dated) {
    ubx_module_filnam::open_first_month(log, units, filnam);
    return;
  }
  for (const int unit : kOpenedByRunKind) open_row(log, units, unit, names);
}

}  // namespace frame
