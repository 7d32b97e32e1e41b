#include "weather/epw.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <string_view>

#include "inputs/calendar.hpp"
#include "weather/epw_header.hpp"

namespace townskin_case {
namespace {

using epw::number;
using epw::split;
using epw::whole_number;

/// A column that is read: its name, place in the row, the least value that is a code for "missing",
/// and the range of all others (EnergyPlus auxiliary programs, data dictionary of the format).
struct Column {
  std::string_view name;
  std::size_t place;
  double missing, least, most;
  double EpwHour::*value;
};
constexpr std::array<Column, 8> kColumns{{
    {"dry bulb temperature", 6, 99.9, -90.0, 70.0, &EpwHour::temperature},
    {"relative humidity", 8, 999.0, 0.0, 110.0, &EpwHour::humidity},
    {"pressure", 9, 999999.0, 31000.0, 120000.0, &EpwHour::pressure},
    {"horizontal infrared radiation", 12, 9999.0, 0.0, 1000.0, &EpwHour::infrared},
    {"global horizontal radiation", 13, 9999.0, 0.0, 2000.0, &EpwHour::global},
    {"direct normal radiation", 14, 9999.0, 0.0, 2000.0, &EpwHour::direct},
    {"diffuse horizontal radiation", 15, 9999.0, 0.0, 2000.0, &EpwHour::scattered},
    {"wind speed", 21, 999.0, 0.0, 100.0, &EpwHour::wind},
}};
constexpr std::size_t kLastField = 21, kDirection = 20;
constexpr std::size_t kInfrared = 3, kGlobal = 4, kDirect = 5, kScattered = 6;

Origin at_line(const std::string& file, std::size_t line) {
  return {file, "line " + std::to_string(line)};
}

/// Reads the rows, one by one as they must follow.
class Rows {
 public:
  Rows(const std::string& file, const epw::Period& period) : file_(file), next_(period.first) {}

  void take(const std::string& text, std::size_t line, const epw::Period& period) {
    const std::vector<std::string_view> fields = split(text);
    const Origin where = at_line(file_, line);
    if (fields.size() <= kLastField) {
      Report::fault("a row of " + std::to_string(fields.size()) + " fields, fewer than 22", where);
    }
    EpwHour hour;
    for (const auto& [place, value] : {std::pair{0U, &hour.year}, std::pair{1U, &hour.month},
                                       std::pair{2U, &hour.day}, std::pair{3U, &hour.hour}}) {
      *value = whole_number(fields[place], where);
    }
    const bool leap_day = hour.month == 2 && hour.day == 29;
    if (leap_day && next_.month == 3 && next_.day == 1 && next_.hour == 1) return;
    if (done_) Report::fault("a row behind the end of the period " + period.text, where);
    if (hour.month != next_.month || hour.day != next_.day || hour.hour != next_.hour) {
      Report::fault("the row is of " + epw::text_of(hour.month, hour.day, hour.hour) + ", not of " +
                        epw::text_of(next_.month, next_.day, next_.hour),
                    where);
    }
    take_values(fields, where, hour);
    hours.push_back(hour);
    lines.push_back(line);
    done_ = hour.month == period.last.month && hour.day == period.last.day && hour.hour == 24;
    advance();
  }

  /// All hours of the period must have come.
  void finish(std::size_t last_line, const epw::Period& period) const {
    if (done_) return;
    Report::fault("the file ends before the hour " +
                      epw::text_of(next_.month, next_.day, next_.hour) + " of the period " +
                      period.text + ", behind " + std::to_string(hours.size()) + " hours",
                  at_line(file_, last_line));
  }

  std::vector<EpwHour> hours;
  std::vector<std::size_t> lines;                          ///< where they stand in the file
  std::array<std::vector<char>, kColumns.size()> missing;  ///< by column, then hour

