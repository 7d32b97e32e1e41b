#include "run/inputs.hpp"

#include <algorithm>
#include <cmath>

#include "buildings/bldng.hpp"
#include "driver/run.hpp"
#include "frame/whole_run.hpp"
#include "inputs/grid.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/matprp.hpp"
#include "radiation/phydat.hpp"
#include "surface/surface_state.hpp"
#include "trees/jmk_data.hpp"
#include "trees/jumoku_settings.hpp"
#include "trees/treedat.hpp"

namespace townskin_view {

namespace {

constexpr double kRadian = 0.017453292519943295;

/// What is read on the way and not kept.
struct Settings {
  tsrf_module_data::Settings surface;
  tsrf_module_bldng::Data bldng;
  tsrf_module_jumoku::Settings jumoku;
  tsrf_module_phydat::Data site;
  jmk_module_data::Data leaves;
};

void read_control(const RunFiles& files, QuietLog& quiet, RunModel& run, CoreInputs& core,
                  Settings& settings) {
  const auto control = files.open(frame::kUnitControl);
  const std::string fault = quiet.fault_of([&] {
    const frame::GridSize size = frame::read_grid_size(quiet.log, *control);
    run.grid.cells = {size.mx, size.my, size.mz};
    double unused = 0.0;
    std::int32_t first = 0, last = 0;
    std::string_view line;
    if (control->read(first, last) != frame::ReadStatus::ok || !control->next_line(line) ||
        control->read(unused, run.step) != frame::ReadStatus::ok) {
      quiet.log.read_error(*control, "### read error : control data");
    }
    tsrf_module_grdindx::inputdata(quiet.log, *control, 1, 1, core.grid_index);
    tsrf_module_data::Data surface;
    tsrf_module_data::inputdata(quiet.log, *control, surface);
    settings.surface = surface.settings;
    tsrf_module_bldng::read_nmlst_bldng(quiet.log, *control, settings.bldng);
    tsrf_module_jumoku::inputdata(quiet.log, *control, settings.jumoku);
    if (!settings.surface.LTRSMPL) {
      jmk_module_data::inputdata(quiet.log, *control, settings.leaves);
    }
  });
  if (!fault.empty()) throw Fault(files.path(frame::kUnitControl) + ": " + fault);
  run.convection = settings.surface.HTRNS;
  run.has_leaves = settings.leaves.CALJMK;
  run.grid.offset = {core.grid_index.ox, core.grid_index.oy};
  run.grid.leaf_division = settings.jumoku.NDIV;
}

void read_site(const RunFiles& files, QuietLog& quiet, RunModel& run, Settings& settings) {
  const auto control = files.open(frame::kUnitControl);
  const std::string fault =
      quiet.fault_of([&] { tsrf_module_phydat::inputdata(quiet.log, *control, settings.site); });
  if (!fault.empty()) return note(run, "The place of the run is not known", fault);
  run.latitude = settings.site.LAT;
  run.longitude = settings.site.LNG;
  // RANGLE turns azimuths to the west of noon one way and those to its east the other, so it tells
  // of no turn of the plan; y is north in any case.
}

void read_lines_of_grid(const RunFiles& files, QuietLog& quiet, RunModel& run) {
  const auto file = files.open(frame::kUnitGrid);
  const std::string fault = quiet.fault_of([&] {
    const tsrf_main01::Grid grid = tsrf_main01::read_grid(quiet.log, *file, run.grid.cells);
    const auto* axes = std::get_if<tsrf_main01::Axes>(&grid);
    if (axes == nullptr) return;
    for (std::size_t a = 0; a < 3; ++a) {
      for (std::int32_t n = 1; n <= run.grid.cells[a] + 1; ++n) {
        run.grid.nodes[a].push_back((*axes)[a].x(n));
      }
    }
  });
  if (!fault.empty()) {
    run.grid.nodes = {};
    note(run, "The lines of the grid are not known", fault);
  } else if (run.grid.nodes[0].empty()) {
    note(run, "The Grid file has no coordinates, so cells are drawn as cubes of 1 m", "");
  }
}

Kind kind_of(const tsrf_module_patch::Data& patch, std::size_t p, std::int32_t position) {
  using namespace tsrf_module_patch;
  const Type type = patch.type[p];
  if (type == kBuilding) {
    if (position == 3) return Kind::window;
    if (position == 1) return Kind::roof;
    if (position == 2) return Kind::wall;
    return patch.nz[p] > 0.5 ? Kind::roof : Kind::wall;
  }
  if (type == kTree) return Kind::leaves;
  if (type == kLand) return Kind::ground;
  if (type == kWater) return Kind::water;
  if (type == kSolarPanel) return Kind::solar_panel;
  if (type == kMirror) return Kind::mirror;
  return type == kFarBoundary ? Kind::far_boundary : Kind::other;
}

void read_patches(const RunFiles& files, QuietLog& quiet, RunModel& run, CoreInputs& core) {
  const auto patches = files.open(frame::kUnitPatch);
  const auto trees = files.open(frame::kUnitTreePatch);
  const std::string fault = quiet.fault_of([&] {
    tsrf_module_patch::read_patch(quiet.log, *patches, *trees, run.grid.cells[0], run.grid.cells[1],
                                  run.grid.cells[2], core.grid_index, run.grid.leaf_division,
                                  core.patch);
  });
  if (!fault.empty()) throw Fault(files.path(frame::kUnitPatch) + ": " + fault);
  const tsrf_module_patch::Data& from = core.patch;
  Patches& to = run.patches;
  const std::size_t n = from.PID.size();
  to.PID = from.PID;
  to.BldID = from.BldID;
  to.SurfID = from.SurfID;
  to.area = from.area;
  to.material.assign(n, -1);
  to.building.assign(n, -1);
  to.surface_row.assign(n, 0);
  to.balanced.assign(n, 0);
  to.group.resize(n);
  for (std::size_t p = 0; p < n; ++p) {
    to.cell.push_back({from.i[p], from.j[p], from.k[p]});
    to.normal.push_back({from.nx[p], from.ny[p], from.nz[p]});
    to.kind.push_back(kind_of(from, p, 0));
    to.group[p] = static_cast<std::int32_t>(p);
  }
}

void take_buildings(const tsrf_module_bldng::Data& bldng, RunModel& run) {
  for (std::size_t b = 0; b < bldng.BldID.size(); ++b) {
    run.buildings.push_back({.BldID = bldng.BldID[b],
                             .use = bldng.BldCD[b],
                             .construction = bldng.Strct[b],
                             .floors = bldng.floor[b],
                             .floor_area = bldng.area[b],
                             .conditioned = bldng.acflr[b],
                             .cop = bldng.cop[b]});
  }
}

/// Buildings without rooms: those that the patches name.
void name_buildings(RunModel& run) {
  std::vector<std::int32_t> ids;
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    const Kind kind = run.patches.kind[p];
    if (kind == Kind::roof || kind == Kind::wall || kind == Kind::window) {
      ids.push_back(run.patches.BldID[p]);
    }
  }
  std::ranges::sort(ids);
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  for (const std::int32_t id : ids) run.buildings.push_back({.BldID = id});
}

void place_buildings(RunModel& run) {
  std::vector<std::int32_t> ids;
  for (const Building& building : run.buildings) ids.push_back(building.BldID);
  const frame::CodeIndex index(ids);
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    const Kind kind = run.patches.kind[p];
    if (kind == Kind::roof || kind == Kind::wall || kind == Kind::window) {
      run.patches.building[p] = index.find(run.patches.BldID[p]);
    }
  }
}

