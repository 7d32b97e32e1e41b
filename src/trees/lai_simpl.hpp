// read_lai_simpl: simple trees, one layer of leaves over a patch of land.
//
// The LAD_simple file gives leaf area density and height by plan cell; every patch of land in such
// a cell is marked and gets its tree. Called once at the start of a run with simple trees.
#pragma once

#include <cstdint>

#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/grid_index.hpp"
#include "inputs/patch.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_module_data {

/// Sets data.treemk and data.treeax (density, height, leaf temperature 300 K). `mx`, `my` are the
/// grid's cells. A cell outside the model's area, a cell given twice and a negative value are data
/// errors.
void read_lai_simpl(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                    const tsrf_module_grdindx::Data& grid_index, std::int32_t mx, std::int32_t my,
                    Data& data);

}  // namespace tsrf_module_data
