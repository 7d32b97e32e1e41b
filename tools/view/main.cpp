// townskin_view: results of a run for the eyes and for other programs. Status 0: done; 2: a fault,
// told on standard error, and nothing is written.
#include <exception>
#include <filesystem>
#include <iostream>

#include "csv/write_csv.hpp"
#include "fault.hpp"
#include "flow/flow_run.hpp"
#include "options.hpp"
#include "run/run_model.hpp"
#include "stage.hpp"
#include "townskin_version.hpp"
#include "vtk/write_vtk.hpp"
#include "why/why.hpp"
#ifdef TOWNSKIN_VIEW_NETCDF
#include "netcdf/write_netcdf.hpp"
#endif
#ifdef TOWNSKIN_VIEW_PAGE
#include "page/write_page.hpp"
#endif

namespace {

using namespace townskin_view;
constexpr int kFault = 2;

/// Parts that this program may be built without.
void check_parts(const Options& options) {
#ifndef TOWNSKIN_VIEW_NETCDF
  if (!options.netcdf.empty()) throw Fault("built without NetCDF (libnetcdf was not found)");
#endif
#ifndef TOWNSKIN_VIEW_PAGE
  if (options.wants_page)
    throw Fault("built without the page (node or its packages were not found)");
#endif
  static_cast<void>(options);
}

Wanted wanted_of(const Options& options) {
  Wanted wanted;
  wanted.partners = options.wants_page;
  wanted.cells = !options.netcdf.empty() || !options.csv.empty();
  if (!options.why.empty()) wanted.all_partners_of = read_question(options.why).PID;
  return wanted;
}

/// All files in a run's directory: what is not of this program is never replaced there.
std::vector<std::string> files_in(const std::string& run) {
  std::vector<std::string> files;
  std::error_code error;
  using Walk = std::filesystem::recursive_directory_iterator;
  for (Walk at(run, error), end; !error && at != end; at.increment(error)) {
    if (at->is_regular_file(error)) files.push_back(at->path().string());
  }
  return files;
}

void write_surfaces(const Options& options, Stage& stage) {
  const RunModel run = read_run(options.run, wanted_of(options));
  std::string answer;
  if (!options.why.empty()) answer = in_words(run, explain(run, read_question(options.why)));
#ifdef TOWNSKIN_VIEW_NETCDF
  if (!options.netcdf.empty()) {
    write_netcdf(run,
                 {std::string(townskin_version::kVersion), std::string(townskin_version::kCommit),
                  options.command},
                 stage.file(options.netcdf, kMark, is_own_netcdf(options.netcdf)));
  }
#endif
  if (!options.vtk.empty()) write_vtk_patches(run, options.vtk, stage);
  if (!options.csv.empty()) write_csv(run, options.csv, stage);
#ifdef TOWNSKIN_VIEW_PAGE
  if (options.wants_page) write_page(run, stage.file(options.page));
#endif
  std::cout << answer;
  for (const std::string& note : run.notes) std::cerr << "note: " << note << '\n';
}

/// Writes the flow of a directory; what is to be told of it. Beside a run of surfaces a flow that
/// cannot be read, or has no fields yet, is left out.
std::string write_flow(const Options& options, bool beside_surfaces, Stage& stage) {
  FlowRun run;
  try {
    run = read_flow_run(options.run);
  } catch (const Fault& fault) {
    if (!beside_surfaces) throw;
    return fault.what();
  }
  const FlowSets sets = write_vtk_flow(run, options.vtk, stage);
  if (sets.count > 0) return sets.note.empty() && !run.notes.empty() ? run.notes[0] : sets.note;
  std::string none = "there are no fields of the flow: " +
                     (sets.note.empty() ? "its restart file is not there or empty" : sets.note);
  if (!beside_surfaces) throw Fault(options.run + ": " + none);
  return none;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = read_options(argc, argv, townskin_version::line("townskin_view"));
    if (!options.to_print.empty()) {
      std::cout << options.to_print;
      return 0;
    }
    check_parts(options);
    std::error_code error;
    const bool surfaces =
        std::filesystem::exists(std::filesystem::path(options.run) / "file_name", error);
    const bool flow = is_flow_run(options.run);
    if (!surfaces && !flow) static_cast<void>(read_run(options.run, {}));  // tells what it is not
    Stage stage(options.force, files_in(options.run));
    const bool only_vtk = !options.vtk.empty() && !options.wants_page && options.netcdf.empty() &&
                          options.csv.empty() && options.why.empty();
    if (flow && !surfaces && !only_vtk) {
      throw Fault(options.run + " is a run of the flow alone: --vtk is all that it gives");
    }
    std::string flow_note;
    if (flow && !options.vtk.empty()) flow_note = write_flow(options, surfaces, stage);
    if (surfaces || !flow) write_surfaces(options, stage);
    stage.commit();
    if (!flow_note.empty()) std::cerr << "note: " << flow_note << '\n';
    return 0;
  } catch (const std::bad_alloc&) {
    std::cerr << "### memory is not to be had\n";
  } catch (const std::exception& fault) {
    std::cerr << "### " << fault.what() << '\n';
  }
  return kFault;
}
