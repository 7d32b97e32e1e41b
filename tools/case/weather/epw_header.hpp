// The head of an EPW file, and the fields of its lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "weather/epw.hpp"

namespace townskin_case::epw {

struct Hour {
  int month = 0, day = 0, hour = 0;
};

/// The days that a file holds.
struct Period {
  Hour first, last;
  std::string text;  ///< such as "1/1 to 12/31"
};

/// The fields between the commas, without blanks around them.
std::vector<std::string_view> split(std::string_view line);
/// Fields as numbers; faults name the line.
double number(std::string_view field, const Origin& where);
int whole_number(std::string_view field, const Origin& where);

std::string shortest(double value);
/// "7/21 hour 15".
std::string text_of(int month, int day, int hour);

/// Takes place and zone from the line LOCATION.
void read_location(std::string_view line, const Origin& where, Epw& epw);
/// The line DATA PERIODS: one period, hour by hour.
Period read_period(std::string_view line, const Origin& where);

}  // namespace townskin_case::epw
