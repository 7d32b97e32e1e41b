#include "flow/input/record.hpp"

#include <algorithm>

namespace flow {

namespace {

bool take_item(frame::RecordScanner& scan, const Item& item) {
  if (auto* const* number = std::get_if<std::int32_t*>(&item)) return scan.field(**number);
  if (auto* const* number = std::get_if<double*>(&item)) return scan.field(**number);
  if (const auto* ints = std::get_if<std::span<std::int32_t>>(&item)) return scan.field(*ints);
  return scan.field(std::get<std::span<double>>(item));
}

void append_value(std::string& line, const auto& value) {
  if (!line.empty() && line.back() != ' ') line += ' ';
  frame::append_item(line, value);
}

void append_values(std::string& line, const Item& item) {
  if (auto* const* number = std::get_if<std::int32_t*>(&item)) {
    append_value(line, **number);
  } else if (auto* const* real = std::get_if<double*>(&item)) {
    append_value(line, **real);
  } else if (const auto* ints = std::get_if<std::span<std::int32_t>>(&item)) {
    for (const std::int32_t value : *ints) append_value(line, value);
  } else {
    for (const double value : std::get<std::span<double>>(item)) append_value(line, value);
  }
}

}  // namespace

bool RecordReader::take(const Record& record) {
  if (!read(record.items)) return false;
  tell(record.echo);
  check(record.rules);
  return true;
}

bool RecordReader::read(std::span<const Item> items) {
  if (!take_items(items)) return false;
  if (!runs_on()) return true;
  const std::size_t behind = file_.tell();
  mark_record();
  log_.line("%%% warning : a record runs on to the next line : file", file_.name() + ",", "line",
            file_.fault_line());
  file_.seek(behind);
  return true;
}

void RecordReader::tell(std::span<const Echo> echo) {
  for (const Echo& line : echo) {
    const bool wanted = !line.when || line.when();
    if (!wanted && line.otherwise.empty()) continue;
    std::string text(wanted ? line.label : line.otherwise);
    if (wanted) {
      for (const Item& item : line.values) append_values(text, item);
    }
    log_.line(text);
  }
}

void RecordReader::check(std::span<const Rule> rules) {
  for (const Rule& rule : rules) {
    attempt([&] {
      if (!rule.holds()) fail(rule.words);
    });
  }
}

bool RecordReader::read_list(std::span<double> values) {
  const Item item = values;
  return take_items({&item, 1});
}

bool RecordReader::read_if_there(std::span<const Item> items) {
  go_to_record();
  const std::string_view rest = file_.content().substr(place_);
  if (rest.empty() || rest.front() == '&') return false;
  if (take_items(items) && runs_on()) {
    mark_record();
    fail_read();
  }
  return true;
}

void RecordReader::fail_read() { log_.read_error(file_, "### read error : " + title_); }

bool RecordReader::take_items(std::span<const Item> items) {
  go_to_record();
  const frame::ReadStatus status = file_.read_with([&](frame::RecordScanner& scan) {
    return std::ranges::all_of(items, [&](const Item& item) { return take_item(scan, item); });
  });
  if (status == frame::ReadStatus::ok) return true;
  log_.lost_record(file_, "### read error : " + title_);
  return false;
}

/// Passes over blank lines, so that `place_` is in the line where the record begins.
void RecordReader::go_to_record() {
  const std::string_view text = file_.content();
  place_ = std::min(text.find_first_not_of(" \t\r\n", file_.tell()), text.size());
}

/// True when the last record took more than one line.
bool RecordReader::runs_on() const {
  const std::size_t behind = file_.tell();
  return file_.content().substr(place_, behind - place_).find('\n') + 1 < behind - place_;
}

void RecordReader::mark_record() {
  file_.seek(place_);
  file_.mark_fault();
}

}  // namespace flow
