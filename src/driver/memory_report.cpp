#include "driver/memory_report.hpp"

namespace tsrf_main01 {

namespace {

void list_inputs(const Inputs& inputs, frame::ArrayList& list) {
  tsrf_module_patch::list_arrays(inputs.patch, list);
  tsrf_module_lyrstrct::list_arrays(inputs.lyrstrct, list);
  list.add("porous cells", inputs.porous.cells);
  list.add("weather", inputs.weather.values);
  list.add("water temperatures", inputs.wtrtmp.PID, inputs.wtrtmp.patch, inputs.wtrtmp.values,
           inputs.wtrtmp.now);
}

void list_surface(const Surface& surface, frame::ArrayList& list) {
  tsrf_module_data::list_arrays(surface.data, list);
  solid1d::list_arrays(surface.columns, list);
  list.add("qlayer", surface.qlayer);
  list.add("fixed temperatures", surface.fixtmp.far_boundary, surface.fixtmp.panels,
           surface.fixtmp.tfix);
  list.add("glass", surface.glass.patches, surface.glass.passes);
}

void list_radiation(const Radiation& radiation, frame::ArrayList& list) {
  const Incident& step = radiation.incident;
  tsrf_module_raddat::list_arrays(radiation.raddat, list);
  tsrf_module_shade::list_arrays(radiation.shade, list);
  list.add("fsun,skyvf,Rl,Rs,Jdir", step.fsun, step.skyvf, step.Rl, step.Rs, step.Jdir);
  rad_admin::list_arrays(radiation.work, list);
}

void list_results(const Results& results, frame::ArrayList& list) {
  tsrf_module_io::list_arrays(results.surf_temp, list);
  tsrf_module_io::list_arrays(results.bld_load, list);
  tsrf_module_io::list_arrays(results.monthly, list);
}

}  // namespace

void report_memory(const Run& run) {
  frame::ArrayList list;
  list_inputs(run.inputs, list);
  list_surface(run.surface, list);
  list_radiation(run.radiation, list);
  list.add("cells with leaves", run.trees.cells.cells);
  tsrf_module_jumoku::list_arrays(run.trees.canopy, list);
  tsrf_module_bldng::list_arrays(run.buildings.bldng, list);
  tsrf_building::list_arrays(run.buildings.rooms, list);
  list_results(run.results, list);
  tsrf_module_account::list_arrays(run.account, list);
  frame::report_memory(run.desk.log, list);
}

}  // namespace tsrf_main01
