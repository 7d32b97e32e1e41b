#include "inputs/dated_series.hpp"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "frame/findings.hpp"

namespace dated_series {

namespace {

using frame::items;
using frame::ReadStatus;

constexpr std::size_t kTextLine = 300;  ///< of a record that is looked at as text
constexpr double kBeforeAll = -1.0e20;

std::int64_t floor_div(std::int64_t a, std::int64_t b) { return (a - (a % b + b) % b) / b; }

/// Passes over blank lines; false at the end of the file.
bool next_text_line(frame::TextInput& file, std::string_view& line) {
  while (file.next_line(line)) {
    line = line.substr(0, kTextLine);
    if (line.find_first_not_of(" \t\r") != std::string_view::npos) return true;
  }
  return false;
}

void check_columns(frame::Log& log, frame::TextInput& file, const Words& words, std::size_t columns,
                   const Settings& settings) {
  file.pass_title(log, elements(settings) + columns);
  std::string_view line;
  if (!next_text_line(file, line)) return;
  const std::int64_t found = frame::count_fields(line) - static_cast<std::int64_t>(columns);
  const std::int32_t wanted = settings.LDATE[1] - settings.LDATE[0] + 1;
  if (found == wanted) return;
  log.data_error(items(of_data("no. of date elements", words.counted), found),
                 items("it must be =", wanted));
}

void check_date(frame::Log& log, const Words& words, const Counter& at, const IntDate& date,
                bool ascends) {
  if (!ascends) {
    const bool by_time = words.place_of_disorder == "time no. =";
    log.data_error(items(of_data("date", words.ordered), text(date)), "it is not ascending order",
                   items(words.place_of_disorder, by_time ? at.time : at.line));
  }
  if (!tsrf_module_calendar::chkdate(date)) {
    log.data_error(items(of_data("date", words.data), text(date)), "invalid expression",
                   items("time no. =", at.time));
  }
}

Date as_reals(const IntDate& date) {
  Date result{};
  std::copy(date.begin(), date.end(), result.begin());
  return result;
}

/// One query: the window of a series and all that it takes to move it.
class Query {
 public:
  Query(frame::Log& log, frame::TextInput& file, double time, tsrf_module_calendar::Data& calendar,
        const Source& source, Series& series)
      : log_(log), file_(file), time_(time), calendar_(calendar), source_(source), s_(series) {}

  Bracket answer() {
    if (s_.units == 0) begin();
    if (s_.units == 1) return single();
    if (s_.filled) {
      if (const auto found = search()) return bracket(*found);
    }
    return bracket(s_.all_in_memory() ? turn() : slide());
  }

 private:
  void begin() {
    source_.check_data();
    const auto slots = static_cast<std::size_t>(s_.slots());
    const std::string name = std::string(source_.words.data) + " data";
    frame::allocating(log_, name, source_.unit_bytes * s_.slots(), [&] {
      source_.prepare(static_cast<std::int32_t>(slots));
      s_.times.resize(slots);
      s_.dates.resize(slots);
      s_.places.resize(slots);
    });
    const auto amiss = misfit(s_.spacing, s_.first, s_.last);
    if (amiss && !source_.words.rests) {
      log_.warn("dates in", source_.words.data, "data fill", amiss->filled, "s of a cycle of",
                amiss->cycle, "s, file", file_.name());
    }
  }

  /// A series of one unit is constant.
  Bracket single() {
    if (!s_.filled) fill(0);
    return {0, 0, 1.0};
  }

  /// The position whose unit lies before the time while the next one does not.
  [[nodiscard]] std::optional<std::size_t> search() {
    const auto holds = [this](std::size_t i) {
      return s_.times[i] < time_ && time_ <= s_.times[i + 1];
    };
    const std::size_t last = s_.times.size() - 1;
    for (std::size_t i = s_.current; i < last; ++i) {
      if (holds(i)) return s_.current = i;
    }
    for (std::size_t i = 0; i < s_.current; ++i) {
      if (holds(i)) return s_.current = i;
    }
    return std::nullopt;
  }