void read_rooms(const RunFiles& files, QuietLog& quiet, RunModel& run, const CoreInputs& core,
                tsrf_module_bldng::Data& bldng) {
  if (bldng.settings.LCBLD > 0) {
    const auto file = files.open(frame::kUnitBuilding);
    const std::string fault =
        quiet.fault_of([&] { tsrf_module_bldng::read_bldng(quiet.log, *file, core.patch, bldng); });
    if (fault.empty()) {
      take_buildings(bldng, run);
    } else {
      note(run, "Of buildings only their numbers are known", fault);
    }
  }
  if (run.buildings.empty()) name_buildings(run);
  place_buildings(run);
}

Material material_of(const tsrf_module_matprp::Material& from,
                     const tsrf_module_srfprp::Data& srfprp) {
  Material to;
  to.surfid = from.surfid;
  for (std::size_t n = 0; n < from.thick.size(); ++n) {
    Layer layer{.SurfCD = from.SurfCD[n], .thickness = from.thick[n]};
    const std::int32_t row = srfprp.by_code.find(from.SurfCD[n]);
    if (row >= 0) {
      const auto r = static_cast<std::size_t>(row);
      layer.conductivity = srfprp.conductivity[r];
      layer.heat_capacity = srfprp.heat_capacity[r];
      if (n == 0) {
        to.albedo = srfprp.alb[r];
        to.emissivity = srfprp.ems[r];
        to.wetness = srfprp.beta[r];
      }
    }
    to.layers.push_back(layer);
  }
  return to;
}

