#include "run/input_files.hpp"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>

#include "fault.hpp"
#include "inputs/calendar.hpp"

namespace townskin_view {

namespace {

namespace fs = std::filesystem;

/// The lines of a reader's failure as one: what is wrong, without the routines on the way up.
std::string in_one_line(const std::string& said) {
  std::istringstream lines(said);
  std::string text, line;
  std::string place;
  while (std::getline(lines, line)) {
    if (line.starts_with("%%% file")) place = line.substr(4);
    const bool begins = line.starts_with("### ");
    if (begins) text.clear();
    if ((text.empty() && !begins) || line.starts_with("(")) continue;
    text += (text.empty() ? "" : "; ") + (begins ? line.substr(4) : line);
  }
  if (!place.empty()) text += " (" + place + ")";
  return text.empty() ? "it cannot be read" : text;
}

const frame::FileRow& row_of(int unit, std::size_t& place) {
  for (place = 0; place < frame::kFiles; ++place) {
    if (frame::kFileTable[place].unit == unit) return frame::kFileTable[place];
  }
  throw Fault("no such unit");
}

/// The row of the registry that a dated run names a file by; 0 for a file of the run directory.
std::int32_t registry_row(int unit) {
  using namespace ubx_module_filnam;
  switch (unit) {
    case frame::kUnitSun:
      return kSun;
    case frame::kUnitSurfProp:
      return kSurfProp;
    case frame::kUnitLadSimple:
      return kLadSimple;
    case frame::kUnitWaterTemp:
      return kWaterTemp;
    case frame::kUnitBuilding:
      return kBuilding;
    case frame::kUnitRmHeat:
      return kRmHeat;
    case frame::kUnitStHeat:
      return kStHeat;
    case frame::kUnitSurfTemp:
      return kSurfTemp;
    case frame::kUnitPatchSurfTemp:
      return kPatchSurfTemp;
    case frame::kUnitBldLoad:
      return kBldLoad;
    case frame::kUnitHeat:
      return kHeat;
    default:
      return 0;
  }
}

/// A file that is opened to see whether it is plain, so that nothing waits for a pipe.
bool is_file(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

}  // namespace

std::string QuietLog::fault_of(const std::function<void()>& work) {
  said_.str({});
  try {
    work();
  } catch (const frame::Failure&) {
    return in_one_line(said_.str());
  } catch (const frame::Stop&) {
    return in_one_line(said_.str());
  }
  return {};
}

std::string RunFiles::path_of(const std::string& name) const {
  return (fs::path(directory) / name).string();
}

std::string RunFiles::path(int unit, std::int32_t month) const {
  std::size_t place = 0;
  row_of(unit, place);
  if (names[place].empty()) return {};
  const std::int32_t row = registry_row(unit);
  if (!filnam.dated || row == 0) return path_of(names[place]);
  return path_of(
      ubx_module_filnam::make_month_name(filnam, row, month == 0 ? filnam.MONTHS[0] : month));
}

std::string RunFiles::sun_path(std::int32_t month, std::int32_t day) const {
  if (!filnam.dated) return path(frame::kUnitSun);
  return path_of(ubx_module_filnam::make_day_name(filnam, ubx_module_filnam::kSun, month, day));
}

std::vector<std::int32_t> RunFiles::months() const {
  if (!filnam.dated) return {0};
  std::vector<std::int32_t> months;
  for (std::int32_t month = filnam.MONTHS[0]; month <= filnam.MONTHS[1]; ++month) {
    months.push_back(month);
  }
  return months;
}

std::unique_ptr<frame::TextInput> RunFiles::open(int unit, std::int32_t month) const {
  const std::string name = path(unit, month);
  if (!is_file(name)) return std::make_unique<frame::TextInput>(name, std::string{});
  auto file = std::make_unique<frame::TextInput>(name);
  if (!file->good()) return std::make_unique<frame::TextInput>(name, std::string{});
  return file;
}

std::vector<std::string> RunFiles::inputs() const {
  std::vector<std::string> paths{path_of("file_name")};
  const auto take = [&](const std::string& path) {
    if (is_file(path) && paths.back() != path) paths.push_back(path);
  };
  for (const frame::FileRow& row : frame::kFileTable) {
    if (row.form != frame::Form::input && row.form != frame::Form::input_if_any) continue;
    for (const std::int32_t month : registry_row(row.unit) == 0 ? std::vector{0} : months()) {
      if (row.unit != frame::kUnitSun || !filnam.dated) {
        take(path(row.unit, month));
        continue;
      }
      for (std::int32_t day = 1; day <= tsrf_module_calendar::days_in(month); ++day) {
        take(sun_path(month, day));
      }
    }
  }
  return paths;
}

RunFiles read_file_name(const std::string& directory, QuietLog& quiet) {
  RunFiles files;
  files.directory = directory;
  std::error_code error;
  if (!fs::is_directory(directory, error)) throw Fault(directory + " is no directory");
  const std::string path = files.path_of("file_name");
  if (!is_file(path)) throw Fault(directory + " is no run: it has no file_name");
  frame::TextInput table(path);
  if (!table.good()) throw Fault("cannot read " + path + ": " + table.reason());
  for (std::string& name : files.names) {
    std::string_view line;
    if (!table.next_line(line)) throw Fault(path + " has fewer than 26 lines");
    name = line.substr(0, line.find_last_not_of(" \t\r") + 1);
    if (name.find('\0') != std::string::npos) throw Fault(path + " is no text");
  }
  using namespace ubx_module_filnam;
  const auto control = files.open(frame::kUnitControl);
  for (std::size_t n = 0; n < frame::kFiles; ++n) {
    const std::int32_t row = registry_row(frame::kFileTable[n].unit);
    if (row > 0) set_file(files.filnam, row, frame::kFileTable[n].unit, files.names[n]);
  }
  const std::string fault =
      quiet.fault_of([&] { inputdata(quiet.log, table, *control, files.filnam); });
  if (!fault.empty()) throw Fault(path + ": " + fault);
  return files;
}

std::string hash_of(const std::vector<std::string>& paths) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  std::vector<char> piece(1 << 20);
  for (const std::string& path : paths) {
    std::ifstream file(path, std::ios::binary);
    while (file) {
      file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
      for (const char c : std::span(piece).first(static_cast<std::size_t>(file.gcount()))) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
      }
    }
  }
  std::array<char, 17> text{};
  std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash));
  return text.data();
}

}  // namespace townskin_view
