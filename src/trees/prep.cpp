#include "trees/prep.hpp"

#include <cstddef>
#include <vector>

namespace jmk {

namespace {

void pass_densities(frame::Log& log, Trees& trees) {
  frame::allocating(log, "leaf area densities", frame::bytes_of<double>(trees.cells.cells.size()),
                    [&] {
                      std::vector<double> lad;
                      for (const jmk_module_data::LeafCell& cell : trees.cells.cells) {
                        lad.push_back(trees.treedat.lad[static_cast<std::size_t>(cell.row)]);
                      }
                      set_lad(lad, trees.radiat, trees.canopy);
                    });
}

}  // namespace

void jmk2_prep_init(frame::Log& log, frame::TextInput& control, frame::TextInput& lad_file,
                    frame::TextInput& treedat_file, const tsrf_main01::Grid& grid,
                    const tsrf_module_grdindx::Data& grid_index,
                    const tsrf_module_patch::Data& patch, Trees& trees) {
  const frame::Tag tag(log, "(jmk2_prep_init)");
  jmk_module_data::inputdata(log, control, trees.cells);
  if (!trees.cells.CALJMK) return;
  jmk_module_radiat::inputdata(log, control, trees.radiat);
  jmk_module_htrans::inputdata(log, control, trees.htrans);
  read_lad(log, lad_file, tsrf_main01::sizes_of(grid), grid_index, trees.canopy.settings.NDIV,
           trees.cells);
  read_treedat(log, treedat_file, trees.treedat);
  set_meshid(log, trees.treedat, trees.cells);
  set_grid(log, grid, trees.cells, patch, trees.canopy);
  const frame::Tag constructor(log, "(jmk_module_data)(cnstrctr)");
  frame::allocating(log, "leaves and faces of the canopy",
                    frame::bytes_of<double>(trees.canopy.cells.at.size(), 15), [&] {
                      place_patches(patch, trees.canopy);
                      allocdata(patch.type.size(), trees.canopy);
                    });
  warn_of_bare_faces(log, trees.canopy);
  pass_densities(log, trees);
}

void read_month(frame::Log& log, frame::TextInput& treedat_file, Trees& trees) {
  read_treedat(log, treedat_file, trees.treedat);
  pass_densities(log, trees);
}

}  // namespace jmk