/// Which row of the properties a patch has, as the columns of the model settle it: the first row
/// where nothing is computed behind the surface.
void place_materials(const tsrf_module_matprp::Data& matprp, const CoreInputs& core,
                     const tsrf_module_bldng::Data& bldng, RunModel& run) {
  const bool rooms = bldng.settings.LCBLD > 0;
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    using namespace tsrf_module_patch;
    const Type type = core.patch.type[p];
    if (type == kTree) run.patches.surface_row[p] = core.srfprp.n;
    if (type == kMirror) run.patches.surface_row[p] = core.srfprp.n + 1;
    if (type != kBuilding && type != kLand) continue;
    const std::int32_t m = matprp.by_surfid.find(core.patch.SurfID[p]);
    if (m < 0) continue;
    const tsrf_module_matprp::Material& material = matprp.materials[static_cast<std::size_t>(m)];
    run.patches.material[p] = m;
    run.patches.kind[p] = kind_of(core.patch, p, material.pos);
    const std::int32_t row = core.srfprp.by_code.find(material.SurfCD.front());
    const bool computed = type == kLand || (rooms && run.patches.building[p] >= 0);
    if (!computed || row < 0) continue;
    run.patches.balanced[p] = 1;
    run.patches.surface_row[p] = row;
  }
}

void read_properties(const RunFiles& files, QuietLog& quiet, RunModel& run, CoreInputs& core) {
  for (const std::int32_t month : files.months()) {
    const auto file = files.open(frame::kUnitSurfProp, month);
    const std::string fault =
        quiet.fault_of([&] { tsrf_module_srfprp::read_srfprp(quiet.log, *file, core.srfprp); });
    if (!fault.empty()) {
      note(run, "Properties of surfaces are not known", fault);
      continue;
    }
    run.properties.push_back({month, core.srfprp.alb, core.srfprp.ems, core.srfprp.beta});
  }
}

void read_materials(const RunFiles& files, QuietLog& quiet, RunModel& run, const CoreInputs& core,
                    const tsrf_module_bldng::Data& bldng) {
  tsrf_module_matprp::Data matprp;
  const auto file = files.open(frame::kUnitMatEleProp);
  const std::string fault =
      quiet.fault_of([&] { tsrf_module_matprp::read_matprp(quiet.log, *file, matprp); });
  if (!fault.empty()) {
    return note(
        run,
        "Walls, roofs and windows are told apart by their slope alone, and layers are not known",
        fault);
  }
  // The months were read one after the other; materials tell of the first.
  tsrf_module_srfprp::Data first = core.srfprp;
  if (!run.properties.empty()) {
    first.alb = run.properties.front().albedo;
    first.ems = run.properties.front().emissivity;
    first.beta = run.properties.front().wetness;
  }
  for (const tsrf_module_matprp::Material& material : matprp.materials) {
    run.materials.push_back(material_of(material, first));
  }
  place_materials(matprp, core, bldng, run);
}

void read_leaves(const RunFiles& files, QuietLog& quiet, RunModel& run, const CoreInputs& core,
                 jmk_module_data::Data& leaves) {
  if (!run.has_leaves) return;
  tsrf_module_treedat::Data trees;
  const auto lad = files.open(frame::kUnitLad);
  const auto kinds = files.open(frame::kUnitLadSimple);
  const std::string fault = quiet.fault_of([&] {
    jmk_module_data::read_lad(quiet.log, *lad, run.grid.cells, core.grid_index,
                              run.grid.leaf_division, leaves);
    tsrf_module_treedat::read_treedat(quiet.log, *kinds, trees);
    tsrf_module_treedat::set_meshid(quiet.log, trees, leaves);
  });
  if (!fault.empty()) return note(run, "Leaves are not known", fault);
  Field density{
      .quantity = &quantity("leaf_area_density"), .size = leaves.cells.size(), .hours = 1};
  for (const jmk_module_data::LeafCell& cell : leaves.cells) {
    run.leaf_cells.push_back({cell.i, cell.j, cell.k});
    density.exact.push_back(trees.lad[static_cast<std::size_t>(cell.row)]);
  }
  run.fields.push_back(std::move(density));
}

}  // namespace

void note(RunModel& run, const std::string& what, const std::string& fault) {
  run.notes.push_back(fault.empty() ? what + "." : what + ": " + fault + ".");
}

CoreInputs read_inputs(const RunFiles& files, QuietLog& quiet, RunModel& run) {
  CoreInputs core;
  Settings settings;
  run.dated = files.filnam.dated;
  if (run.dated) run.year = files.filnam.DATE0[0];
  read_control(files, quiet, run, core, settings);
  read_site(files, quiet, run, settings);
  read_lines_of_grid(files, quiet, run);
  read_patches(files, quiet, run, core);
  read_rooms(files, quiet, run, core, settings.bldng);
  read_properties(files, quiet, run, core);
  read_materials(files, quiet, run, core, settings.bldng);
  read_leaves(files, quiet, run, core, settings.leaves);
  return core;
}

}  // namespace townskin_view