  [[nodiscard]] Bracket bracket(std::size_t i) {
    const auto unit = s_.start + static_cast<std::int64_t>(i);
    const double interval = s_.times[i + 1] - s_.times[i];
    if (interval > 2.0 * s_.spacing.usual && !s_.told_of_gap) tell_of_gap(unit, interval);
    return {slot(unit), slot(unit + 1), (time_ - s_.times[i]) / interval};
  }

  void tell_of_gap(std::int64_t unit, double interval) {
    const bool between_cycles = floor_div(unit + 1, s_.units) != floor_div(unit, s_.units);
    if (between_cycles && source_.words.rests) return;
    s_.told_of_gap = true;
    const Date from = calendar_date(unit);
    log_.warn(source_.words.data, "data interpolated over", interval,
              "s, usual interval =", s_.spacing.usual, "s, from date=", from[0], from[1], from[2],
              from[3], from[4], from[5]);
  }

  [[nodiscard]] std::int32_t slot(std::int64_t unit) const {
    const std::int64_t slots = s_.slots();
    return static_cast<std::int32_t>(unit - floor_div(unit, slots) * slots);
  }

  /// Date of a stored unit of the sequence; elements may lie beyond their range.
  [[nodiscard]] Date date_of(std::int64_t unit) const {
    Date date = as_reals(s_.dates[static_cast<std::size_t>(slot(unit))]);
    const auto cycles = static_cast<double>(floor_div(unit, s_.units));
    for (std::size_t e = 0; e < date.size(); ++e) date[e] += cycles * s_.cycle.period[e];
    return date;
  }

  void set_time(std::size_t position) {
    s_.times[position] = tsrf_module_calendar::date2sec(
        calendar_, date_of(s_.start + static_cast<std::int64_t>(position)));
  }

  /// Reads a unit of the sequence, which is the first of the file or the one behind the last read.
  void read(std::int64_t unit) {
    if (unit == floor_div(unit, s_.units) * s_.units) {
      file_.rewind();
      file_.skip_line();
    } else {
      file_.seek(s_.place);
    }
    IntDate date{};
    for (std::size_t e = 0; e < static_cast<std::size_t>(s_.cycle.level); ++e) {
      date[e] = static_cast<std::int32_t>(s_.cycle.base[e]);
    }
    s_.places[static_cast<std::size_t>(slot(unit))] = file_.tell();
    if (source_.read(slot(unit), date) != ReadStatus::ok) {
      log_.read_error(file_, "### read error : " + std::string(source_.words.data) + " file");
    }
    s_.place = file_.tell();
    s_.dates[static_cast<std::size_t>(slot(unit))] = date;
    report(unit);
  }

  /// Date of a stored unit, its day as the calendar has it.
  [[nodiscard]] Date calendar_date(std::int64_t unit) {
    const Date date = date_of(unit);
    const Date midnight = tsrf_module_calendar::sec2date(
        log_, calendar_,
        tsrf_module_calendar::date2sec(calendar_, {date[0], date[1], date[2], 0.0, 0.0, 0.0}));
    return {midnight[0], midnight[1], midnight[2], date[3], date[4], date[5]};
  }

  /// Tells the log the date of a unit read.
  void report(std::int64_t unit) {
    const Date date = calendar_date(unit);
    log_.line(source_.words.reading, date[0], date[1], date[2], date[3], date[4], date[5]);
  }

  /// Fills the window anew, from the first unit of the cycle `cycles` behind that of the time.
  void fill(std::int64_t cycles) {
    s_.cycle = tsrf_module_calendar::cycdate(log_, calendar_, time_, s_.first, s_.last);
    s_.start = cycles * s_.units;
    s_.current = 0;
    for (std::size_t i = 0; i < s_.times.size(); ++i) {
      read(s_.start + static_cast<std::int64_t>(i));
      set_time(i);
    }
    s_.filled = true;
  }

