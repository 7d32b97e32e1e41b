#include "buildings/rmheat.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace tsrf_module_rmheat {

namespace {

using dated_series::IntDate;
using frame::items;
using frame::ReadStatus;

constexpr dated_series::Words kWords{"RmHeat",       "(tsrf_module_rmheat)",
                                     "(set_rmheat)", "%%% read rmheat : date=",
                                     "RmHeat",       "Rmheat",
                                     "time no. ="};
constexpr std::size_t kColumns = 11;
constexpr double kZeroCelsius = 273.15;

std::int64_t key(std::int32_t bcd, std::int32_t strct) { return (std::int64_t{bcd} << 32) + strct; }

/// Position of a line's pair: as a rule that of the line in its block.
std::int32_t position(const Pairs& pairs, std::int32_t guess, const Line& line) {
  const auto g = static_cast<std::size_t>(guess);
  if (pairs.BCD[g] == line.BCD && pairs.Strct[g] == line.Strct) return guess;
  return pairs.find(line.BCD, line.Strct);
}

void check_values(frame::Log& log, const frame::TextInput& file, const Line& line,
                  std::int64_t number) {
  struct Rule {
    Element element;
    std::string_view name;
    double least, most;
    std::string_view words;
  };
  // A tenth above 100 is rounding in the data.
  constexpr double kNoBound = std::numeric_limits<double>::max();
  constexpr double kMostTaken = 1000.0;  // by what cools a room, of a m2 of its floor [W]
  constexpr std::array<Rule, 5> kRules{
      {{kRmsens, "rmsens", -kMostTaken, kNoBound, "it must be >= -1000"},
       {kRmlat, "rmlat", -kMostTaken, kNoBound, "it must be >= -1000"},
       {kRmtmp, "rmtmp", -kZeroCelsius, kNoBound, "it must be >= -273.15"},
       {kRmhum, "rmhum", 0.0, 100.1, "it must be >= 0 and <= 100"},
       {kVent, "vent", 0.0, kNoBound, "it must be >= 0"}}};
  for (const Rule& rule : kRules) {
    const double value = line.values[static_cast<std::size_t>(rule.element - 1)];
    if (value >= rule.least && value <= rule.most) continue;
    frame::attempt(log, &file, [&] {
      log.data_error(items(dated_series::of_data(rule.name, kWords.data), value), rule.words,
                     items("line no. =", number));
    });
  }
}

void check_counts(frame::Log& log, const Data& data, std::int64_t time) {
  for (std::size_t n = 0; n < data.counts.size(); ++n) {
    if (data.counts[n] == 1) continue;
    frame::attempt(log, [&] {
      log.data_error(
          items("BCD in RmHeat data =", data.pairs.BCD[n], data.pairs.Strct[n]),
          data.counts[n] < 1 ? "lack of data for this BCD" : "duplicated data for this BCD",
          items("time no. =", time));
    });
  }
}

/// Reads the next block into a row of values, in the units of the room balance.
ReadStatus read_block(frame::Log& log, frame::TextInput& file, IntDate& date, const Data& data,
                      std::span<double> row) {
  const std::span<std::int32_t> on_record = dated_series::on_record(data.series.settings, date);
  Line line;
  return dated_series::read_block(log, file, kWords, data.pairs.size(), [&](std::int32_t n) {
    const ReadStatus status = read_line(file, on_record, line);
    if (status != ReadStatus::ok) return status;
    const std::int32_t pair = position(data.pairs, n, line);
    if (pair < 0)
      log.program_error("### program error -9801- (tsrf_module_rmheat)", "(set_rmheat)");
    std::array<double, kElements> values = line.values;
    double& rmtmp = values[kRmtmp - 1];
    double& rmhum = values[kRmhum - 1];
    rmtmp = std::max(rmtmp + kZeroCelsius, 0.0);
    rmhum = std::clamp(rmhum, 0.0, 100.0);
    std::copy(values.begin(), values.end(), row.begin() + std::ptrdiff_t{pair} * kElements);
    return status;
  });
}

}  // namespace

std::int32_t Pairs::find(std::int32_t bcd, std::int32_t strct) const {
  const auto found =
      std::lower_bound(sorted.begin(), sorted.end(), std::pair(key(bcd, strct), std::int32_t{0}));
  return found != sorted.end() && found->first == key(bcd, strct) ? found->second : -1;
}

ReadStatus read_line(frame::TextInput& file, std::span<std::int32_t> date, Line& line) {
  return file.read(date, line.BCD, line.Strct, std::span<double>(line.values), line.AC_flag,
                   line.ACSEMin, line.ACPrT);
}

