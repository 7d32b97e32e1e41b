// jmk2_prep_init: brings the canopy of cells up, and renews its leaves with the months.
#pragma once

#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/grid.hpp"
#include "inputs/grid_index.hpp"
#include "inputs/patch.hpp"
#include "trees/canopy.hpp"
#include "trees/htrans.hpp"
#include "trees/jmk_data.hpp"
#include "trees/radiat.hpp"
#include "trees/treedat.hpp"

namespace jmk {

/// All of the tree model. `canopy.settings` is read with the settings of the surfaces.
struct Trees {
  jmk_module_data::Data cells;
  jmk_module_htrans::Data htrans;
  jmk_module_radiat::Data radiat;
  tsrf_module_treedat::Data treedat;
  tsrf_module_jumoku::Data canopy;
};

/// Reads the settings and data of the canopy and takes its arrays, once at the start; nothing
/// happens when CALJMK is not set. The tree data stand in the LAD_simple file.
void jmk2_prep_init(frame::Log& log, frame::TextInput& control, frame::TextInput& lad_file,
                    frame::TextInput& treedat_file, const tsrf_main01::Grid& grid,
                    const tsrf_module_grdindx::Data& grid_index,
                    const tsrf_module_patch::Data& patch, Trees& trees);

/// Reads another month's tree data and passes the densities on to the canopy.
void read_month(frame::Log& log, frame::TextInput& treedat_file, Trees& trees);

}  // namespace jmk
