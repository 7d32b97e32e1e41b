#include "frame/unit_table.hpp"

namespace frame {

namespace {

[[noreturn]] void cannot_open(Log& log, const std::string& name, const std::string& reason) {
  log.error_and_log("### cannot open " + name + " : " + reason);
  throw Stop{kStatusOpenError};
}

}  // namespace

UnitTable::UnitTable() = default;
UnitTable::~UnitTable() = default;

TextInput& UnitTable::open_input(Log& log, int unit, const std::string& name) {
  close(unit);
  auto file = std::make_unique<TextInput>(name);
  if (!file->good()) cannot_open(log, name, file->reason());
  at(unit).input = std::move(file);
  return input(unit);
}

TextOutput& UnitTable::open_output(Log& log, int unit, const std::string& name) {
  close(unit);
  auto file = std::make_unique<TextOutput>(name);
  if (!file->good()) cannot_open(log, name, file->reason());
  at(unit).output = std::move(file);
  return output(unit);
}

RecordFile& UnitTable::open_records(Log& log, int unit, const std::string& name) {
  close(unit);
  auto file = std::make_unique<RecordFile>(name);
  if (!file->check_access()) cannot_open(log, name, file->reason());
  at(unit).records = std::move(file);
  return records(unit);
}

void UnitTable::close(int unit) { at(unit) = Slot{}; }

void UnitTable::flush_outputs(Log& log) {
  for (Slot& slot : slots_) {
    if (slot.output) slot.output->flush(log);
  }
}

}  // namespace frame
