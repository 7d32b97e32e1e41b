#include "frame/unit_table.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace frame {

namespace {

[[noreturn]] void cannot_open(Log& log, const std::string& name, const std::string& reason) {
  log.error_and_log("### cannot open " + name + " : " + reason);
  throw Stop{kStatusOpenError};
}

}  // namespace

UnitTable::UnitTable(std::string directory) : directory_(std::move(directory)) {}
UnitTable::~UnitTable() = default;

TextInput& UnitTable::open_input(Log& log, int unit, const std::string& name) {
  close(unit);
  auto file = std::make_unique<TextInput>(path_of(name));
  if (!file->good()) cannot_open(log, name, file->reason());
  at(unit).input = std::move(file);
  return input(unit);
}

void UnitTable::check_input(Log& log, const std::string& name) const {
  if (::access(path_of(name).c_str(), R_OK) != 0) cannot_open(log, name, std::strerror(errno));
}

TextInput& UnitTable::open_input_if_any(Log& log, int unit, const std::string& name) {
  if (::access(path_of(name).c_str(), F_OK) == 0) return open_input(log, unit, name);
  close(unit);
  at(unit).input = std::make_unique<TextInput>(name, std::string());
  return input(unit);
}

TextOutput& UnitTable::open_output(Log& log, int unit, const std::string& name) {
  close(unit);
  auto file = std::make_unique<TextOutput>(path_of(name));
  if (!file->good()) cannot_open(log, name, file->reason());
  at(unit).output = std::move(file);
  return output(unit);
}

RecordFile& UnitTable::open_records(Log& log, int unit, const std::string& name) {
  close(unit);
  auto file = std::make_unique<RecordFile>(path_of(name));
  if (!file->check_access()) cannot_open(log, name, file->reason());
  at(unit).records = std::move(file);
  return records(unit);
}

std::string UnitTable::path_of(const std::string& name) const {
  if (directory_ == "." || (!name.empty() && name.front() == '/')) return name;
  return directory_ + "/" + name;
}

void UnitTable::close(int unit) {
  if (has_output(unit)) {
    Written file = written_to(unit, output(unit));
    std::erase_if(closed_, [&](const Written& w) { return w.unit == unit && w.name == file.name; });
    closed_.push_back(std::move(file));
  }
  at(unit) = Slot{};
}

UnitTable::Written UnitTable::written_to(int unit, const TextOutput& file) {
  return {unit, file.name(), file.rows(), file.holds_earlier()};
}

std::vector<UnitTable::Written> UnitTable::written() const {
  std::vector<Written> files = closed_;
  for (int unit = 0; unit <= kUnits; ++unit) {
    if (has_output(unit)) files.push_back(written_to(unit, *at(unit).output));
  }
  return files;
}

void UnitTable::flush_outputs(Log& log) {
  for (Slot& slot : slots_) {
    if (slot.output) slot.output->flush(log);
  }
}

}  // namespace frame
