#include "driver/step_results.hpp"

#include "driver/month_files.hpp"
#include "results/heat.hpp"

namespace tsrf_main01 {

namespace {

using namespace tsrf_module_io;

BuildingColumns building_columns(const Buildings& buildings) {
  return {.BldID = buildings.bldng.BldID,
          .floor = buildings.bldng.floor,
          .area = buildings.bldng.area,
          .bldat = buildings.bldng.bldat,
          .Tr = buildings.bldng.Tr,
          .Tm = buildings.bldng.Tm};
}

/// The sums over cells that both kinds of run need.
void sum_cells(const Inputs& inputs, const Surface& surface, const Buildings& buildings,
               Results& results) {
  sum_surftemp(inputs.patch, inputs.srfprp, surface.data, results.surf_temp);
  if (buildings.on()) {
    sum_bldload(buildings.bldng.sensible, buildings.bldng.latent, results.bld_load);
  }
}

void gather(Desk& desk, const Surface& surface, const Buildings& buildings, Results& results,
            std::int32_t sod1) {
  Monthly& monthly = results.monthly;
  add_fluxes(desk.log, sod1, surface.data.qsurf.row(4), surface.data.qsurf.row(5), monthly);
  add_cells(desk.log, sod1, results.surf_temp.tdrg, monthly);
  if (buildings.on()) {
    add_buildings(desk.log, sod1, building_columns(buildings), results.bld_load.released, monthly);
  }
}

void write_hour(Run& run, const When& when) {
  const Settings& settings = run.results.io.settings;
  write_patchsurftemp(run.desk.log, run.desk.crew, run.desk.units.output(frame::kUnitPatchSurfTemp),
                      settings, when, run.inputs.patch,
                      {.temperature = run.surface.data.tlyr.row(0),
                       .JRl = run.radiation.raddat.JRl,
                       .JRs = run.radiation.raddat.JRs,
                       .latent = run.surface.data.qsurf.row(4),
                       .conductive = run.surface.data.qsurf.row(5),
                       .area = run.inputs.patch.area},
                      run.results.patch_surf_temp);
  SurfTemp& cells = run.results.surf_temp;
  write_surftemp(run.desk.log, run.desk.crew, run.desk.units.output(frame::kUnitSurfTemp), settings,
                 when, cells.tdrg, cells.swlr, cells);
  if (!run.buildings.on()) return;
  write_heat(run.desk.log, run.desk.units.output(frame::kUnitHeat), settings, when,
             building_columns(run.buildings), run.results.heat);
  write_bldload(run.desk.log, run.desk.units.output(frame::kUnitBldLoad),
                run.desk.units.input(frame::kUnitStHeat), settings, when,
                run.results.bld_load.released, run.results.bld_load);
}

}  // namespace

void gather_temperatures(Run& run, std::int32_t sod1) {
  if (!run.inputs.filnam.dated) return;
  add_temperatures(run.desk.log, sod1, run.surface.data.tlyr.row(0), run.radiation.raddat.JRl,
                   run.radiation.raddat.JRs, run.results.monthly);
}

void write_results(Run& run, std::int64_t iter, std::int32_t sod1) {
  if (run.inputs.filnam.dated) {
    sum_cells(run.inputs, run.surface, run.buildings, run.results);
    gather(run.desk, run.surface, run.buildings, run.results, sod1);
  } else if (is_whole_hour(sod1)) {
    sum_cells(run.inputs, run.surface, run.buildings, run.results);
    write_hour(run, {sod1, iter});
  }
}

void write_closed_month(Run& run, std::int64_t iter, double time, bool run_ends) {
  if (!run.inputs.filnam.dated) return;
  const BuildingColumns columns = building_columns(run.buildings);
  output_month(run.desk.log, run.desk.crew, run.desk.units, run.inputs.filnam, run.inputs.calendar,
               time, run_ends,
               {.settings = run.results.io.settings,
                .patch = run.inputs.patch,
                .buildings = run.buildings.on() ? &columns : nullptr,
                .surf_temp = run.results.surf_temp,
                .bld_load = run.results.bld_load,
                .iter = iter},
               run.results.monthly);
}

}  // namespace tsrf_main01
