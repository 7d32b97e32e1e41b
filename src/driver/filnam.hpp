// ubx_module_filnam: the names of a dated run's files.
//
// A dated run takes its month- and day-dependent files from a directory tree. This module reads
// the naming rules (group DIR_NAME of `file_name`, group TSRF_MONTHLY of the control data), keeps
// the registry of the named files and builds a month's or a day's name. Without DIR_NAME a run
// repeats one day and nothing here applies. Called at the start and at each change of month.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "frame/log.hpp"
#include "frame/unit_table.hpp"

namespace ubx_module_filnam {

/// Rows of the registry.
enum Index : std::int32_t {
  kSun = 1,
  kSurfProp,
  kLadSimple,
  kWaterTemp,
  kBuilding,
  kRmHeat,
  kStHeat,
  kSurfTemp,
  kPatchSurfTemp,
  kBldLoad,
  kHeat,
};
inline constexpr std::size_t kRows = 11;

struct Row {
  int unit = 0;
  std::string name;
};

struct Data {
  bool dated = false;                                   ///< the run goes through real dates
  std::string BASE;                                     ///< root directory of the dated files
  std::string MON;                                      ///< prefix of the month directory
  std::string DAY;                                      ///< prefix of the day directory
  std::array<std::int32_t, 2> MONTHS{1, 12};            ///< months that can be loaded
  std::array<std::int32_t, 6> DATE0{1, 1, 1, 0, 0, 0};  ///< date of model time 0
  std::int32_t loaded_month = 0;                        ///< 0: none yet
  std::array<Row, kRows> rows;
  std::vector<std::string> names;  ///< those of all files, in the order of `file_name`
};

/// Reads both groups; without DIR_NAME only `dated` is settled.
void inputdata(frame::Log& log, frame::TextInput& file_name, frame::TextInput& control, Data& data);
/// Enters a row of the registry (`index` from 1).
void set_file(Data& data, std::int32_t index, int unit, const std::string& name);
/// Opens the files of the first month: SurfProp, LAD_simple, WaterTemp, Building, RmHeat.
void open_first_month(frame::Log& log, frame::UnitTable& units, const Data& data);
/// Name of a row's file in a month, and on a day of it.
[[nodiscard]] std::string make_month_name(const Data& data, std::int32_t index, std::int32_t month);
[[nodiscard]] std::string make_day_name(const Data& data, std::int32_t index, std::int32_t month,
                                        std::int32_t day);
inline void set_loaded_month(Data& data, std::int32_t month) { data.loaded_month = month; }

}  // namespace ubx_module_filnam
