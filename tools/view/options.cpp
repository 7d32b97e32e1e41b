#include "options.hpp"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "fault.hpp"
#include "registry/quantity.hpp"

namespace townskin_view {

namespace {

/// "my_run.html" in the present folder, for "path/my_run/" as for "my_run".
std::string page_of(const std::string& run) {
  std::error_code error;
  const std::filesystem::path full = std::filesystem::weakly_canonical(run, error);
  std::string name = full.filename().string();
  if (name.empty()) name = full.parent_path().filename().string();
  return (name.empty() ? "run" : name) + ".html";
}

}  // namespace

Options read_options(int argc, const char* const* argv, const std::string& version) {
  Options options;
  bool show_version = false, show_quantities = false;
  CLI::App app{"Results of a townskin run for the eyes and for other programs.", "townskin_view"};
  app.add_option("run", options.run, "run directory")->type_name("RUN");
  app.add_option("-o,--page", options.page, "page to write [RUN.html]")->type_name("FILE");
  app.add_option("--netcdf", options.netcdf, "NetCDF file to write")->type_name("FILE");
  app.add_option("--vtk", options.vtk, "folder for ParaView's files")->type_name("FOLDER");
  app.add_option("--csv", options.csv, "folder for tables")->type_name("FOLDER");
  app.add_option("--why", options.why, "why a patch is so hot then")->type_name("PID@HOUR");
  app.add_flag("--force", options.force, "replace files that are not of townskin_view");
  app.add_flag("--quantities", show_quantities, "print the table of quantities");
  app.add_flag("--version", show_version, "print version, commit and compiler");
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    options.to_print = app.help();
    return options;
  } catch (const CLI::ParseError& fault) {
    throw Fault(std::string(fault.what()) + " (--help tells the flags)");
  }
  if (show_version) options.to_print = version + "\n";
  if (show_quantities) options.to_print = quantities_table();
  if (!options.to_print.empty()) return options;
  if (options.run.empty()) throw Fault("a run directory is wanted (--help tells the flags)");
  const bool others = !options.netcdf.empty() || !options.vtk.empty() || !options.csv.empty() ||
                      !options.why.empty();
  options.wants_page = !options.page.empty() || !others;
  if (options.page.empty()) options.page = page_of(options.run);
  for (int n = 0; n < argc; ++n) options.command += (n == 0 ? "" : " ") + std::string(argv[n]);
  return options;
}

}  // namespace townskin_view
