#include "flow/input/files.hpp"

#include <utility>
#include <vector>

#include "frame/file_names.hpp"

namespace flow {

namespace {

constexpr const char* kTable = "flow_file_name";
constexpr std::size_t kNameColumns = 260;
constexpr std::array<std::string_view, kFiles> kLabels{
    "control data (in)        :", "Grid data (in)           :", "boundary data (in)       :",
    "domain data (in)         :", "restart data (in/out)    :", "history data (out)       :",
    "initial data (in)        :", "Porous data (in)         :", "SurfTemp data (in)       :",
    "BldLoad data (in)        :", "LAD data (in)            :"};
constexpr std::array<FileRow, 3> kRequired{kControl, kGrid, kBoundary};
/// Files that are opened as soon as their names are known.
constexpr std::array<std::pair<FileRow, int>, 4> kAtOnce{{{kControl, frame::kUnitControl},
                                                          {kGrid, frame::kUnitGrid},
                                                          {kBoundary, frame::kUnitBoundary},
                                                          {kDomain, frame::kUnitDomain}}};

FileNames read_names(frame::TextInput& file) {
  FileNames names;
  std::string_view line;
  for (std::string& name : names) {
    if (!file.next_line(line)) break;
    line = line.substr(0, kNameColumns);
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    name = line;
  }
  return names;
}

void check_names(frame::Log& log, const frame::UnitTable& units, const FileNames& names) {
  std::vector<frame::NamedFile> files;
  for (std::size_t row = 0; row < kFiles; ++row) {
    if (names[row].empty()) continue;
    files.push_back({title_of(static_cast<FileRow>(row)), names[row], units.path_of(names[row]),
                     row == kRestart || row == kHistory});
  }
  frame::check_outputs(log, units, kTable, files);
}

}  // namespace

std::string title_of(FileRow row) { return frame::title_of(kLabels[row]); }

FileNames read_file_names(frame::Log& log, frame::UnitTable& units) {
  const frame::Tag tag(log, "(read_file_table)");
  FileNames names = read_names(units.open_input(log, frame::kUnitFileName, kTable));
  units.close(frame::kUnitFileName);
  for (std::size_t row = 0; row < kFiles; ++row) log.line(kLabels[row], names[row]);
  for (const FileRow row : kRequired) {
    frame::attempt(log, [&] { need_name(log, names, row, true, "for every run"); });
  }
  for (const auto& file : kAtOnce) {
    const std::string& name = names[file.first];
    if (name.empty()) continue;
    frame::attempt(log, [&] { units.open_input(log, file.second, name); });
  }
  frame::attempt(log, [&] { check_names(log, units, names); });
  return names;
}

void need_name(frame::Log& log, const FileNames& names, FileRow row, bool needed,
               std::string_view why) {
  if (!needed || !names[row].empty()) return;
  log.data_error(frame::items("no name of", title_of(row), "in", kTable),
                 frame::items("it must be given", why));
}

}  // namespace flow
