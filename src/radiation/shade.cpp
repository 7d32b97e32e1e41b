#include "radiation/shade.hpp"

#include <algorithm>
#include <utility>

#include "radiation/shade_lines.hpp"

namespace tsrf_module_shade {

namespace {

using dated_series::IntDate;
using frame::ReadStatus;

/// Reads a block into its row.
ReadStatus read_block(frame::Log& log, frame::Crew& crew, frame::TextInput& file,
                      const tsrf_module_patch::Data& patch, IntDate& date, Data& data,
                      std::span<float> row) {
  const std::span<std::int32_t> on_record = dated_series::on_record(data.series.settings, date);
  if (take_plain_block(crew, file, patch, on_record, row)) return ReadStatus::ok;
  const std::int32_t block = ++data.blocks_read;
  Line line;
  return dated_series::read_block(log, file, kWords, patch.mpatch, [&](std::int32_t n) {
    const std::size_t place = file.tell();
    const ReadStatus status = read_line(file, on_record, line);
    if (status != ReadStatus::ok) return status;
    enter(log, file, place, patch, line, static_cast<std::size_t>(n), block, kWords.query,
          std::span(data.seen), row);
    return status;
  });
}

}  // namespace

void set_shade(frame::Log& log, frame::Crew& crew, frame::TextInput* file, double time,
               const tsrf_module_patch::Data& patch, tsrf_module_calendar::Data& calendar,
               Data& data, std::span<double> fsun) {
  const frame::Tag tag(log, "(tsrf_module_shade)(set_shade)");
  if (data.dated_run) {
    set_shade_mltday(log, crew, time, patch, calendar, data, fsun);
  } else {
    set_shade_oneday(log, crew, *file, time, patch, calendar, data, fsun);
  }
}

void check_data(frame::Log& log, frame::Crew& crew, frame::TextInput& file,
                const tsrf_module_patch::Data& patch, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_shade)(check_data)");
  Line line;
  const auto read = [&](std::int64_t, std::span<std::int32_t> date) {
    return read_line(file, date, line);
  };
  const dated_series::Settings& settings = data.series.settings;
  const auto check = [&](dated_series::Counter& at, IntDate& date) {
    const std::span<float> no_row;
    if (take_plain_block(crew, file, patch, dated_series::on_record(settings, date), no_row)) {
      return ReadStatus::ok;
    }
    return dated_series::check_block(log, file, kWords, settings, patch.mpatch, at, date, read,
                                     [](std::int64_t) {});
  };
  dated_series::check_pass(log, file, kWords, kColumns, check, data.series);
}

std::vector<LitBlock> survey(frame::Log& log, frame::Crew& crew, frame::TextInput& file,
                             const tsrf_module_patch::Data& patch, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_shade)(check_data)");
  const dated_series::Settings& settings = data.series.settings;
  const auto mpatch = static_cast<std::size_t>(patch.mpatch);
  std::vector<LitBlock> blocks;
  std::vector<float> row(mpatch);
  data.seen.assign(mpatch, 0);
  Line line;
  std::size_t place = 0;
  const auto read = [&](std::int64_t, std::span<std::int32_t> date) {
    place = file.tell();
    return read_line(file, date, line);
  };
  const auto check = [&](dated_series::Counter& at, IntDate& date) {
    const std::int32_t block = ++data.blocks_read;
    const std::size_t first = file.tell();
    ReadStatus status = ReadStatus::ok;
    if (!take_plain_block(crew, file, patch, dated_series::on_record(settings, date),
                          std::span(row))) {
      const auto take = [&](std::int64_t number) {
        enter(log, file, place, patch, line, static_cast<std::size_t>(number - at.line), block,
              kWords.query, std::span(data.seen), std::span(row));
      };
      status = dated_series::check_block(log, file, kWords, settings, patch.mpatch, at, date, read,
                                         take);
    }
    const bool lit = std::ranges::any_of(row, [](float fraction) { return fraction > 0.0F; });
    if (status == ReadStatus::ok) blocks.push_back({date, lit, first});
    return status;
  };
  dated_series::check_pass(log, file, kWords, kColumns, check, data.series);
  return blocks;
}

void set_shade_oneday(frame::Log& log, frame::Crew& crew, frame::TextInput& file, double time,
                      const tsrf_module_patch::Data& patch, tsrf_module_calendar::Data& calendar,
                      Data& data, std::span<double> fsun) {
  const frame::Tag tag(log, "(tsrf_module_shade)(set_shade_oneday)");
  if (patch.mpatch == 0) return;
  const auto check = [&] { check_data(log, crew, file, patch, data); };
  const auto prepare = [&](std::int32_t slots) {
    data.fractions = frame::PatchTable<float>(patch.mpatch, slots);
    data.seen.assign(static_cast<std::size_t>(patch.mpatch), 0);
  };
  const auto read = [&](std::int32_t slot, IntDate& date) {
    return read_block(log, crew, file, patch, date, data, data.fractions.row(slot));
  };
  const dated_series::Source source{kWords, check, prepare, read,
                                    frame::bytes_of<float>(static_cast<std::size_t>(patch.mpatch))};
  const dated_series::Bracket at =
      dated_series::find(log, file, time, calendar, source, data.series);
  const auto& fractions = std::as_const(data.fractions);
  dated_series::mix(at.weight, fractions.row(at.lower), fractions.row(at.upper), fsun);
}

void list_arrays(const Data& data, frame::ArrayList& list) {
  list.add("sunlit fractions", data.fractions, data.seen, data.lower.values, data.upper.values,
           data.block);
  for (const PackedMonth& month : data.months) {
    list.add("packed sunlit fractions", month.times, month.words);
  }
}

}  // namespace tsrf_module_shade
