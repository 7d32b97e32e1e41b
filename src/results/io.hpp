// tsrf_module_io: the result files.
//
// Repeating-day runs write each file at whole hours from the step; dated runs gather hourly means
// and write them month by month. Both use the same line writers, one header each beside this one:
// patch_surf_temp, surf_temp, heat, bld_load and sun_sky. This header holds what they share: the
// settings (group TSRF_IO), the hour of a row and the rule by which a file starts over.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "frame/text_output.hpp"

namespace tsrf_module_io {

inline constexpr double kCelsius = 273.15;  ///< 0 deg C [K]
inline constexpr std::int32_t kSecondsPerHour = 3600;
inline constexpr std::int32_t kHours = 24;

struct Settings {
  double TIMES = std::numeric_limits<double>::max();  ///< start time override of a restart [s]
  std::int32_t REWIND_OUTFILE = 1;                    ///< >= 1: result files start over at hour 1
};

struct Data {
  Settings settings;
};

void inputdata(frame::Log& log, frame::TextInput& control, Data& data);

/// Hour 1..24 in which second `sod` (1..86400) of the day lies: a step counts into the hour that
/// it ends.
[[nodiscard]] constexpr std::int32_t hour_slot(std::int32_t sod) {
  return (sod - 1) / kSecondsPerHour + 1;
}
/// True at the seconds of the day at which rows are written.
[[nodiscard]] constexpr bool is_whole_hour(std::int32_t sod) { return sod % kSecondsPerHour == 0; }

/// When rows are written.
struct When {
  When(std::int32_t second, std::int64_t iteration = 0) : sod(second), iter(iteration) {}
  std::int32_t sod;   ///< second of the day, 1..86400
  std::int64_t iter;  ///< number of the step
};

/// Ends the run for a result that is not finite: its file, the step, whose it is ("PID = 7") and
/// the name of its column.
[[noreturn]] void refuse_result(frame::Log& log, std::string_view file, std::int64_t iter,
                                const std::string& owner, std::string_view term);

/// What a writer remembers of its file.
struct FileStart {
  bool first_call = true;  ///< nothing has been written to it yet
};
/// True when the rows of `hour` start the file over: on the first call, and at hour 1 where the
/// settings want one day only. Clears the first-call flag.
[[nodiscard]] inline bool starts_over(const Settings& settings, std::int32_t hour,
                                      FileStart& start) {
  const bool over = start.first_call || (settings.REWIND_OUTFILE >= 1 && hour == 1);
  start.first_call = false;
  return over;
}
/// Drops what the file holds and writes its heading, when `starts_over`.
void start_file(frame::Log& log, frame::TextOutput& file, std::string_view heading,
                const Settings& settings, std::int32_t hour, FileStart& start);

}  // namespace tsrf_module_io
