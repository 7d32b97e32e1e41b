// All files of a run, read as the program would read them, by a log that collects faults.
//
// Nothing is run and nothing is written. Called by the check; the doubts (doubts.hpp) look at what
// has been read.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "driver/file_table.hpp"
#include "driver/run.hpp"
#include "frame/findings.hpp"
#include "radiation/shade.hpp"

namespace check {

/// The Sun data of a month of a dated run.
struct SunMonth {
  std::int32_t month;
  std::vector<double> times;  ///< of its blocks, from the month's start [s]
  std::vector<bool> lit;      ///< some patch has sun, by block
};

/// What of a run could be read well enough for a look across files.
struct Parts {
  bool settings = false;  ///< the control data are there
  bool patches = false;
  bool whole_list = false;  ///< no patch was lost or has a fault
  bool materials = false;
  bool exchange = false;  ///< groups and view factors
  bool weather = false;
  bool rooms = false;  ///< buildings and their schedules
  bool canopy = false;
  bool sun = false;                                 ///< `blocks`
  std::vector<tsrf_module_shade::LitBlock> blocks;  ///< of the Sun data of a repeating day
  std::vector<SunMonth> months;                     ///< of a dated run
  std::map<int, std::string> names;  ///< by unit number: the file as its readers know it
  frame::FileNames files;            ///< as file_name has them
};

/// Reads the files of `run`, whose log collects.
Parts read_run(tsrf_main01::Run& run);

}  // namespace check
