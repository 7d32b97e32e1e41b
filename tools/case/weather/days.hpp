// The days that a run goes through: one that repeats, or real dates.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "weather/epw.hpp"

namespace townskin_case {

/// A day of the calendar without 29 February.
struct CalendarDay {
  int month = 0, day = 0;
  auto operator<=>(const CalendarDay&) const = default;
};

/// What the user asked for; dates win over a day.
struct DayChoice {
  std::string day = "hottest";  ///< "07-21", "hottest", "coldest" or "mean-07"
  std::string from, to;         ///< "07-28", "08-03", or both empty
};

/// The days with their weather.
struct Days {
  bool dated = false;
  std::string text;            ///< for the summary: "the hottest day, 07-02"
  CalendarDay first, last;     ///< the same day when one repeats
  std::vector<EpwHour> hours;  ///< whole days, in order; 24 of a day that repeats
  std::optional<EpwHour> before,
      after;                      ///< of dates: the hours around them, where the file has them
  double declination = 0.0;       ///< of the sun, of a day that repeats [degree]
  double equation_of_time = 0.0;  ///< likewise: sundial less clock [h]
  double mean_temperature = 0.0;  ///< of the air over all hours [deg C]
};

/// Finds the days in the weather; faults name the choice.
Days choose_days(const Epw& epw, const DayChoice& choice);

/// "07-21", or a fault that names the text.
CalendarDay calendar_day(const std::string& text);
std::string text_of(const CalendarDay& day);

}  // namespace townskin_case
