// The command line of townskin_view.
#pragma once

#include <optional>
#include <string>

namespace townskin_view {

struct Options {
  std::string run;                    ///< the run directory
  std::string page;                   ///< name of the page; empty: RUN.html beside the run
  std::string netcdf, vtk, csv, why;  ///< empty: not wanted
  bool wants_page = false;            ///< nothing else was asked for, or it was named
  bool force = false;
  std::string to_print;  ///< --help, --version, --quantities: this, and nothing else
  std::string command;   ///< as it was called
};

/// Flags as they are used; what is wrong with them is a Fault.
[[nodiscard]] Options read_options(int argc, const char* const* argv, const std::string& version);

}  // namespace townskin_view
