// tsrf_module_calendar: the model's calendar of 365-day years.
//
// Model time 0 stands for `origin` seconds after 1 January of year 1, 00:00:00 (0 in a
// repeating-day run); all routines that turn time into dates add it. Used by the dated series, the
// driver and the sun of dated runs.
#pragma once

#include <array>
#include <cstdint>

#include "frame/log.hpp"

namespace tsrf_module_calendar {

using Date = std::array<double, 6>;           ///< year, month, day, hour, minute, second
using IntDate = std::array<std::int32_t, 6>;  ///< the same while read and checked

inline constexpr double kSecondsPerDay = 86400.0;

struct Data {
  double origin = 0.0;    ///< calendar time of model time 0 [s]
  std::int64_t year = 1;  ///< year found last, where the next search starts
  std::int64_t days = 0;  ///< days before that year
};

/// Model time of a date [s].
double date2sec(const Data& calendar, const Date& date);
/// Date of a model time, rounded to whole seconds.
Date sec2date(frame::Log& log, Data& calendar, double time);
/// Number of days of `month` (1..12).
std::int32_t days_in(std::int32_t month);
/// True when month, day, hour (0..24), minute and second (0..60) are in range.
bool chkdate(const IntDate& date);
/// The month that a time closes: at day 1, 00:00:00 the month before, with `at_start` set.
struct ClosingMonth {
  std::int32_t month;
  bool at_start;
};
ClosingMonth date_month(frame::Log& log, Data& calendar, double time);

/// The cycle of a series: where the cycle that holds a time starts, its length, and how many
/// leading date elements (`level`) the series' lines do not decide; those of `base` behind them say
/// nothing.
struct Cycle {
  Date base;
  Date period;
  std::int32_t level;
};
Cycle cycdate(frame::Log& log, Data& calendar, double time, const Date& first, const Date& last);

}  // namespace tsrf_module_calendar
