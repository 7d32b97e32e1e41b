#include "weather/days.hpp"

#include <algorithm>
#include <cmath>
#include <span>

#include "inputs/calendar.hpp"
#include "weather/sun_course.hpp"
#include "weather/wind.hpp"

namespace townskin_case {
namespace {

constexpr std::size_t kDay = 24;

CalendarDay day_of(const EpwHour& hour) { return {hour.month, hour.day}; }

double mean_temperature(std::span<const EpwHour> hours) {
  double sum = 0.0;
  for (const EpwHour& hour : hours) sum += hour.temperature;
  return sum / static_cast<double>(hours.size());
}

/// Position of a day's first hour.
std::size_t find_day(const Epw& epw, const CalendarDay& day) {
  for (std::size_t h = 0; h < epw.hours.size(); h += kDay) {
    if (day_of(epw.hours[h]) == day) return h;
  }
  Report::fault("the day " + text_of(day) + " is not in the file", {epw.file, {}});
}

std::size_t most_extreme_day(const Epw& epw, bool hottest) {
  std::size_t best = 0;
  double most = 0.0;
  for (std::size_t h = 0; h < epw.hours.size(); h += kDay) {
    const double mean = mean_temperature(std::span(epw.hours).subspan(h, kDay));
    const double score = hottest ? mean : -mean;
    if (h == 0 || score > most) best = h;
    if (best == h) most = score;
  }
  return best;
}

void add_sun(const EpwHour& noon, const Epw& epw, double weight, Days& days) {
  const SolarDay sun = solar_day(noon.year, noon.month, noon.day, 12.0 - epw.zone);
  days.declination += weight * sun.declination;
  days.equation_of_time += weight * sun.equation_of_time;
}

Days repeating(const Epw& epw, std::size_t first) {
  Days days;
  const auto hours = std::span(epw.hours).subspan(first, kDay);
  days.hours.assign(hours.begin(), hours.end());
  days.first = days.last = day_of(hours.front());
  add_sun(hours[11], epw, 1.0, days);
  return days;
}

/// Hour by hour the mean over the days of a month, with the month's mean sun.
Days mean_day(const Epw& epw, int month) {
  Days days;
  std::vector<std::size_t> found;
  for (std::size_t h = 0; h < epw.hours.size(); h += kDay) {
    if (epw.hours[h].month == month) found.push_back(h);
  }
  if (found.empty()) {
    Report::fault("no day of month " + std::to_string(month) + " is in the file", {epw.file, {}});
  }
  const double weight = 1.0 / static_cast<double>(found.size());
  days.hours.resize(kDay);
  for (std::size_t hour = 0; hour < kDay; ++hour) {
    EpwHour& mean = days.hours[hour];
    for (const std::size_t first : found) {
      const EpwHour& of_day = epw.hours[first + hour];
      for (double EpwHour::*const value :
           {&EpwHour::temperature, &EpwHour::humidity, &EpwHour::pressure, &EpwHour::wind,
            &EpwHour::infrared, &EpwHour::global, &EpwHour::direct, &EpwHour::scattered}) {
        mean.*value += weight * of_day.*value;
      }
    }
    std::vector<EpwHour> same_hour;
    for (const std::size_t first : found) same_hour.push_back(epw.hours[first + hour]);
    mean.direction = mean_direction(same_hour);
    mean.humidity = std::min(mean.humidity, 100.0);
    mean.year = epw.hours[found.front()].year;
    mean.month = month;
    mean.day = 15;
    mean.hour = static_cast<int>(hour) + 1;
  }
  for (const std::size_t first : found) add_sun(epw.hours[first + 11], epw, weight, days);
  days.first = days.last = {month, 15};
  days.text = "the mean day of month " + std::to_string(month);
  return days;
}

Days dates(const Epw& epw, const DayChoice& choice) {
  if (choice.from.empty() || choice.to.empty()) {
    throw Fault("dates need both a first and a last day (--from, --to)");
  }
  Days days;
  days.dated = true;
  days.first = calendar_day(choice.from);
  days.last = calendar_day(choice.to);
  if (days.last < days.first) {
    throw Fault("the last day " + choice.to + " lies before the first " + choice.from +
                "; a run stays within a year");
  }
  const std::size_t begin = find_day(epw, days.first);
  const std::size_t end = find_day(epw, days.last) + kDay;
  // In a file that begins within a year the last day can stand before the first.
  if (end <= begin) Report::fault("the days do not follow each other", {epw.file, {}});
  days.hours.assign(epw.hours.begin() + static_cast<std::ptrdiff_t>(begin),
                    epw.hours.begin() + static_cast<std::ptrdiff_t>(end));
  if (begin > 0) days.before = epw.hours[begin - 1];
  if (end < epw.hours.size()) days.after = epw.hours[end];
  days.text = text_of(days.first) + " to " + text_of(days.last);
  return days;
}

Days one_day(const Epw& epw, const std::string& text) {
  if (text == "hottest" || text == "coldest") {
    Days days = repeating(epw, most_extreme_day(epw, text == "hottest"));
    days.text = "the " + text + " day, " + text_of(days.first);
    return days;
  }
  if (text.starts_with("mean-")) {
    return mean_day(epw, calendar_day(text.substr(5) + "-01").month);
  }
  Days days = repeating(epw, find_day(epw, calendar_day(text)));
  days.text = text;
  return days;
}

}  // namespace

CalendarDay calendar_day(const std::string& text) {
  const auto digit = [&](std::size_t i) { return text[i] >= '0' && text[i] <= '9'; };
  CalendarDay day;
  if (text.size() == 5 && digit(0) && digit(1) && text[2] == '-' && digit(3) && digit(4)) {
    day = {std::stoi(text.substr(0, 2)), std::stoi(text.substr(3))};
  }
  if (day.month < 1 || day.month > 12 || day.day < 1 ||
      day.day > tsrf_module_calendar::days_in(day.month)) {
    throw Fault("\"" + text + "\" is no day: wanted are month and day such as 07-21, hottest, " +
                "coldest, or a month's mean such as mean-07; there is no 29 February");
  }
  return day;
}

std::string text_of(const CalendarDay& day) {
  std::string text = "00-00";
  text[0] = static_cast<char>('0' + day.month / 10);
  text[1] = static_cast<char>('0' + day.month % 10);
  text[3] = static_cast<char>('0' + day.day / 10);
  text[4] = static_cast<char>('0' + day.day % 10);
  return text;
}

Days choose_days(const Epw& epw, const DayChoice& choice) {
  const bool dated = !choice.from.empty() || !choice.to.empty();
  Days days = dated ? dates(epw, choice) : one_day(epw, choice.day);
  days.mean_temperature = mean_temperature(days.hours);
  return days;
}

}  // namespace townskin_case
