#include "frame/unit_table.hpp"

#include <sys/stat.h>
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

void UnitTable::check_plain(Log& log, const std::string& name) const {
  struct stat info {};
  if (::stat(path_of(name).c_str(), &info) != 0) return;
  const bool plain = S_ISREG(info.st_mode) || S_ISDIR(info.st_mode) || path_of(name) == "/dev/null";
  if (!plain) cannot_open(log, name, "it is no plain file");
}

void UnitTable::check_output(Log& log, const std::string& name) const {
  const std::string path = path_of(name);
  struct stat info {};
  if (::stat(path.c_str(), &info) == 0) {
    if (S_ISDIR(info.st_mode)) cannot_open(log, name, std::strerror(EISDIR));
    if (::access(path.c_str(), W_OK) != 0) cannot_open(log, name, std::strerror(errno));
    return;
  }
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  if (::access(folder.c_str(), W_OK | X_OK) != 0) cannot_open(log, name, std::strerror(errno));
}

void UnitTable::put_empty(int unit, const std::string& name) {
  close(unit);
  at(unit).input = std::make_unique<TextInput>(path_of(name), std::string());
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
