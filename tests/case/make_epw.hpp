// EPW files made by code: a year of plain weather in which a test changes single rows.
#pragma once

#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace make_epw {

/// The fields of a row; the places of the columns in it.
using Row = std::vector<std::string>;
enum Field : std::size_t {
  kYear,
  kMonth,
  kDay,
  kHour,
  kTemperature = 6,
  kHumidity = 8,
  kPressure = 9,
  kInfrared = 12,
  kGlobal = 13,
  kDirect = 14,
  kScattered = 15,
  kWind = 21,
  kFields = 35
};

inline Row row(int month, int day, int hour, int day_of_year) {
  Row fields(kFields, "0");
  fields[kYear] = "2015";
  fields[kMonth] = std::to_string(month);
  fields[kDay] = std::to_string(day);
  fields[kHour] = std::to_string(hour);
  const double season = -std::cos(6.283185 * (day_of_year - 15) / 365.0);
  const double sun = std::max(0.0, -std::cos(6.283185 * (hour - 0.5) / 24.0));
  fields[kTemperature] = std::to_string(18.0 + 12.0 * season + 6.0 * sun);
  fields[kHumidity] = "40";
  fields[kPressure] = "97700";
  fields[kInfrared] = std::to_string(330.0 + 40.0 * season);
  fields[kDirect] = std::to_string(800.0 * sun);
  fields[kScattered] = std::to_string(120.0 * sun);
  fields[kGlobal] = std::to_string(800.0 * sun * sun + 120.0 * sun);
  fields[kWind] = "2.5";
  return fields;
}

struct Options {
  std::string location = "LOCATION,Testville,-,USA,by code,000000,33.45,-111.98,-7.0,337.0";
  std::string period = "DATA PERIODS,1,1,Data,Sunday, 1/ 1,12/31";
  int first_month = 1, last_month = 12;
  /// Changes a row; one without fields is left out.
  std::function<void(Row&)> edit;
};

inline std::string text(const Options& options = {}) {
  constexpr std::array<int, 12> kDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  std::string all = options.location + "\r\nDESIGN CONDITIONS,0\r\n" + options.period + "\r\n";
  int day_of_year = 0;
  for (int month = 1; month <= 12; ++month) {
    for (int day = 1; day <= kDays[static_cast<std::size_t>(month - 1)]; ++day) {
      ++day_of_year;
      if (month < options.first_month || month > options.last_month) continue;
      for (int hour = 1; hour <= 24; ++hour) {
        Row fields = row(month, day, hour, day_of_year);
        if (options.edit) options.edit(fields);
        for (std::size_t f = 0; f < fields.size(); ++f) all += (f == 0 ? "" : ",") + fields[f];
        if (!fields.empty()) all += "\r\n";
      }
    }
  }
  return all;
}

/// Whether a row is that of an hour.
inline bool is(const Row& row, int month, int day, int hour) {
  return row[kMonth] == std::to_string(month) && row[kDay] == std::to_string(day) &&
         row[kHour] == std::to_string(hour);
}

}  // namespace make_epw
