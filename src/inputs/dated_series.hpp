// Dated series: data files whose records carry a date and repeat as a cycle.
//
// Weather, room heat, sunlit fractions and water temperatures are such series. A record is dated
// by a slice of year, month, day, hour, minute, second; a unit of the series is one record
// (weather) or the block of records of one date. Several years, a year, a month or a day of units
// repeat without end in both directions, so the series is the endless sequence of units g: unit
// g mod n of the file in cycle g div n. A query finds the two units round a time and the weight
// between them.
//
// Either the whole file is kept in memory and a window of all n units is turned along the sequence
// when the time leaves it, or (NSTRDT = 2) two units are kept and the file is read forward. What
// the units hold is the module's: it keeps its values in columns by slot and gives the series
// callbacks that check the file and read a unit into a slot. Turning the window moves no values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/function_ref.hpp"
#include "frame/log.hpp"
#include "frame/namelist.hpp"
#include "frame/text_input.hpp"
#include "inputs/calendar.hpp"
#include "inputs/series_spacing.hpp"

namespace dated_series {

using tsrf_module_calendar::Date;
using tsrf_module_calendar::IntDate;

/// The members that the group of every series has.
struct Settings {
  std::int32_t NSTRDT = 24;                 ///< units to store; above 2 the whole file
  std::array<std::int32_t, 2> LDATE{4, 4};  ///< first and last date element of a record, from 1
  std::int32_t NCYCL = 100;                 ///< bound on cycles and passes in a search
};

/// Whether a record's date must hold the hour.
enum class Hour { required, optional };

/// The members of `settings` for a namelist group, with their checks. A module reads them into a
/// copy of its settings and takes the copy when the group was read and checked.
std::vector<frame::Member> members(Settings& settings, Hour hour);

/// How a series is called in messages.
struct Words {
  std::string_view data;     ///< its file: "Weather"
  std::string_view module;   ///< "(tsrf_module_weather)"
  std::string_view query;    ///< "(set_weather)"
  std::string_view reading;  ///< heads the report of a unit read: "%%% read weather : date="
  std::string_view counted;  ///< its file where the date elements are counted
  std::string_view ordered;  ///< its file where dates do not ascend
  std::string_view place_of_disorder;  ///< "line no. =" or "time no. ="
  bool rests = false;  ///< what lies between the cycles has no part in the run (night in Sun files)
};

struct Series {
  Series() = default;
  explicit Series(const Settings& with) : settings(with) {}

  Settings settings;

  // From the check pass.
  std::int64_t units = 0;  ///< number of units of the file; 0 before the check pass
  Date first{}, last{};    ///< dates of the first and the last
  Spacing spacing{};       ///< of the units in time

  // The window.
  bool filled = false;
  tsrf_module_calendar::Cycle cycle{};  ///< the cycle that unit 0 of the sequence opens
  std::int64_t start = 0;               ///< the sequence's unit at position 0 of the window
  std::vector<double> times;            ///< per position [s]
  std::vector<IntDate> dates;           ///< per slot, in the cycle of unit 0
  std::vector<std::size_t> places;      ///< per slot: where its unit begins in the file
  std::size_t current = 0;              ///< position found last, where the next search starts
  std::size_t place = 0;                ///< where the unit behind the window starts in the file
  bool told_of_gap = false;             ///< the log was warned of a wide interval

