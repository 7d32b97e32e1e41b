// tsrf_module_treedat: the kinds of trees and how dense their leaves are.
//
// The tree data give the leaf area density of each TreeID that the LAD file names. They stand in
// the LAD_simple file when the run has a canopy of cells, and are read anew for each month of a
// dated run: densities may change with the season, the list of kinds may not.
#pragma once

#include <cstdint>
#include <vector>

#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "trees/jmk_data.hpp"

namespace tsrf_module_treedat {

struct Data {
  std::vector<std::int32_t> TreeID;
  std::vector<double> lad;  ///< leaf area density of the kind [m2/m3]
};

/// Reads the tree data; on a second call the kinds must be those of the first.
void read_treedat(frame::Log& log, frame::TextInput& file, Data& data);
/// Gives each leaf cell the row of its kind.
void set_meshid(frame::Log& log, const Data& data, jmk_module_data::Data& cells);

}  // namespace tsrf_module_treedat
