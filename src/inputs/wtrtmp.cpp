#include "inputs/wtrtmp.hpp"

#include <algorithm>
#include <span>
#include <utility>

namespace tsrf_module_wtrtmp {

namespace {

using dated_series::IntDate;
using frame::items;
using frame::ReadStatus;

constexpr dated_series::Words kWords{"WaterTemp",    "(tsrf_module_wtrtmp)",
                                     "(set_wtrtmp)", "%%% read WaterTemp : date=",
                                     "Sun",          "WaterTemp",
                                     "line no. ="};
constexpr double kZeroCelsius = 273.15;

struct Line {
  std::int32_t PID = 0;
  std::int32_t bid = 0;  ///< identifier of the block
};

/// Reads a line behind the elements of its date; its temperatures go to data.line.
ReadStatus read_line(frame::TextInput& file, std::span<std::int32_t> date, Line& line, Data& data) {
  return file.read(date, line.PID, line.bid, std::span<double>(data.line));
}

/// Position in the list of patches of a PID of the file, which must be one of water.
std::int32_t water_patch(frame::Log& log, const tsrf_module_patch::Data& patch, std::int32_t PID) {
  const std::int32_t p = patch.by_pid.find(PID);
  if (p < 0)
    log.data_error(items("PID in WaterTemp data =", PID), "it is not defined in Patch data");
  if (patch.type[static_cast<std::size_t>(p)] != tsrf_module_patch::kWater) {
    log.data_error(items("PID in WaterTemp data =", PID), "it does not have WaterTemp type");
  }
  return p;
}

void check_all_given(frame::Log& log, const tsrf_module_patch::Data& patch, const Data& data) {
  for (std::size_t p = 0; p < patch.PID.size(); ++p) {
    if (patch.type[p] != tsrf_module_patch::kWater || data.by_pid.find(patch.PID[p]) >= 0) continue;
    frame::attempt(log, [&] {
      log.data_error(items("PID in Patch data =", patch.PID[p]),
                     "it is not defined WaterTemp data");
    });
  }
}

/// True when a record is left whose fields the rest of the file can hold.
bool has_records(frame::Log& log, frame::TextInput& file, Data& data) {
  const std::size_t place = file.tell();
  IntDate date{};
  if (file.read(dated_series::on_record(data.series.settings, date)) == ReadStatus::end) {
    return false;
  }
  file.seek(place);
  if (!file.can_hold(data.settings.NITEM)) {
    file.mark_fault();
    log.read_error(file, "### read error : WaterTemp data");
  }
  frame::allocating(log, "temperatures of a water patch",
                    frame::bytes_of<double>(static_cast<std::size_t>(data.settings.NITEM)),
                    [&] { data.line.assign(static_cast<std::size_t>(data.settings.NITEM), 0.0); });
  return true;
}

void check_temperatures(frame::Log& log, std::span<const double> line, std::int64_t number) {
  for (const double temperature : line) {
    if (temperature > -kZeroCelsius) continue;
    log.data_error(items("temp. in WaterTemp data =", temperature), "it must be > -273.15",
                   items("line no. =", number));
  }
}

void check_counts(frame::Log& log, const Data& data, std::int64_t time) {
  for (std::size_t n = 0; n < data.PID.size(); ++n) {
    if (data.counts[n] <= 1) continue;
    frame::attempt(log, [&] {
      log.data_error(items("PID in WaterTemp data =", data.PID[n]), "duplicated data for this PID",
                     items("time no. =", time));
    });
  }
}

/// Reads the next block into a row of values.
ReadStatus read_block(frame::Log& log, frame::TextInput& file, IntDate& date, Data& data,
                      std::span<double> row) {
  const std::span<std::int32_t> on_record = dated_series::on_record(data.series.settings, date);
  const auto records = static_cast<std::int32_t>(data.PID.size());
  Line line;
  return dated_series::read_block(log, file, kWords, records, [&](std::int32_t) {
    const ReadStatus status = read_line(file, on_record, line, data);
    if (status != ReadStatus::ok) return status;
    const std::int32_t n = data.by_pid.find(line.PID);
    if (n < 0) {
      log.program_error("### program error -9801- (tsrf_module_wtrtmp)", "(set_wtrtmp)");
    }
    std::copy(data.line.begin(), data.line.end(),
              row.begin() + static_cast<std::ptrdiff_t>(n) * data.settings.NITEM);
    return status;
  });
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_wtrtmp)(inputdata)");
  Settings own = data.settings;
  dated_series::Settings common = data.series.settings;
  std::vector<frame::Member> members = dated_series::members(common, dated_series::Hour::required);
  members.emplace_back("NITEM", own.NITEM, frame::positive("nitem =", own.NITEM));
  members.emplace_back("LWTRTMP", own.LWTRTMP);
  frame::Group("TSRF_WTRTMP", std::move(members)).read(log, control);
  data.settings = own;
  data.series.settings = common;
}

void read_wtrtmp(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                 Data& data) {
  const frame::Tag tag(log, "(tsrf_module_wtrtmp)(read_wtrtmp)");
  dated_series::reset(data.series);
  data.PID.clear();
  data.patch.clear();
  file.pass_title(log, dated_series::elements(data.series.settings) + 2 +
                           static_cast<std::size_t>(data.settings.NITEM));
  if (!has_records(log, file, data)) return;
  IntDate first{};
  for (;;) {
    Line line;
    IntDate date = first;
    const ReadStatus status =
        read_line(file, dated_series::on_record(data.series.settings, date), line, data);
    if (status == ReadStatus::error) {
      log.lost_record(file, "### read error : WaterTemp data");
      continue;
    }
    if (data.PID.empty()) first = date;
    if (status == ReadStatus::end || date != first) break;
    const bool known = frame::attempt(
        log, &file, [&] { data.patch.push_back(water_patch(log, patch, line.PID)); });
    if (known) data.PID.push_back(line.PID);
  }
  data.by_pid = frame::CodeIndex(data.PID);
  data.counts.assign(data.PID.size(), 0);
  check_all_given(log, patch, data);
}

void check_data(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                Data& data) {
  const frame::Tag tag(log, "(tsrf_module_wtrtmp)(check_data)");
  const auto records = static_cast<std::int32_t>(data.PID.size());
  Line line;
  std::int32_t bid = 0;
  std::int64_t first_line = 0;
  const auto read = [&](std::int64_t number, std::span<std::int32_t> date) {
    const ReadStatus status = read_line(file, date, line, data);
    if (status != ReadStatus::ok) return status;
    check_temperatures(log, data.line, number);
    if (number == first_line) bid = line.bid;
    if (line.bid != bid) {
      log.data_error(items("bid in WaterTemp data =", line.bid), items("it must be =", bid),
                     items("line no. =", number));
    }
    return status;
  };
  const auto take = [&](std::int64_t) {
    water_patch(log, patch, line.PID);
    const std::int32_t n = data.by_pid.find(line.PID);
    if (n >= 0) ++data.counts[static_cast<std::size_t>(n)];
  };
  const auto check = [&](dated_series::Counter& at, IntDate& date) {
    std::fill(data.counts.begin(), data.counts.end(), 0);
    first_line = (at.time - 1) * records + 1;
    const ReadStatus status = dated_series::check_block(log, file, kWords, data.series.settings,
                                                        records, at, date, read, take);
    if (status == ReadStatus::ok) check_counts(log, data, at.time);
    return status;
  };
  dated_series::check_pass(log, file, kWords, static_cast<std::size_t>(data.settings.NITEM) + 2,
                           check, data.series);
}

void set_wtrtmp(frame::Log& log, frame::TextInput& file, double time,
                const tsrf_module_patch::Data& patch, tsrf_module_calendar::Data& calendar,
                Data& data) {
  if (data.PID.empty()) return;
  const frame::Tag tag(log, "(tsrf_module_wtrtmp)(set_wtrtmp)");
  const auto check = [&] { check_data(log, file, patch, data); };
  const auto prepare = [&](std::int32_t slots) {
    const std::size_t size = data.PID.size() * data.line.size();
    data.values = frame::PatchTable<double>(static_cast<std::int32_t>(size), slots);
    data.now.resize(size);
  };
  const auto read = [&](std::int32_t slot, IntDate& date) {
    return read_block(log, file, date, data, data.values.row(slot));
  };
  const dated_series::Source source{kWords, check, prepare, read,
                                    frame::bytes_of<double>(data.line.size(), data.PID.size())};
  const dated_series::Bracket at =
      dated_series::find(log, file, time, calendar, source, data.series);
  const auto& values = std::as_const(data.values);
  dated_series::mix<double>(at.weight, values.row(at.lower), values.row(at.upper), data.now);
}

void tsrf_set_wtrtmp(const Data& data, std::int32_t nodes, frame::PatchTable<double>& tlyr) {
  for (std::int32_t k = 0; k < nodes; ++k) {
    const std::span<double> row = tlyr.row(k);
    for (std::size_t n = 0; n < data.patch.size(); ++n) {
      row[static_cast<std::size_t>(data.patch[n])] = data.now[n * data.line.size()] + kZeroCelsius;
    }
  }
}

}  // namespace tsrf_module_wtrtmp
