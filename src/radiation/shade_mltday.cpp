// The shade schedule of dated runs: months of day files, kept packed.
#include <algorithm>
#include <string>
#include <utility>

#include "radiation/bit_planes.hpp"
#include "radiation/shade.hpp"
#include "radiation/shade_lines.hpp"

namespace tsrf_module_shade {

namespace {

using dated_series::Counter;
using dated_series::IntDate;
using frame::items;
using frame::ReadStatus;

constexpr std::int32_t kMostDates = 24;  ///< blocks of a day's file
constexpr double kHour = 3600.0;
constexpr std::int32_t kHoursOfDay = 24;

/// First and last day of `month` that have a file.
std::array<std::int32_t, 2> days_of(const Settings& settings, std::int32_t month) {
  const std::int32_t length = tsrf_module_calendar::days_in(month);
  if (settings.DAYS[0] == 0) return {1, length};
  return {settings.DAYS[0], std::min(settings.DAYS[1], length)};
}

/// The planes that hold block `block` of a month.
std::span<std::int32_t> planes(PackedMonth& month, std::size_t block, std::size_t size) {
  return std::span(month.words).subspan(block / tsrf_utl::kSlots * size, size);
}

std::int32_t slot_of(std::size_t block) {
  return static_cast<std::int32_t>(block % tsrf_utl::kSlots) + 1;
}

/// Reads the files of one month.
class MonthReader {
 public:
  MonthReader(frame::Log& log, frame::Crew& crew, const tsrf_module_patch::Data& patch, Data& data,
              PackedMonth& month)
      : log_(log),
        crew_(crew),
        patch_(patch),
        data_(data),
        month_(month),
        mpatch_(static_cast<std::size_t>(patch.mpatch)),
        group_(mpatch_ * static_cast<std::size_t>(data.settings.NBIT)) {}

  /// The files of days `first` to `last`. When one file serves all of them it is read and packed
  /// once, and its blocks come again each day.
  void read_days(std::int32_t first, std::int32_t last) {
    const bool one_for_all = hours_only() && last > first && name_of(first) == name_of(first + 1);
    const std::int32_t files = one_for_all ? 1 : last - first + 1;
    make_room(files);
    for (std::int32_t day = first; day < first + files; ++day) read_day(day, name_of(day));
    if (!one_for_all) return;
    const std::vector<double> of_day = month_.times;
    for (std::int32_t day = 1; day <= last - first; ++day) {
      for (const double time : of_day) {
        month_.times.push_back(time + day * tsrf_module_calendar::kSecondsPerDay);
      }
    }
  }

 private:
  /// Whether no record tells the day it is of.
  [[nodiscard]] bool hours_only() const { return data_.series.settings.LDATE[0] == 4; }
  [[nodiscard]] std::string name_of(std::int32_t day) const {
    return data_.day_name(month_.month, day);
  }

  /// Takes the memory for the blocks of `files` files.
  void make_room(std::int32_t files) {
    const std::size_t blocks = static_cast<std::size_t>(files) * kMostDates;
    const std::size_t groups = (blocks + tsrf_utl::kSlots - 1) / tsrf_utl::kSlots;
    frame::allocating(log_, "sunlit fractions of a month",
                      frame::bytes_of<std::int32_t>(group_, groups), [&] {
                        month_.words.reserve(groups * group_);
                        data_.seen.resize(mpatch_);
                        data_.block.resize(mpatch_);
                      });
  }

  void read_day(std::int32_t day, const std::string& name) {
    log_.line("%%% open file =", name);
    frame::TextInput file(name);
    if (!file.good()) {
      log_.error_and_log("### cannot open " + name + " : " + file.reason());
      throw frame::Stop{frame::kStatusOpenError};
    }
    day_ = day;
    dates_ = 0;
    last_time_ = -1.0;
    const auto block = [&](Counter& at, IntDate& date) { return read_block(file, at, date); };
    dated_series::check_pass(log_, file, kWords, kColumns, block, data_.series);
    if (dates_ > kMostDates) {
      log_.data_error(items("maximal no. of dates =", dates_), "it must be <= 24");
    }
  }

