#include "check/flow_reading.hpp"

#include <algorithm>
#include <filesystem>
#include <memory>

#include "check/whole.hpp"
#include "flow/start_up.hpp"
#include "flow/urban/mkofrac.hpp"

namespace check {

namespace {

/// Whether a finding's words speak of a file of the list.
bool is_of(const frame::Finding& finding, const std::string& name, const std::string& title) {
  const std::string& words = finding.lines.size() > 1 ? finding.lines[1] : finding.lines.front();
  return words.starts_with(title + " =") ||
         words.find("no name of " + title) != std::string::npos ||
         (!name.empty() && words.find("cannot open " + name + " ") != std::string::npos);
}

/// Gives findings about names from number `first` on the lines of the list where these stand.
void place_names(const frame::UnitTable& units, const flow::FileNames& names, std::size_t first,
                 frame::Findings& findings) {
  for (std::size_t n = first; n < findings.all().size(); ++n) {
    frame::Finding& finding = findings.all()[n];
    for (std::size_t row = 0; row < names.size() && finding.file.empty(); ++row) {
      if (!is_of(finding, names[row], flow::title_of(static_cast<flow::FileRow>(row)))) continue;
      finding.file = units.path_of("flow_file_name");
      finding.line = static_cast<std::int64_t>(row) + 1;
    }
  }
}

/// Leaves out the results of a surface run that is still to come.
void leave_out_results(const frame::UnitTable& units, const frame::FileNames& surface,
                       flow::FileNames& names) {
  for (const flow::FileRow row : {flow::kSurfTemp, flow::kBldLoad}) {
    const bool there = std::filesystem::exists(units.path_of(names[row]));
    if (!there && std::ranges::find(surface, names[row]) != surface.end()) names[row].clear();
  }
}

void read_records(flow::Desk& desk, flow::Run& run) {
  frame::Log& log = desk.log;
  flow::Settings& settings = run.settings;
  const bool read = whole(log, [&] { flow::read_settings(desk, settings); });
  frame::attempt(log, [&] {
    run.urban.TIME0 = flow::kcp_inputdata(log, desk.units.input(frame::kUnitControl));
  });
  if (!read || !whole(log, [&] { flow::settle_settings(log, settings); })) return;
  frame::attempt(log, [&] {
    if (!flow::wanted_files(log, desk.names, settings).initial) return;
    desk.units.check_input(log, desk.names[flow::kInitial]);
  });
  const bool there =
      desk.units.has_input(frame::kUnitGrid) && desk.units.has_input(frame::kUnitBoundary) &&
      (desk.names[flow::kDomain].empty() || desk.units.has_input(frame::kUnitDomain));
  if (!there || !whole(log, [&] { flow::read_boundary(desk, run); })) return;
  frame::attempt(log, [&] { flow::list_and_check_faces(desk, run); });
}

}  // namespace

void read_flow(frame::Log& log, frame::UnitTable& units, const frame::FileNames& surface) {
  const std::size_t first = log.findings().all().size();
  flow::FileNames names;
  frame::attempt(log, [&] { names = flow::read_file_names(log, units); });
  leave_out_results(units, surface, names);
  frame::GridSize size;
  const bool sized = units.has_input(frame::kUnitControl) && whole(log, [&] {
                       size = frame::read_grid_size(log, units.input(frame::kUnitControl));
                     });
  if (sized) {
    const frame::ProcessLayer layer;
    flow::Desk desk{log, units, layer, names, size};
    read_records(desk, *std::make_unique<flow::Run>());
  }
  place_names(units, names, first, log.findings());
}

}  // namespace check
