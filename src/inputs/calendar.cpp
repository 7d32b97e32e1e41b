#include "inputs/calendar.hpp"

#include <algorithm>
#include <cmath>

namespace tsrf_module_calendar {

namespace {

constexpr std::int64_t kDaysPerYear = 365;
constexpr double kSecondsPerYear = 365.0 * kSecondsPerDay;
constexpr std::int64_t kYearSteps = 999'999;
constexpr double kLeastYear = -2.0e9;
constexpr std::array<std::int32_t, 12> kMonthDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

double seconds(std::int64_t days) { return static_cast<double>(days) * kSecondsPerDay; }

/// Days before month `month` (1..12) of its year.
std::int64_t days_before(std::int64_t month) {
  std::int64_t days = 0;
  for (std::int64_t m = 1; m < month; ++m) days += kMonthDays[static_cast<std::size_t>(m - 1)];
  return days;
}

/// Brings calendar.year and calendar.days to the year that holds the calendar time `t`, from the
/// year found last: a run that goes forward steps a year at most.
void find_year(frame::Log& log, Data& calendar, double t) {
  const auto give_up = [&log, t] {
    log.program_error("### program error -1- (tsrf_module_calendar)", "(sec2date)",
                      frame::items(t));
  };
  if (t < seconds(calendar.days)) {
    double year = 1.0;
    double before = 0.0;
    if (t < 0.0) {
      year = std::trunc(t / kSecondsPerYear);
      before = year - 1.0;
      if (t < before * kSecondsPerYear) {
        before = year - 2.0;
        year -= 1.0;
      }
      if (year < kLeastYear) give_up();
    }
    calendar.year = static_cast<std::int64_t>(year);
    calendar.days = static_cast<std::int64_t>(before) * kDaysPerYear;
  }
  for (std::int64_t step = 0; !(t < seconds(calendar.days + kDaysPerYear)); ++step) {
    if (step == kYearSteps) give_up();
    ++calendar.year;
    calendar.days += kDaysPerYear;
  }
}

}  // namespace

double date2sec(const Data& calendar, const Date& date) {
  double year = std::floor(date[0]);
  auto month = static_cast<std::int64_t>(std::floor(date[1]));
  if (month < 1 || month > 12) {
    std::int64_t years = month / 12;
    if (month % 12 < 1) --years;
    month -= 12 * years;
    year += static_cast<double>(years);
  }
  const double days =
      static_cast<double>(kDaysPerYear) * (year - 1.0) + static_cast<double>(days_before(month));
  const double hours = (date[2] - 1.0 + days) * 24.0 + date[3];
  return (hours * 60.0 + date[4]) * 60.0 + date[5] - calendar.origin;
}

Date sec2date(frame::Log& log, Data& calendar, double time) {
  const double t = time + calendar.origin;
  find_year(log, calendar, t);
  std::int64_t days = calendar.days;
  std::size_t month = 0;
  while (month < kMonthDays.size() && !(t < seconds(days + kMonthDays[month]))) {
    days += kMonthDays[month++];
  }
  if (month == kMonthDays.size()) {
    log.program_error("### program error -2- (tsrf_module_calendar)", "(sec2date)");
  }
  const double rest = t + 0.5 - seconds(days);  // half a second: rounds to the whole second
  const double day = std::trunc(rest / kSecondsPerDay);
  const double in_day = rest - day * kSecondsPerDay;
  const double hour = std::trunc(in_day / 3600.0);
  const double in_hour = in_day - hour * 3600.0;
  const double minute = std::trunc(in_hour / 60.0);
  return {
      static_cast<double>(calendar.year), static_cast<double>(month + 1), day + 1.0, hour, minute,
      std::trunc(in_hour - minute * 60.0)};
}

std::int32_t days_in(std::int32_t month) { return kMonthDays[static_cast<std::size_t>(month - 1)]; }

bool chkdate(const IntDate& date) {
  const auto within = [&date](std::size_t e, std::int32_t low, std::int32_t high) {
    return low <= date[e] && date[e] <= high;
  };
  return within(1, 1, 12) && within(2, 1, days_in(date[1])) && within(3, 0, 24) &&
         within(4, 0, 60) && within(5, 0, 60);
}

ClosingMonth date_month(frame::Log& log, Data& calendar, double time) {
  const Date date = sec2date(log, calendar, time);
  const auto month = static_cast<std::int32_t>(date[1]);
  if (date[2] != 1.0 || date[3] != 0.0 || date[4] != 0.0 || date[5] != 0.0) return {month, false};
  return {month == 1 ? 12 : month - 1, true};
}

Cycle cycdate(frame::Log& log, Data& calendar, double time, const Date& first, const Date& last) {
  Cycle cycle{sec2date(log, calendar, time), {}, 0};
  const double year_now = cycle.base[0];
  std::size_t rank = 0;  // the first element in which the dates differ, from 0; at most the hour
  while (rank < 3 && first[rank] == last[rank]) ++rank;
  if (rank == 0) {
    const double years = last[0] + 1.0 - first[0];
    const double year = first[0] + std::trunc((year_now - first[0]) / years) * years;
    cycle.base[0] = std::round(year > year_now ? year - years : year);
    cycle.period[0] = years;
    cycle.level = 1;
  } else {
    cycle.period[rank - 1] = 1.0;
    cycle.level = static_cast<std::int32_t>(rank);
  }
  Date start = first;
  std::copy_n(cycle.base.begin(), cycle.level, start.begin());
  if (date2sec(calendar, start) > time) {
    for (std::size_t e = 0; e < cycle.base.size(); ++e) cycle.base[e] -= cycle.period[e];
  }
  return cycle;
}

}  // namespace tsrf_module_calendar