  ReadStatus read_block(frame::TextInput& file, Counter& at, IntDate& date) {
    date[1] = month_.month;
    date[2] = day_;
    const std::size_t first = file.tell();
    at.line = (at.time - 1) * patch_.mpatch + 1;
    const ReadStatus status =
        take_plain_block(crew_, file, patch_, dated_series::on_record(data_.series.settings, date),
                         std::span(data_.block))
            ? ReadStatus::ok
            : read_records(file, at, date);
    if (status != ReadStatus::ok) return status;
    check_date(date, at.line, file, first);
    if (++dates_ <= kMostDates) store(last_time_);
    return status;
  }

  /// The block as free-form records, with what is at fault in it.
  ReadStatus read_records(frame::TextInput& file, Counter& at, IntDate& date) {
    const std::int32_t block = ++data_.blocks_read;
    Line line;
    std::size_t place = file.tell();
    const auto read = [&](std::int64_t, std::span<std::int32_t> on_record) {
      place = file.tell();
      return read_line(file, on_record, line);
    };
    const auto take = [&](std::int64_t number) {
      enter(log_, file, place, patch_, line, static_cast<std::size_t>(number - at.line), block,
            "(read_mltday)", std::span(data_.seen), std::span(data_.block));
    };
    return dated_series::check_block(log_, file, kWords, data_.series.settings, patch_.mpatch, at,
                                     date, read, take);
  }

  /// The date is of the file's day and follows that of the block before; the block's first record
  /// is the one at `place`.
  void check_date(const IntDate& date, std::int64_t line, const frame::TextInput& file,
                  std::size_t place) {
    IntDate of_file = date;
    of_file[1] = month_.month;
    of_file[2] = day_;
    dated_series::check_same_date(log_, kWords, date, of_file, line);
    const double time = ((day_ - 1) * kHoursOfDay + date[3]) * kHour;
    const bool first = dates_ == 0;
    if (!first && time <= last_time_) {
      log_.program_error(file.line_text(file.line_at(place)),
                         "### program error -1- (tsrf_module_shade)", "(read_mltday)");
    }
    last_time_ = time;
  }

  void store(double time) {
    const std::size_t block = month_.packed++;
    if (block % tsrf_utl::kSlots == 0) {
      frame::allocating(log_, "sunlit fractions of a month",
                        frame::bytes_of<std::int32_t>(month_.words.size() + group_),
                        [&] { month_.words.resize(month_.words.size() + group_, 0); });
    }
    month_.times.push_back(time);
    tsrf_utl::tsrf_utl_bitrdt(log_, -1, mpatch_, mpatch_, data_.settings.NBIT, slot_of(block),
                              planes(month_, block, group_), data_.block);
  }