  /// Moves the window by all but one of its units until it holds the time.
  std::size_t turn() {
    if (!s_.filled) {
      fill(0);
      if (const auto found = search()) return *found;
    }
    for (std::int32_t turns = 0; turns < s_.settings.NCYCL; ++turns) {
      s_.start += time_ <= s_.times.front() ? 1 - s_.units : s_.units - 1;
      s_.current = 0;
      for (std::size_t i = 0; i < s_.times.size(); ++i) set_time(i);
      if (const auto found = search()) return *found;
    }
    lost("### program error -2- ");
  }

  /// Reads the file forward until the two stored units hold the time; for an earlier time from
  /// the start of its cycle, then of the cycles before.
  std::size_t slide() {
    const std::int64_t cycles = s_.settings.NCYCL;
    const std::int64_t most = std::numeric_limits<std::int32_t>::max() / cycles;
    const std::int64_t passes =
        cycles * std::max<std::int64_t>(1, std::min(most, s_.units / s_.settings.NSTRDT));
    std::int64_t restarts = 0;
    for (std::int64_t pass = 0; pass < passes; ++pass) {
      if (!s_.filled || time_ <= s_.times.front()) {
        fill(-restarts++);
      } else {
        ++s_.start;
        s_.times[0] = s_.times[1];
        read(s_.start + 1);
        set_time(1);
      }
      if (const auto found = search()) return *found;
    }
    lost("### program error -1- ");
  }

  [[noreturn]] void lost(std::string_view what) {
    // No unit of the file is near the time; the last one that was tried stands for them all.
    const std::size_t tried = s_.places[static_cast<std::size_t>(slot(s_.start))];
    log_.program_error(file_.line_text(file_.line_at(tried)),
                       std::string(what) + std::string(source_.words.module), source_.words.query,
                       items(time_));
  }

