// tsrf_module_wtrtmp: prescribed temperatures of water patches through time (WaterTemp file).
//
// A dated series of blocks, one line a water patch. The first block is read at the start and says
// which patches are water; with LWTRTMP set the series is queried once a step and the first of its
// temperatures is given to the nodes of each patch.
#pragma once

#include <cstdint>
#include <vector>

#include "frame/code_index.hpp"
#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "frame/text_input.hpp"
#include "inputs/calendar.hpp"
#include "inputs/dated_series.hpp"
#include "inputs/patch.hpp"

namespace tsrf_module_wtrtmp {

/// Group TSRF_WTRTMP beyond the members of every series.
struct Settings {
  std::int32_t NITEM = 1;    ///< temperatures a line
  std::int32_t LWTRTMP = 0;  ///< > 0: the series drives the water patches
};

struct Data {
  Settings settings;
  dated_series::Series series;
  std::vector<std::int32_t> PID;     ///< water patches in the order of the first block
  std::vector<std::int32_t> patch;   ///< their positions in the list of patches
  frame::CodeIndex by_pid;           ///< PID -> position in the block
  frame::PatchTable<double> values;  ///< per stored block: a row of NITEM temperatures a patch [C]
  std::vector<double> now;           ///< NITEM temperatures a patch [C], set by the query
  std::vector<double> line;          ///< scratch: the temperatures of a line
  std::vector<std::int32_t> counts;  ///< scratch: how often a block names a patch
};

/// Reads group TSRF_WTRTMP.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// Reads the first block. Every PID of it must be a patch of type water, and every water patch
/// must be in it; a file without lines is no fault.
void read_wtrtmp(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                 Data& data);
/// The check pass, run by the first query.
void check_data(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                Data& data);
/// Brings data.now to `time` [s]; nothing when the file has no lines.
void set_wtrtmp(frame::Log& log, frame::TextInput& file, double time,
                const tsrf_module_patch::Data& patch, tsrf_module_calendar::Data& calendar,
                Data& data);
/// Gives the first of the current temperatures [K] to all nodes (rows of `tlyr`) of its patch.
void tsrf_set_wtrtmp(const Data& data, std::int32_t nodes, frame::PatchTable<double>& tlyr);

}  // namespace tsrf_module_wtrtmp
