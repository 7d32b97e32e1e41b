#include "driver/step_results.hpp"

#include "driver/month_files.hpp"
#include "results/heat.hpp"

namespace tsrf_main01 {

namespace {

using namespace tsrf_module_io;

bool has_buildings(const Run& run) { return run.bldng.settings.LCBLD > 0; }

BuildingColumns building_columns(const Run& run) {
  return {.BldID = run.bldng.BldID,
          .floor = run.bldng.floor,
          .area = run.bldng.area,
          .bldat = run.bldng.bldat,
          .Tr = run.bldng.Tr,
          .Tm = run.bldng.Tm};
}

/// The sums over cells that both kinds of run need.
void sum_cells(Run& run) {
  sum_surftemp(run.patch, run.srfprp, run.data, run.results.surf_temp);
  if (has_buildings(run)) {
    sum_bldload(run.bldng.sensible, run.bldng.latent, run.results.bld_load);
  }
}

void gather(Run& run, std::int32_t sod1) {
  Monthly& monthly = run.results.monthly;
  add_fluxes(run.log, sod1, run.data.qsurf.row(4), run.data.qsurf.row(5), monthly);
  add_cells(run.log, sod1, run.results.surf_temp.tdrg, monthly);
  if (has_buildings(run)) {
    add_buildings(run.log, sod1, building_columns(run), run.results.bld_load.released, monthly);
  }
}

void write_hour(Run& run, const When& when) {
  const Settings& settings = run.io.settings;
  write_patchsurftemp(run.log, run.units.output(frame::kUnitPatchSurfTemp), settings, when,
                      run.patch,
                      {.temperature = run.data.tlyr.row(0),
                       .JRl = run.raddat.JRl,
                       .JRs = run.raddat.JRs,
                       .latent = run.data.qsurf.row(4),
                       .conductive = run.data.qsurf.row(5),
                       .area = run.patch.area},
                      run.results.patch_surf_temp);
  SurfTemp& cells = run.results.surf_temp;
  write_surftemp(run.log, run.units.output(frame::kUnitSurfTemp), settings, when, cells.tdrg,
                 cells.swlr, cells);
  if (!has_buildings(run)) return;
  write_heat(run.log, run.units.output(frame::kUnitHeat), settings, when, building_columns(run),
             run.results.heat);
  write_bldload(run.log, run.units.output(frame::kUnitBldLoad), run.units.input(frame::kUnitStHeat),
                settings, when, run.results.bld_load.released, run.results.bld_load);
}

}  // namespace

void gather_temperatures(Run& run, std::int32_t sod1) {
  if (!run.filnam.dated) return;
  add_temperatures(run.log, sod1, run.data.tlyr.row(0), run.raddat.JRl, run.raddat.JRs,
                   run.results.monthly);
}

void write_results(Run& run, std::int64_t iter, std::int32_t sod1) {
  if (run.filnam.dated) {
    sum_cells(run);
    gather(run, sod1);
  } else if (is_whole_hour(sod1)) {
    sum_cells(run);
    write_hour(run, {sod1, iter});
  }
}

void write_closed_month(Run& run, std::int64_t iter, double time, bool run_ends) {
  if (!run.filnam.dated) return;
  const BuildingColumns columns = building_columns(run);
  output_month(run.log, run.units, run.filnam, run.calendar, time, run_ends,
               {.settings = run.io.settings,
                .patch = run.patch,
                .buildings = has_buildings(run) ? &columns : nullptr,
                .surf_temp = run.results.surf_temp,
                .bld_load = run.results.bld_load,
                .iter = iter},
               run.results.monthly);
}

}  // namespace tsrf_main01