  frame::Log& log_;
  frame::TextInput& file_;
  double time_;
  tsrf_module_calendar::Data& calendar_;
  const Source& source_;
  Series& s_;
};

}  // namespace

std::vector<frame::Member> members(Settings& settings, Hour hour) {
  const auto check_ldate = [&settings, hour]() -> std::vector<std::string> {
    const auto [first, last] = settings.LDATE;
    const std::string value = items("ldate =", first, last);
    if (first < 1 || last > 6 || first > last) return {value, "out of range/order"};
    if (hour == Hour::required && (first > 4 || last < 4)) {
      return {value, "ldate(1) must be <= 4 and ldate(2) must be >=4"};
    }
    return {};
  };
  return {
      {"NSTRDT", settings.NSTRDT,
       frame::holds<std::int32_t>(
           "nstrdt =", settings.NSTRDT, [](std::int32_t v) { return v > 1; }, "it must be > 1")},
      {"NCYCL", settings.NCYCL,
       frame::holds<std::int32_t>(
           "ncycl =", settings.NCYCL, [](std::int32_t v) { return v >= 100; },
           "it must be >= 100")},
      {"LDATE", std::span<std::int32_t>(settings.LDATE), check_ldate}};
}

void reset(Series& series) { series = Series(series.settings); }

std::string text(const IntDate& date) {
  return items(date[0], date[1], date[2], date[3], date[4], date[5]);
}

std::string of_data(std::string_view item, std::string_view data) {
  return items(item, "in", data, "data =");
}

void check_same_date(frame::Log& log, const Words& words, const IntDate& date,
                     const IntDate& of_block, std::int64_t line) {
  if (date == of_block) return;
  log.data_error(items(of_data("date", words.data), text(date)),
                 items("it must be =", text(of_block)), items("line no. =", line));
}

frame::ReadStatus check_block_on(
    frame::Log& log, frame::TextInput& file, const Words& words, const Settings& settings,
    std::int32_t records, Counter& at, IntDate& date,
    frame::FunctionRef<ReadStatus(std::int64_t line, std::span<std::int32_t> date)> record,
    frame::FunctionRef<void(std::int64_t line)> check) {
  at.amiss = false;
  const IntDate unset = date;
  const std::size_t first = file.tell();
  std::int32_t count = 0;  // of the block, lost ones too
  bool dated = false;
  const auto read = [&](IntDate& of_record) {
    of_record = dated ? date : unset;
    ReadStatus status = ReadStatus::error;
    const bool good = frame::attempt(
        log, &file, [&] { status = record(at.line + count, on_record(settings, of_record)); });
    return good ? status : ReadStatus::ok;  // its values are amiss, its date was read
  };
  IntDate of_record{};
  for (std::size_t place = first;; place = file.tell()) {
    if (log.findings().enough_of(file.name())) file.pass(file.content().size());
    const ReadStatus status = read(of_record);
    if (status == ReadStatus::end) break;
    if (status == ReadStatus::error) {
      // What was read of its date tells whose it is.
      file.seek(place);
      if (dated && of_record != date) break;
      dated = dated || of_record != unset;
      date = of_record;
      at.amiss = true;
      log.lost_record(file, "### read error : " + std::string(words.data) + " data");
      ++count;
      continue;
    }
    if (dated && of_record != date) {
      // Another block begins, or this record alone has another date than its neighbours.
      const std::size_t behind = file.tell();
      const IntDate other = of_record;
      IntDate next{};
      const bool alone = read(next) == ReadStatus::ok && next == date;
      file.seek(alone ? behind : place);
      if (!alone) break;
      frame::attempt_at(log, file, place,
                        [&] { check_same_date(log, words, other, date, at.line + count); });
      ++count;
      continue;
    }
    date = of_record;
    dated = true;
    frame::attempt_at(log, file, place, [&] { check(at.line + count); });
    ++count;
  }
  if (count == 0) return ReadStatus::end;
  if (count == records) return ReadStatus::ok;
  at.amiss = true;
  frame::attempt_at(log, file, first, [&] {
    log.data_error(items(of_data("no. of lines of a date", words.data), count),
                   items("it must be =", records), items("date =", text(date)));
  });
  return ReadStatus::ok;
}

void note_record(frame::Log& log, const frame::TextInput& file, const Words& words, Counter& at) {
  if (log.collects()) {
    log.look_at_length(file);
    return;
  }
  if (at.told || !file.ran_on()) return;
  at.told = true;
  log.warn("a record of", words.data, "data takes more than one line, file", file.name() + ",",
           "line", file.record_line());
}

void check_pass(frame::Log& log, frame::TextInput& file, const Words& words, std::size_t columns,
                frame::FunctionRef<ReadStatus(Counter&, IntDate&)> check, Series& series) {
  check_columns(log, file, words, columns, series.settings);
  file.rewind();
  file.skip_line();
  const tsrf_module_calendar::Data plain;
  double previous = kBeforeAll;
  std::int64_t units = 0;
  Counter at;
  std::vector<double> intervals;
  for (;;) {
    IntDate date{1, 1, 1, 0, 0, 0};
    at.line = at.time = units + 1;
    const std::size_t place = file.tell();
    const ReadStatus status = check(at, date);
    if (status == ReadStatus::end) break;
    if (status == ReadStatus::error) {
      log.lost_record(file, "### read error : " + std::string(words.data) + " data");
      continue;
    }
    const double time = tsrf_module_calendar::date2sec(plain, as_reals(date));
    const bool in_order = frame::attempt_at(
        log, file, place, [&] { check_date(log, words, at, date, time > previous); });
    if (!in_order) continue;
    if (units > 0) intervals.push_back(time - previous);
    previous = time;
    series.last = as_reals(date);
    if (units++ == 0) series.first = series.last;
  }
  if (units == 0) log.fail("### error : lack of " + std::string(words.data) + " data");
  series.units = units;
  series.spacing = spacing_of(std::move(intervals));
}

Bracket find(frame::Log& log, frame::TextInput& file, double time,
             tsrf_module_calendar::Data& calendar, const Source& source, Series& series) {
  return Query(log, file, time, calendar, source, series).answer();
}

}  // namespace dated_series
