// tsrf_module_aircon: when the air-conditioning of each building runs.
//
// The last three columns of the RmHeat file say in which hours of the day the plant of a pair of
// building use and structure starts and stops. From them a table is built that gives, for each hour
// of the day, when the period of operation that contains it starts, meets the set point and ends.
// Built at the first step and again for each month's file; the room balance consults it each step.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "buildings/rmheat.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace tsrf_module_aircon {

inline constexpr double kNever = -99999.0;

/// The flags of one hour.
struct Hour {
  std::int32_t flag = 0;     ///< 1: the plant starts, 2: it stops
  std::int32_t ACSEMin = 0;  ///< minutes past the hour of the start or the stop
  std::int32_t ACPrT = 0;    ///< minutes past the hour at which the set point is met
};
using Day = std::array<Hour, 24>;  ///< hours 1 to 24

/// A period of operation, in hours of the day; kNever where there is none. A period that runs over
/// midnight has times below 0 or above 24.
struct Period {
  double start = kNever;
  double startup = kNever;
  double end = kNever;
  bool operator==(const Period&) const = default;
};
using RunTable = std::array<Period, 25>;  ///< hours 0 to 24; hour 0 is hour 24

/// The run table of a day's flags.
struct Schedule {
  RunTable table{};
  std::string_view fault;  ///< the words of what is wrong; empty when nothing is
  std::int32_t hour = 0;   ///< where the periods are out of order; 0: nowhere
};
[[nodiscard]] Schedule make_schedule(const Day& day);

struct Data {
  tsrf_module_rmheat::Pairs pairs;
  std::vector<RunTable> tables;    ///< per pair
  std::vector<std::int32_t> pair;  ///< per building: position of its pair
  bool rebuild = true;             ///< the tables are to be built at the next step

  /// The period of a building that contains hour `hour` (0 to 24).
  [[nodiscard]] const Period& period(std::size_t building, std::size_t hour) const {
    return tables[static_cast<std::size_t>(pair[building])][hour];
  }
};

/// Reads the pairs of the first block.
void read_aircon(frame::Log& log, frame::TextInput& file, const tsrf_module_rmheat::Data& rmheat,
                 Data& data);
/// Builds the tables of all buildings when data.rebuild is set. The file must be dated by the hour
/// alone; its first 24 blocks are the day.
void set_aircon(frame::Log& log, frame::TextInput& file, const tsrf_module_rmheat::Data& rmheat,
                std::span<const std::int32_t> BldCD, std::span<const std::int32_t> Strct,
                Data& data);
/// A new file: the tables are built anew.
inline void reset(Data& data) { data.rebuild = true; }

/// Rooms and slabs [K] start at the set point; for the first step of a run from time 0.
void set_initial_rooms(frame::Log& log, const tsrf_module_rmheat::Data& rmheat,
                       std::span<const std::int32_t> BldCD, std::span<const std::int32_t> Strct,
                       std::span<double> Tr, std::span<double> Tm);

}  // namespace tsrf_module_aircon
