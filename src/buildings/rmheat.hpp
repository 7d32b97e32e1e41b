// tsrf_module_rmheat: room heat, set points and ventilation through time (RmHeat file).
//
// A dated series of blocks, one line for each pair of building use BCD and structure Strct. The
// first block, read at the start, says which pairs there are. Queried once a step at the step's
// start; a month's new file is taken up by `reset`. The last three columns of the file belong to
// the air-conditioning (tsrf_module_aircon).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "frame/text_input.hpp"
#include "inputs/calendar.hpp"
#include "inputs/dated_series.hpp"

namespace tsrf_module_rmheat {

/// Elements of the values of a pair, as tsrf_set_rmheat numbers them.
enum Element : std::int32_t {
  kRmsens = 1,  ///< internal sensible heat per floor area [W/m2]
  kRmlat = 2,   ///< internal latent heat per floor area [W/m2]
  kRmtmp = 3,   ///< room set point [deg C in the file, K here]
  kRmhum = 4,   ///< relative humidity of the room [%]
  kVent = 5,    ///< ventilation [room volumes/h]
  kItem6 = 6,   ///< read, used by nothing
};
inline constexpr std::int32_t kElements = 6;

/// The pairs of building use and structure, in the order of the first block.
struct Pairs {
  std::vector<std::int32_t> BCD;
  std::vector<std::int32_t> Strct;
  std::vector<std::pair<std::int64_t, std::int32_t>> sorted;  ///< (both codes, position)

  [[nodiscard]] std::int32_t size() const { return static_cast<std::int32_t>(BCD.size()); }
  /// Position of a pair, -1 when there is none; of a repeated pair the first.
  [[nodiscard]] std::int32_t find(std::int32_t bcd, std::int32_t strct) const;
};

/// A line behind its date.
struct Line {
  std::int32_t BCD = 0;
  std::int32_t Strct = 0;
  std::array<double, kElements> values{};  ///< as in the file
  std::int32_t AC_flag = 0;                ///< 1: the plant starts in this hour, 2: it stops
  std::int32_t ACSEMin = 0;                ///< minutes past the hour of start or stop
  std::int32_t ACPrT = 0;                  ///< minutes past the hour at which the set point is met
};
frame::ReadStatus read_line(frame::TextInput& file, std::span<std::int32_t> date, Line& line);

/// Reads the pairs of the first block. A line that cannot be read fails with `fault`.
Pairs read_pairs(frame::Log& log, frame::TextInput& file, const dated_series::Settings& settings,
                 std::string_view fault);

struct Data {
  std::string settings_place;  ///< where the group TSRF_RMHEAT stands, for the log
  dated_series::Series series;
  Pairs pairs;
  frame::PatchTable<double> values;  ///< a row per stored block: kElements values a pair
  std::vector<double> now;           ///< kElements values a pair, set by the query
  std::vector<std::int32_t> counts;  ///< scratch: how often a block names a pair
};

/// Reads group TSRF_RMHEAT.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// Reads the pairs.
void read_rmheat(frame::Log& log, frame::TextInput& file, Data& data);
/// The check pass, run by the first query.
void check_data(frame::Log& log, frame::TextInput& file, Data& data);
/// Brings data.now to `time` [s].
void set_rmheat(frame::Log& log, frame::TextInput& file, double time,
                tsrf_module_calendar::Data& calendar, Data& data);
/// The next query checks and reads the file anew; its pairs must be those of the start.
void reset(Data& data);

/// Current values of each building's pair (BldCD, Strct): row e of `out` takes element first + e
/// (1 to 6) up to `last`; the rest of `out` becomes 0.
void tsrf_set_rmheat(frame::Log& log, const Data& data, std::span<const std::int32_t> BldCD,
                     std::span<const std::int32_t> Strct, std::int32_t first, std::int32_t last,
                     frame::PatchTable<double>& out);

}  // namespace tsrf_module_rmheat
