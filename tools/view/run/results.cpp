#include "run/results.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>
#include <map>
#include <utility>

#include "inputs/calendar.hpp"
#include "run/blocks.hpp"
#include "run/inputs.hpp"

namespace townskin_view {

namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
constexpr std::array<std::string_view, 12> kMonths{"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};

/// One result file: its blocks month by month, and when each was.
struct Table {
  std::vector<Hour> hours;
  std::vector<std::vector<float>> columns;  ///< [column][hour][place]
};

Hour hour_at(const RunModel& run, std::int32_t month, std::int32_t day, std::int32_t hour) {
  Hour at{.text = {}, .month = month, .day = day, .hour = hour};
  at.hours = (day - 1) * 24.0 + hour;
  if (run.dated) {
    std::int32_t days = (tsrf_module_calendar::days_in(month) - 1) / 2;  // the middle of the month
    for (std::int32_t m = 1; m < month; ++m) days += tsrf_module_calendar::days_in(m);
    at.hours = days * 24.0 + hour;
  }
  return at;
}

/// Texts of the hours: no more than it takes to tell them apart.
void name_hours(RunModel& run) {
  const bool days = std::ranges::any_of(run.hours, [](const Hour& h) { return h.day > 1; });
  for (Hour& hour : run.hours) {
    hour.text = std::to_string(hour.hour) + " h";
    if (days) hour.text = "day " + std::to_string(hour.day) + ", " + hour.text;
    if (hour.month > 0) {
      hour.text = std::string(kMonths[static_cast<std::size_t>(hour.month - 1)]) + ", " + hour.text;
    }
  }
}

/// Lines of the user's StHeat file, which stand above the rows of BldLoad.
std::size_t lines_of(const std::string& path) {
  Lines lines(path);
  std::string_view line;
  std::size_t count = 0;
  while (lines.next(line)) ++count;
  return count + (lines.was_cut() ? 1U : 0U);
}

Table read_table(const RunFiles& files, int unit, Layout layout, Keys& keys, RunModel& run) {
  Table table;
  table.columns.resize(layout.values);
  for (const std::int32_t month : files.months()) {
    if (unit == frame::kUnitBldLoad) {
      layout.headings = lines_of(files.path(frame::kUnitStHeat, month));
    }
    const std::string path = files.path(unit, month);
    Blocks blocks = read_blocks(path, layout, keys);
    if (!blocks.remark.empty()) note(run, "Of " + path + " not all is shown", blocks.remark);
    std::int32_t day = 1, before = 0;
    for (const std::int32_t hour : blocks.hours) {
      if (hour <= before) ++day;
      before = hour;
      table.hours.push_back(hour_at(run, month, day, hour));
    }
    for (std::size_t c = 0; c < layout.values; ++c) {
      std::vector<float>& to = table.columns[c];
      if (to.empty()) {
        to = std::move(blocks.columns[c]);
      } else {
        to.insert(to.end(), blocks.columns[c].begin(), blocks.columns[c].end());
      }
    }
  }
  return table;
}

bool same_time(const Hour& a, const Hour& b) {
  return a.month == b.month && a.day == b.day && a.hour == b.hour;
}

/// Brings a column to the hours of the run; an hour that the file has not is without values.
std::vector<float> aligned(std::vector<float>&& column, const std::vector<Hour>& from,
                           const std::vector<Hour>& to, std::size_t size) {
  if (std::ranges::equal(from, to, same_time)) return std::move(column);
  std::vector<float> values(to.size() * size, kNone);
  for (std::size_t h = 0; h < to.size(); ++h) {
    const auto at =
        std::ranges::find_if(from, [&](const Hour& hour) { return same_time(hour, to[h]); });
    if (at == from.end()) continue;
    const auto block = static_cast<std::size_t>(at - from.begin());
    std::copy_n(column.begin() + static_cast<std::ptrdiff_t>(block * size), size,
                values.begin() + static_cast<std::ptrdiff_t>(h * size));
  }
  return values;
}

/// Hours of the file that tells the first of them; files that follow are brought to them.
void enter(Table&& table, std::size_t size, std::initializer_list<std::string_view> names,
           RunModel& run) {
  if (table.hours.empty() || size == 0) return;
  if (run.hours.empty()) run.hours = table.hours;
  std::size_t c = 0;
  for (const std::string_view name : names) {
    const Quantity& q = quantity(name);
    Field field{.quantity = &q, .size = size, .hours = run.hours.size()};
    if (q.span == Span::steady) {
      field.hours = 1;
      field.values.assign(table.columns[c].begin(),
                          table.columns[c].begin() + static_cast<std::ptrdiff_t>(size));
    } else {
      field.values = aligned(std::move(table.columns[c]), table.hours, run.hours, size);
    }
    run.fields.push_back(std::move(field));
    ++c;
  }
}

/// Leaves and mirrors have no temperature of their own; the file has a placeholder for them.
void drop_placeholders(RunModel& run) {
  for (Field& field : run.fields) {
    if (field.quantity->name != "surface_temperature") continue;
    for (std::size_t p = 0; p < field.size; ++p) {
      const Kind kind = run.patches.kind[p];
      if (kind != Kind::leaves && kind != Kind::mirror && kind != Kind::other) continue;
      for (std::size_t h = 0; h < field.hours; ++h) field.values[h * field.size + p] = kNone;
    }
  }
}

void read_cells(const RunFiles& files, RunModel& run) {
  Keys keys;
  const Layout surf_temp{.numbers = 10,
                         .hour = 3,
                         .first_key = 0,
                         .keys = 3,
                         .first_value = 4,
                         .values = 6,
                         .steady = 3};
  Table table = read_table(files, frame::kUnitSurfTemp, surf_temp, keys, run);
  for (std::size_t n = 0; n < keys.size(); n += 3) {
    run.cells.push_back(
        {keys[n] + run.grid.offset[0], keys[n + 1] + run.grid.offset[1], keys[n + 2]});
  }
  enter(std::move(table), run.cells.size(),
        {"cell_exchange", "cell_exchange_temperature", "cell_moist_exchange", "cell_wall_area",
         "cell_ground_area", "cell_roof_area"},
        run);
}

/// The cells of BldLoad are some of those of SurfTemp, in another order.
void read_released(const RunFiles& files, RunModel& run) {
  if (run.cells.empty()) return;
  Keys keys;
  const Layout layout{
      .numbers = 8, .hour = 3, .first_key = 0, .keys = 3, .first_value = 6, .values = 2};
  Table table = read_table(files, frame::kUnitBldLoad, layout, keys, run);
  if (table.hours.empty()) return;
  std::map<std::array<std::int32_t, 3>, std::size_t> places;
  for (std::size_t c = 0; c < run.cells.size(); ++c) {
    places.emplace(std::array{run.cells[c].i, run.cells[c].j, run.cells[c].k}, c);
  }
  std::vector<std::size_t> place;
  for (std::size_t n = 0; n < keys.size(); n += 3) {
    const auto at = places.find({keys[n], keys[n + 1], keys[n + 2]});
    if (at == places.end()) return note(run, "BldLoad has cells that SurfTemp has not", "");
    place.push_back(at->second);
  }
  for (std::vector<float>& column : table.columns) {
    std::vector<float> spread(table.hours.size() * run.cells.size(), kNone);
    for (std::size_t n = 0; n < column.size(); ++n) {
      spread[n / place.size() * run.cells.size() + place[n % place.size()]] = column[n];
    }
    column = std::move(spread);
  }
  enter(std::move(table), run.cells.size(), {"cell_released_sensible", "cell_released_latent"},
        run);
}

void read_buildings(const RunFiles& files, RunModel& run) {
  Keys keys;
  for (const Building& building : run.buildings) keys.push_back(building.BldID);
  if (keys.empty()) return;
  const Layout layout{
      .numbers = 13, .hour = 0, .first_key = 1, .keys = 1, .first_value = 2, .values = 11};
  enter(read_table(files, frame::kUnitHeat, layout, keys, run), run.buildings.size(),
        {"room_wall_heat", "room_sunlight", "room_internal_heat", "room_ventilation_sensible",
         "room_ventilation_latent", "room_load", "released_sensible", "released_latent",
         "room_temperature", "slab_temperature", "plant_load"},
        run);
}

void note_end(const RunFiles& files, RunModel& run) {
  Lines lines(files.path(frame::kUnitProgressLog));
  std::string_view line;
  std::string last;
  while (lines.next(line)) last = line;
  run.finished = last.ends_with("-1") && last.find("-1,") != std::string::npos;
  if (run.hours.empty()) {
    note(run, "There are no results of a whole hour yet", "");
  } else if (!run.finished) {
    note(run, "The run is not finished; these are the results so far", "");
  }
}

}  // namespace

void read_results(const RunFiles& files, const Wanted& wanted, RunModel& run) {
  Keys PIDs = run.patches.PID;
  const Layout layout{
      .numbers = 11, .hour = 4, .first_key = 0, .keys = 1, .first_value = 5, .values = 5};
  enter(read_table(files, frame::kUnitPatchSurfTemp, layout, PIDs, run), run.patches.size(),
        {"surface_temperature", "longwave_radiosity", "shortwave_radiosity", "latent_heat",
         "conducted_heat"},
        run);
  drop_placeholders(run);
  if (wanted.cells) {
    read_cells(files, run);
    read_released(files, run);
  }
  read_buildings(files, run);
  name_hours(run);
  note_end(files, run);
}

}  // namespace townskin_view