Pairs read_pairs(frame::Log& log, frame::TextInput& file, const dated_series::Settings& settings,
                 std::string_view fault) {
  file.pass_title(log, dated_series::elements(settings) + kColumns);
  Pairs pairs;
  IntDate first{};
  Line line;
  for (;;) {
    IntDate date = first;
    const ReadStatus status = read_line(file, dated_series::on_record(settings, date), line);
    if (status == ReadStatus::end) break;
    if (status == ReadStatus::error) {
      log.lost_record(file, fault);
      continue;
    }
    if (pairs.BCD.empty()) first = date;
    if (date != first) break;
    pairs.sorted.emplace_back(key(line.BCD, line.Strct), pairs.size());
    pairs.BCD.push_back(line.BCD);
    pairs.Strct.push_back(line.Strct);
  }
  if (pairs.BCD.empty()) log.fail("### error : lack of RmHeat data");
  std::sort(pairs.sorted.begin(), pairs.sorted.end());
  return pairs;
}

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_rmheat)(inputdata)");
  dated_series::Settings settings = data.series.settings;
  frame::Group group("TSRF_RMHEAT", dated_series::members(settings, dated_series::Hour::required));
  group.read(log, control);
  data.series.settings = settings;
  data.settings_place = group.place();
}

void read_rmheat(frame::Log& log, frame::TextInput& file, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_rmheat)(read_rmheat)");
  data.pairs = read_pairs(log, file, data.series.settings, "### read error : RmHeat data");
  data.counts.assign(data.pairs.BCD.size(), 0);
  reset(data);
}

void check_data(frame::Log& log, frame::TextInput& file, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_rmheat)(check_data)");
  Line line;
  const auto read = [&](std::int64_t, std::span<std::int32_t> date) {
    return read_line(file, date, line);
  };
  const auto check_line = [&](std::int64_t number) {
    const std::int32_t pair = data.pairs.find(line.BCD, line.Strct);
    if (pair < 0) {
      log.data_error(items("BCD in RmHeat data =", line.BCD, line.Strct),
                     "it is not defined in 1st time block");
    }
    check_values(log, file, line, number);
    ++data.counts[static_cast<std::size_t>(pair)];
  };
  const auto check = [&](dated_series::Counter& at, IntDate& date) {
    std::fill(data.counts.begin(), data.counts.end(), 0);
    const ReadStatus status = dated_series::check_block(
        log, file, kWords, data.series.settings, data.pairs.size(), at, date, read, check_line);
    if (status == ReadStatus::ok && !at.amiss) check_counts(log, data, at.time);
    return status;
  };
  dated_series::check_pass(log, file, kWords, kColumns, check, data.series);
}

void set_rmheat(frame::Log& log, frame::TextInput& file, double time,
                tsrf_module_calendar::Data& calendar, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_rmheat)(set_rmheat)");
  const auto check = [&] { check_data(log, file, data); };
  const auto prepare = [&](std::int32_t slots) {
    data.values = frame::PatchTable<double>(data.pairs.size() * kElements, slots);
    data.now.resize(data.values.patches());
  };
  const auto read = [&](std::int32_t slot, IntDate& date) {
    return read_block(log, file, date, data, data.values.row(slot));
  };
  const dated_series::Source source{
      kWords, check, prepare, read,
      frame::bytes_of<double>(static_cast<std::size_t>(data.pairs.size()), kElements)};
  const dated_series::Bracket at =
      dated_series::find(log, file, time, calendar, source, data.series);
  const auto& values = std::as_const(data.values);
  dated_series::mix<double>(at.weight, values.row(at.lower), values.row(at.upper), data.now);
}

void reset(Data& data) { dated_series::reset(data.series); }

void tsrf_set_rmheat(frame::Log& log, const Data& data, std::span<const std::int32_t> BldCD,
                     std::span<const std::int32_t> Strct, std::int32_t first, std::int32_t last,
                     frame::PatchTable<double>& out) {
  const auto give_up = [&log] { log.program_error("### program error -1- (tsrf_set_rmheat)"); };
  if (first < 1 || first > kElements || last < 1 || last > kElements) give_up();
  std::fill(out.all().begin(), out.all().end(), 0.0);
  for (std::size_t b = 0; b < BldCD.size(); ++b) {
    const std::int32_t pair = data.pairs.find(BldCD[b], Strct[b]);
    if (pair < 0) give_up();
    for (std::int32_t element = first; element <= last; ++element) {
      out(b, element - first) = data.now[static_cast<std::size_t>(pair * kElements + element - 1)];
    }
  }
}

}  // namespace tsrf_module_rmheat