  frame::Log& log_;
  frame::Crew& crew_;
  const tsrf_module_patch::Data& patch_;
  Data& data_;
  PackedMonth& month_;
  std::size_t mpatch_;
  std::size_t group_;  ///< words of the planes of 30 blocks
  std::int32_t day_ = 0;
  std::int32_t dates_ = 0;   ///< blocks of the day's file
  double last_time_ = -1.0;  ///< of the last block, from the month's start [s]
};

/// Unpacks block `block` of a month into one of the two columns, unless it is there.
void unpack(frame::Log& log, PackedMonth& month, std::size_t block, UnpackedBlock& column,
            const Data& data) {
  if (column.month == month.month && column.block == block) return;
  const std::size_t n = column.values.size();
  const std::size_t packed = block % month.packed;
  tsrf_utl::tsrf_utl_bitrdt(log, 1, n, n, data.settings.NBIT, slot_of(packed),
                            planes(month, packed, n * static_cast<std::size_t>(data.settings.NBIT)),
                            column.values);
  column.month = month.month;
  column.block = block;
}

/// The month's packed blocks, read now if they are not kept; the oldest month makes room.
PackedMonth& packed_month(frame::Log& log, frame::Crew& crew, std::int32_t month,
                          const tsrf_module_patch::Data& patch, Data& data) {
  for (PackedMonth& kept : data.months) {
    if (kept.month == month) return kept;
  }
  PackedMonth next;
  if (data.months.size() >= static_cast<std::size_t>(data.settings.NITEM)) {
    next = std::move(data.months.front());
    data.months.erase(data.months.begin());
  }
  read_mltday(log, crew, month, patch, data, next);
  data.months.push_back(std::move(next));
  return data.months.back();
}

}  // namespace

std::vector<bool> lit_blocks(const PackedMonth& packed) {
  const std::size_t groups = (packed.packed + tsrf_utl::kSlots - 1) / tsrf_utl::kSlots;
  std::vector<bool> lit(packed.packed);
  for (std::size_t group = 0; group < groups; ++group) {
    const std::size_t size = packed.words.size() / groups;
    std::int32_t any = 0;
    for (std::size_t i = 0; i < size; ++i) any |= packed.words[group * size + i];
    for (std::size_t b = group * tsrf_utl::kSlots; b < lit.size(); ++b) {
      if (b / tsrf_utl::kSlots == group) lit[b] = (any >> (slot_of(b) - 1) & 1) != 0;
    }
  }
  return lit;
}

void read_mltday(frame::Log& log, frame::Crew& crew, std::int32_t month,
                 const tsrf_module_patch::Data& patch, Data& data, PackedMonth& packed) {
  const frame::Tag tag(log, "(tsrf_module_shade)(read_mltday)");
  const auto [first, last] = days_of(data.settings, month);
  packed.month = month;
  packed.times.clear();
  packed.words.clear();
  packed.packed = 0;
  MonthReader reader(log, crew, patch, data, packed);
  reader.read_days(first, last);
}

void set_shade_mltday(frame::Log& log, frame::Crew& crew, double time,
                      const tsrf_module_patch::Data& patch, tsrf_module_calendar::Data& calendar,
                      Data& data, std::span<double> fsun) {
  const frame::Tag tag(log, "(tsrf_module_shade)(set_shade_mltday)");
  if (patch.mpatch == 0) return;
  const tsrf_module_calendar::Date date = tsrf_module_calendar::sec2date(log, calendar, time);
  const auto month = static_cast<std::int32_t>(date[1]);
  const double in_month =
      time - tsrf_module_calendar::date2sec(calendar, {date[0], date[1], 1.0, 0.0, 0.0, 0.0});
  const auto day = static_cast<std::int32_t>(in_month / tsrf_module_calendar::kSecondsPerDay) + 1;
  const auto [first, last] = days_of(data.settings, month);
  if (month < data.settings.MONTHS[0] || month > data.settings.MONTHS[1] || day < first ||
      day > last) {
    log.program_error(data.settings_place, "### program error -1- (tsrf_module_shade)",
                      "(set_shade_mltday)");
  }
  PackedMonth& packed = packed_month(log, crew, month, patch, data);
  data.lower.values.resize(fsun.size());
  data.upper.values.resize(fsun.size());
  const std::vector<double>& times = packed.times;
  const auto behind = std::lower_bound(times.begin(), times.end(), in_month);
  const auto next = static_cast<std::size_t>(behind - times.begin());
  const std::size_t upper = std::min(next, times.size() - 1);
  const std::size_t lower = next == 0 ? 0 : next - 1;
  if (data.upper.month == month && data.upper.block == lower) std::swap(data.lower, data.upper);
  unpack(log, packed, lower, data.lower, data);
  unpack(log, packed, upper, data.upper, data);
  const double weight =
      lower == upper ? 1.0 : (in_month - times[lower]) / (times[upper] - times[lower]);
  dated_series::mix<double>(weight, data.lower.values, data.upper.values, fsun);
}

}  // namespace tsrf_module_shade