 private:
  void take_values(const std::vector<std::string_view>& fields, const Origin& where,
                   EpwHour& hour) {
    for (std::size_t c = 0; c < kColumns.size(); ++c) {
      const Column& column = kColumns[c];
      const std::string_view field = fields[column.place];
      const double value = field.empty() ? column.missing : number(field, where);
      const bool lacks = value >= column.missing || (c == kInfrared && value <= 0.0);
      if (!lacks && (value < column.least || value > column.most)) {
        Report::fault(std::string(column.name) + " " + std::string(field) + " is not within " +
                          epw::shortest(column.least) + " and " + epw::shortest(column.most),
                      where);
      }
      missing[c].push_back(lacks ? 1 : 0);
      hour.*column.value = lacks ? 0.0 : std::abs(value) == 0.0 ? 0.0 : value;
    }
    hour.humidity = std::min(hour.humidity, 100.0);
    // No mean of two directions stands for a third, so what is missing stays so.
    const std::string_view from = fields[kDirection];
    const double direction = from.empty() ? -1.0 : number(from, where);
    if (direction >= 0.0 && direction <= 360.0) hour.direction = direction;
  }

  void advance() {
    if (++next_.hour <= 24) return;
    next_.hour = 1;
    if (++next_.day <= tsrf_module_calendar::days_in(next_.month)) return;
    next_.day = 1;
    next_.month = next_.month % 12 + 1;
  }

  const std::string& file_;
  epw::Hour next_;
  bool done_ = false;
};

/// Fills the gaps of a column, straight between the values around them.
void fill(std::vector<EpwHour>& hours, const std::vector<char>& missing,
          double EpwHour::*const value) {
  const auto n = hours.size();
  std::size_t before = n;  // the last hour that is there
  for (std::size_t h = 0; h < n; ++h) {
    if (missing[h] != 0) continue;
    for (std::size_t gap = before == n ? 0 : before + 1; gap < h; ++gap) {
      const double weight =
          before == n ? 1.0 : static_cast<double>(gap - before) / static_cast<double>(h - before);
      const double left = before == n ? 0.0 : hours[before].*value;
      hours[gap].*value = (1.0 - weight) * left + weight * hours[h].*value;
    }
    before = h;
  }
  for (std::size_t gap = before + 1; gap < n; ++gap) hours[gap].*value = hours[before].*value;
}

void fill_columns(Rows& rows, Epw& epw, Report& report) {
  const std::size_t n = rows.hours.size();
  std::array<bool, kColumns.size()> given{};
  for (std::size_t c = 0; c < kColumns.size(); ++c) {
    const auto lacks = static_cast<std::size_t>(std::ranges::count(rows.missing[c], 1));
    given[c] = lacks < n;
    if (lacks == 0 || lacks == n) continue;
    fill(rows.hours, rows.missing[c], kColumns[c].value);
    for (std::size_t h = 0; h < n; ++h) {
      if (rows.missing[c][h] == 0) continue;
      report.repair("hours without " + std::string(kColumns[c].name) + " filled by interpolation",
                    at_line(epw.file, rows.lines[h]));
    }
  }
  epw.has_infrared = given[kInfrared];
  epw.has_direct = given[kDirect] && given[kScattered];
  for (std::size_t c = 0; c < kColumns.size(); ++c) {
    const bool needed =
        c != kInfrared && c != kDirect && c != kScattered && (c != kGlobal || !epw.has_direct);
    if (needed && !given[c]) {
      Report::fault("no hour has a value of " + std::string(kColumns[c].name), {epw.file, {}});
    }
  }
  if (!epw.has_infrared) {
    report.warning(epw.file + ": no infrared radiation of the sky; the run computes it from the " +
                   "temperature and the humidity of the air");
  }
  if (!epw.has_direct) {
    report.warning(epw.file + ": no direct and diffuse radiation; the run splits the global one");
  }
}

}  // namespace

Epw read_epw(const std::string& file, Report& report) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) Report::fault("cannot be read", {file, {}});
  Epw epw;
  epw.file = file;
  std::size_t line = 0;
  std::string text;
  const auto next = [&] {
    ++line;
    if (!std::getline(stream, text)) return false;
    if (text.ends_with('\r')) text.pop_back();
    return true;
  };
  epw::Period period;
  while (period.text.empty()) {
    if (!next())
      Report::fault("no line DATA PERIODS: it is not a whole EPW file", at_line(file, line));
    if (line == 1) epw::read_location(text, at_line(file, line), epw);
    if (text.starts_with("DATA PERIODS")) period = epw::read_period(text, at_line(file, line));
  }
  Rows rows(file, period);
  while (next()) {
    if (text.find_first_not_of(" \t") != std::string::npos) rows.take(text, line, period);
  }
  rows.finish(line - 1, period);
  fill_columns(rows, epw, report);
  epw.hours = std::move(rows.hours);
  return epw;
}

}  // namespace townskin_case
