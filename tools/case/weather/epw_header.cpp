#include "weather/epw_header.hpp"

#include <cmath>

#include "frame/numbers.hpp"
#include "inputs/calendar.hpp"

namespace townskin_case::epw {
namespace {

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// "7/21", "7/21/2003" or " 7/ 1".
Hour date_of(std::string_view field, const Origin& where) {
  const std::size_t slash = field.find('/');
  if (slash == std::string_view::npos) {
    Report::fault("\"" + std::string(field) + "\" is no date", where);
  }
  const std::string_view rest = field.substr(slash + 1);
  Hour date{whole_number(trimmed(field.substr(0, slash)), where),
            whole_number(trimmed(rest.substr(0, rest.find('/'))), where), 1};
  const bool leap_day = date.month == 2 && date.day == 29;
  if (date.month < 1 || date.month > 12 || date.day < 1 ||
      (date.day > tsrf_module_calendar::days_in(date.month) && !leap_day)) {
    Report::fault("there is no day " + std::string(field), where);
  }
  if (leap_day) date.day = 28;
  return date;
}

}  // namespace

std::vector<std::string_view> split(std::string_view line) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t comma = line.find(',');
    fields.push_back(trimmed(line.substr(0, comma)));
    if (comma == std::string_view::npos) return fields;
    line.remove_prefix(comma + 1);
  }
}

double number(std::string_view field, const Origin& where) {
  double value = 0.0;
  if (!frame::parse_number(field, value)) {
    Report::fault("\"" + std::string(field.substr(0, 40)) + "\" is no number", where);
  }
  return value;
}

int whole_number(std::string_view field, const Origin& where) {
  const double value = number(field, where);  // some files write 1.0
  if (value != std::floor(value) || std::abs(value) > 1e6) {
    Report::fault("\"" + std::string(field.substr(0, 40)) + "\" is no whole number", where);
  }
  return static_cast<int>(value);
}

std::string shortest(double value) {
  std::string text;
  frame::append_number(text, value);
  return text;
}

std::string text_of(int month, int day, int hour) {
  return std::to_string(month) + "/" + std::to_string(day) + " hour " + std::to_string(hour);
}

void read_location(std::string_view line, const Origin& where, Epw& epw) {
  if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
  const std::vector<std::string_view> fields = split(line);
  if (fields[0] != "LOCATION" || fields.size() < 10) {
    Report::fault("the first line is no LOCATION line of an EPW file", where);
  }
  epw.place = fields[1];
  epw.latitude = number(fields[6], where);
  epw.longitude = number(fields[7], where);
  epw.zone = number(fields[8], where);
  if (std::abs(epw.latitude) > 90.0 || std::abs(epw.longitude) > 180.0 ||
      std::abs(epw.zone) > 14.0) {
    Report::fault("latitude, longitude or time zone is out of range", where);
  }
}

Period read_period(std::string_view line, const Origin& where) {
  const std::vector<std::string_view> fields = split(line);
  if (fields.size() < 7) Report::fault("DATA PERIODS lacks fields", where);
  if (whole_number(fields[1], where) != 1 || whole_number(fields[2], where) != 1) {
    Report::fault("only files of one period with one row an hour can be read", where);
  }
  Period period{date_of(fields[5], where), date_of(fields[6], where), {}};
  period.last.hour = 24;
  period.text = std::to_string(period.first.month) + "/" + std::to_string(period.first.day) +
                " to " + std::to_string(period.last.month) + "/" + std::to_string(period.last.day);
  return period;
}

}  // namespace townskin_case::epw