  /// Whether all units are stored; else two of them.
  [[nodiscard]] bool all_in_memory() const { return settings.NSTRDT > 2 || units <= 2; }
  [[nodiscard]] std::int64_t slots() const { return all_in_memory() ? units : 2; }
};

/// Forgets the file: the next query checks and reads it anew. The settings stay.
void reset(Series& series);

/// Number of date elements on a record.
inline std::size_t elements(const Settings& settings) {
  return static_cast<std::size_t>(settings.LDATE[1]) - static_cast<std::size_t>(settings.LDATE[0]) +
         1;
}
/// The elements of `date` that a record holds, in the order of the record.
inline std::span<std::int32_t> on_record(const Settings& settings, IntDate& date) {
  const auto first = static_cast<std::size_t>(settings.LDATE[0] - 1);
  return std::span(date).subspan(first, elements(settings));
}

/// A date as it is printed.
std::string text(const IntDate& date);
/// "date in Weather data =" and its like.
std::string of_data(std::string_view item, std::string_view data);

/// What the check pass is at, from 1; a module that reads blocks counts the lines itself.
struct Counter {
  std::int64_t line = 0;
  std::int64_t time = 0;
  bool told = false;   ///< the log was warned of a record on more than one line
  bool amiss = false;  ///< where the log collects faults: the block has too few or too many records
};
/// To be called behind each record that is read: warns of the first that takes more than one line.
void note_record(frame::Log& log, const frame::TextInput& file, const Words& words, Counter& at);

/// The check pass: the number of fields of the first record (`columns` of them values), then every
/// unit by `check`, which reads the next one, fills its date and checks its values; then the date.
/// Sets the number of units, the first and last date and the spacing. Warns of a record that takes
/// more than one line (one that lacks a field takes it from the next) and of a missing title.
void check_pass(frame::Log& log, frame::TextInput& file, const Words& words, std::size_t columns,
                frame::FunctionRef<frame::ReadStatus(Counter&, IntDate&)> check, Series& series);

/// Reads the records of one block: `record(n)` reads the n-th, from 0. The end of the file before
/// the first is the end of the series, behind it a fault.
template <class Record>
frame::ReadStatus read_block(frame::Log& log, frame::TextInput& file, const Words& words,
                             std::int32_t records, Record&& record) {
  if (records < 1) return frame::ReadStatus::end;
  for (std::int32_t n = 0; n < records; ++n) {
    const frame::ReadStatus status = record(n);
    if (status == frame::ReadStatus::ok) continue;
    if (n > 0 && status == frame::ReadStatus::end) {
      log.read_error(file, "### end of file : " + std::string(words.data) + " data");
    }
    return status;
  }
  return frame::ReadStatus::ok;
}

/// Fails unless a record has the date of its block.
void check_same_date(frame::Log& log, const Words& words, const IntDate& date,
                     const IntDate& of_block, std::int64_t line);

/// The form of check_block for a log that collects faults: a block is what has one date, however
/// many records that are, so that one record too few or too many is one fault.
frame::ReadStatus check_block_on(
    frame::Log& log, frame::TextInput& file, const Words& words, const Settings& settings,
    std::int32_t records, Counter& at, IntDate& date,
    frame::FunctionRef<frame::ReadStatus(std::int64_t line, std::span<std::int32_t> date)> record,
    frame::FunctionRef<void(std::int64_t line)> check);

/// One block in the check pass: `record(line, on_record)` reads a record, the elements of its date
/// into the span; when the date is that of the block `check(line)` follows.
template <class Record, class Check>
frame::ReadStatus check_block(frame::Log& log, frame::TextInput& file, const Words& words,
                              const Settings& settings, std::int32_t records, Counter& at,
                              IntDate& date, Record&& record, Check&& check) {
  at.line = (at.time - 1) * records + 1;
  if (log.collects()) {
    return check_block_on(log, file, words, settings, records, at, date, record, check);
  }
  return read_block(log, file, words, records, [&](std::int32_t n) {
    IntDate of_record = date;
    const frame::ReadStatus status = record(at.line + n, on_record(settings, of_record));
    if (status != frame::ReadStatus::ok) return status;
    note_record(log, file, words, at);
    if (n == 0) date = of_record;
    check_same_date(log, words, of_record, date, at.line + n);
    check(at.line + n);
    return status;
  });
}

/// A series' file as its module reads it.
struct Source {
  const Words& words;
  frame::FunctionRef<void()> check_data;                 ///< the check pass
  frame::FunctionRef<void(std::int32_t slots)> prepare;  ///< takes the memory for the values
  /// Reads the next unit into a slot and overwrites those elements of its date that it holds.
  frame::FunctionRef<frame::ReadStatus(std::int32_t slot, IntDate& date)> read;
  std::int64_t unit_bytes;  ///< memory that the values of a slot take
};

/// The stored units round a time: the value there is mix(weight, value(lower), value(upper)).
struct Bracket {
  std::int32_t lower;  ///< slot of the unit before
  std::int32_t upper;  ///< slot of the unit at or behind
  double weight;       ///< of the upper one, above 0, at most 1
};

inline double mix(double weight, double lower, double upper) {
  return (1.0 - weight) * lower + weight * upper;
}
/// The same for all values of a unit; single-precision values are mixed in double.
template <class Real>
void mix(double weight, std::span<const Real> lower, std::span<const Real> upper,
         std::span<double> result) {
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = mix(weight, static_cast<double>(lower[i]), static_cast<double>(upper[i]));
  }
}

/// Finds the units round `time`. The first query runs the check pass. Any order of times will do;
/// a forward run costs one comparison a query while the time stays between two units. Warns of a
/// file that nearly fills its cycle, and of the first bracket that is more than twice as wide as
/// the file's usual interval.
Bracket find(frame::Log& log, frame::TextInput& file, double time,
             tsrf_module_calendar::Data& calendar, const Source& source, Series& series);

}  // namespace dated_series
