#include "buildings/aircon.hpp"

#include <algorithm>
#include <string>

namespace tsrf_module_aircon {

namespace {

using frame::items;
using tsrf_module_rmheat::Line;

constexpr std::int32_t kHours = 24;
constexpr std::int32_t kStart = 1;
constexpr std::int32_t kStop = 2;
constexpr std::string_view kOutOfOrder = "run-time of AC in Rmheat data is out of order";

bool is_missing(double hour) { return hour < -9999.900000000001; }

const Hour& hour_of(const Day& day, std::int32_t h) { return day[static_cast<std::size_t>(h - 1)]; }
Period& row_of(RunTable& table, std::int32_t h) { return table[static_cast<std::size_t>(h)]; }

/// Enters starts going forward through the day: each holds up to the hour of the next stop.
/// Returns the period that is still open at the day's end.
Period enter_starts(const Day& day, RunTable& table) {
  Period open;
  for (std::int32_t h = 1; h <= kHours; ++h) {
    const Hour& hour = hour_of(day, h);
    if (hour.flag == kStart) {
      open.start = h + hour.ACSEMin / 60.0;
      open.startup = h + hour.ACPrT / 60.0;
    }
    row_of(table, h) = open;
    if (hour.flag == kStop) open = Period{};
  }
  return open;
}

/// Enters ends going backward: each holds down to the hour of its start. Returns the end of the
/// period that the day begins with.
double enter_ends(const Day& day, RunTable& table) {
  double end = kNever;
  for (std::int32_t h = kHours; h >= 1; --h) {
    const Hour& hour = hour_of(day, h);
    if (hour.flag == kStop) end = h + hour.ACSEMin / 60.0;
    row_of(table, h).end = end;
    if (hour.flag == kStart) end = kNever;
  }
  return end;
}

/// Joins the period that is open at the day's end to the end that the next day begins with.
void join_over_midnight(const Period& open, double end, RunTable& table) {
  for (std::int32_t h = 1; h <= kHours; ++h) {
    Period& row = row_of(table, h);
    const bool starts = !is_missing(row.start);
    const bool ends = !is_missing(row.end);
    if (starts && !ends) row.end = end + 24.0;
    if (ends && !starts) {
      row.start = open.start - 24.0;
      row.startup = open.startup - 24.0;
    }
  }
}

std::string_view fault_of_flags(std::ptrdiff_t starts, std::ptrdiff_t stops) {
  if (stops > 0 && starts == 0) return "lack of AC start flag in Rmheat data";
  if (starts > 0 && stops == 0) return "lack of AC end flag in Rmheat data";
  if (starts != stops) return "no. of AC start/end flag in Rmheat data not matched";
  return {};
}

/// Checks the line of `file` that was read last; false where the reader goes on behind a fault.
bool check_line(frame::Log& log, const frame::TextInput& file, std::int32_t h, std::int32_t hour,
                const Line& line) {
  return frame::attempt(log, &file, [&] {
    if (hour != h) {
      log.data_error(items("hour in Rmheat data =", hour), items("it must be =", h));
    }
    if (line.ACSEMin < 0 || line.ACPrT < 0) {
      log.data_error(items("ACSEMin,ACPrT in Rmheat data =", line.ACSEMin, line.ACPrT),
                     "they must be >= 0");
    }
    if (line.ACSEMin > 60) {
      log.data_error(items("ACSEMin in Rmheat data =", line.ACSEMin), "it must be <= 60");
    }
  });
}

std::int32_t position(frame::Log& log, const Data& data, std::int32_t bcd, std::int32_t strct) {
  const std::int32_t pair = data.pairs.find(bcd, strct);
  if (pair < 0) {
    log.program_error("### program error -9801- (tsrf_module_aircon)", "(set_aircon)");
  }
  return pair;
}

/// The plant's columns of a pair, and where its first line stands in the file.
struct PairDay {
  Day day;
  std::size_t place = 0;
  bool whole = true;  ///< no line of it had a fault
};

/// The first 24 blocks of the file, by pair.
std::vector<PairDay> read_days(frame::Log& log, frame::TextInput& file, const Data& data) {
  std::vector<PairDay> days(data.pairs.BCD.size());
  file.rewind();
  file.skip_line();
  std::int32_t hour = 0;
  Line line;
  for (std::int32_t h = 1; h <= kHours; ++h) {
    for (std::int32_t n = 0; n < data.pairs.size(); ++n) {
      const std::size_t place = file.tell();
      if (tsrf_module_rmheat::read_line(file, {&hour, 1}, line) != frame::ReadStatus::ok) {
        log.read_error(file, "### read error : RmHeat file");
      }
      const bool good = check_line(log, file, h, hour, line);
      const auto pair = static_cast<std::size_t>(position(log, data, line.BCD, line.Strct));
      PairDay& of_pair = days[pair];
      if (h == 1) of_pair.place = place;
      of_pair.whole = of_pair.whole && good;
      of_pair.day[static_cast<std::size_t>(h - 1)] = {line.AC_flag, line.ACSEMin, line.ACPrT};
    }
  }
  return days;
}

void check_schedule(frame::Log& log, const Schedule& schedule, std::int32_t bcd,
                    std::int32_t strct) {
  if (schedule.fault.empty()) return;
  if (schedule.hour == 0) log.data_error(schedule.fault);
  const Period& row = schedule.table[static_cast<std::size_t>(schedule.hour)];
  log.data_error(schedule.fault,
                 items("time of start, startup, end =", row.start, row.startup, row.end),
                 items("hour, BCD, Strct =", schedule.hour, bcd, strct));
}

}  // namespace

Schedule make_schedule(const Day& day) {
  Schedule schedule;
  const auto count = [&day](std::int32_t flag) {
    return std::count_if(day.begin(), day.end(),
                         [flag](const Hour& hour) { return hour.flag == flag; });
  };
  const auto starts = count(kStart);
  schedule.fault = fault_of_flags(starts, count(kStop));
  if (!schedule.fault.empty() || starts == 0) return schedule;
  const Period open = enter_starts(day, schedule.table);
  const double end = enter_ends(day, schedule.table);
  if (!is_missing(end)) join_over_midnight(open, end, schedule.table);
  for (std::int32_t h = 1; h <= kHours; ++h) {
    const Period& row = row_of(schedule.table, h);
    if (row.start <= row.startup && row.startup <= row.end) continue;
    schedule.fault = kOutOfOrder;
    schedule.hour = h;
    return schedule;
  }
  schedule.table.front() = schedule.table.back();
  return schedule;
}

void read_aircon(frame::Log& log, frame::TextInput& file, const tsrf_module_rmheat::Data& rmheat,
                 Data& data) {
  const frame::Tag tag(log, "(tsrf_module_aircon)(read_aircon)");
  data.pairs = tsrf_module_rmheat::read_pairs(log, file, rmheat.series.settings,
                                              "### read error : RmHeat file");
}

void set_aircon(frame::Log& log, frame::TextInput& file, const tsrf_module_rmheat::Data& rmheat,
                std::span<const std::int32_t> BldCD, std::span<const std::int32_t> Strct,
                Data& data) {
  if (!data.rebuild) return;
  const frame::Tag tag(log, "(tsrf_module_aircon)(set_aircon)");
  if (rmheat.series.settings.LDATE != std::array<std::int32_t, 2>{4, 4}) {
    log.program_error(rmheat.settings_place, "### program error -1- (tsrf_module_aircon)",
                      "(set_aircon)");
  }
  const std::vector<PairDay> days = read_days(log, file, data);
  frame::allocating(log, "run tables", frame::bytes_of<RunTable>(days.size()), [&] {
    data.tables.assign(days.size(), RunTable{});
    data.pair.assign(BldCD.size(), -1);
  });
  for (std::size_t b = 0; b < BldCD.size(); ++b) {
    if (log.collects() && data.pairs.find(BldCD[b], Strct[b]) < 0) continue;  // told before
    data.pair[b] = position(log, data, BldCD[b], Strct[b]);
    const auto pair = static_cast<std::size_t>(data.pair[b]);
    if (!days[pair].whole) continue;
    const Schedule schedule = make_schedule(days[pair].day);
    frame::attempt_at(log, file, days[pair].place,
                      [&] { check_schedule(log, schedule, BldCD[b], Strct[b]); });
    data.tables[pair] = schedule.table;
  }
  data.rebuild = false;
}

void set_initial_rooms(frame::Log& log, const tsrf_module_rmheat::Data& rmheat,
                       std::span<const std::int32_t> BldCD, std::span<const std::int32_t> Strct,
                       std::span<double> Tr, std::span<double> Tm) {
  frame::PatchTable<double> rmtmp(static_cast<std::int32_t>(BldCD.size()), 1);
  tsrf_module_rmheat::tsrf_set_rmheat(log, rmheat, BldCD, Strct, tsrf_module_rmheat::kRmtmp,
                                      tsrf_module_rmheat::kRmtmp, rmtmp);
  std::copy(rmtmp.all().begin(), rmtmp.all().end(), Tr.begin());
  std::copy(rmtmp.all().begin(), rmtmp.all().end(), Tm.begin());
}

}  // namespace tsrf_module_aircon
