#include "check/check.hpp"

#include <cmath>
#include <filesystem>
#include <memory>
#include <new>
#include <ostream>
#include <sstream>

#include "check/consequences.hpp"
#include "check/doubts.hpp"
#include "check/flow_reading.hpp"
#include "check/places.hpp"
#include "check/report.hpp"
#include "frame/floating_point.hpp"

namespace check {

namespace {

/// The surface run, whose files `file_name` lists; returns the names that the list tells.
frame::FileNames check_surface(frame::Log& log, frame::UnitTable& units) {
  frame::Findings& findings = log.findings();
  frame::ProcessLayer layer;
  frame::Crew crew(frame::hands_wanted(log));
  const auto run = std::make_unique<tsrf_main01::Run>(
      tsrf_main01::Desk{log, units, layer, crew, frame::Accounts{}});
  const Parts parts = read_run(*run);
  for (const auto doubt : {doubt_exchange, doubt_sweeps, doubt_sun, doubt_buildings,
                           doubt_materials, doubt_settings, doubt_memory}) {
    frame::attempt(log, [&] { doubt(parts, *run); });
  }
  drop_consequences(parts, findings);
  find_places(parts, *run, findings);
  return parts.files;
}

/// The runs that a directory is for: both programs have a list of files, mostly one is there.
void check_files(frame::Log& log, const std::string& directory) {
  frame::UnitTable units(directory);
  const bool flow = std::filesystem::exists(units.path_of("flow_file_name"));
  frame::FileNames files;
  if (!flow || std::filesystem::exists(units.path_of("file_name"))) {
    files = check_surface(log, units);
  }
  frame::UnitTable flow_units(directory);
  if (flow) read_flow(log, flow_units, files);
}

void tell_end(const frame::Findings& findings, std::ostream& out) {
  const auto faults = std::ranges::count_if(findings.all(), &frame::Finding::fault);
  const auto doubts = static_cast<std::ptrdiff_t>(findings.all().size()) - faults;
  out << faults << (faults == 1 ? " fault, " : " faults, ") << doubts
      << (doubts == 1 ? " doubt" : " doubts");
  if (findings.memory > 0) {
    out << "; the run will take some " << std::ceil(static_cast<double>(findings.memory) / 1e6)
        << " MB";
  }
  out << '\n';
}

}  // namespace

int check_run(const std::string& directory, bool json, std::ostream& out) {
  const frame::FlushDenormals mode;
  std::ostringstream nowhere;
  frame::Findings findings;
  frame::Log log(nowhere, nowhere);
  log.collect(findings);
  try {
    check_files(log, directory);
  } catch (const std::bad_alloc&) {
    findings.add({.lines = {"### error : allocation failed"}});
  } catch (const frame::Stop&) {
    findings.add({.lines = {"### error : the files cannot be read any further"}});
  }
  put_in_order(findings);
  if (json) {
    print_json(findings, out);
  } else {
    print_text(findings, out);
    tell_end(findings, out);
  }
  return status_of(findings);
}

}  // namespace check
