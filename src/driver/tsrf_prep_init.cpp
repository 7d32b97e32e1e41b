// tsrf_prep_init: brings up every module. The order is a requirement: later steps use what earlier
// ones read, and it settles which of several faults a user sees first.
#include "buildings/wall_structure.hpp"
#include "driver/tsrf_main01.hpp"
#include "inputs/lyrstrct.hpp"
#include "results/restart.hpp"
#include "surface/columns.hpp"
#include "surface/conduction.hpp"
#include "trees/lai_simpl.hpp"

namespace tsrf_main01 {

namespace {

/// All namelist groups; each reader rewinds the control data, so groups stand in any order.
void read_settings(Run& run) {
  frame::Log& log = run.log;
  frame::TextInput& control = run.units.input(frame::kUnitControl);
  constexpr std::int32_t kFirstCell = 1;
  tsrf_module_grdindx::inputdata(log, control, kFirstCell, kFirstCell, run.grdindx);
  tsrf_module_data::inputdata(log, control, run.data);
  tsrf_module_phydat::inputdata(log, control, run.phydat);
  tsrf_module_bldng::read_nmlst_bldng(log, control, run.bldng);
  tsrf_module_raddat::inputdata(log, control, run.raddat);
  tsrf_module_shade::inputdata(log, control, run.filnam.dated, run.shade);
  tsrf_module_weather::inputdata(log, control, run.weather);
  tsrf_module_rmheat::inputdata(log, control, run.rmheat);
  tsrf_module_fixtmp::inputdata(log, control, run.fixtmp);
  tsrf_module_wtrtmp::inputdata(log, control, run.wtrtmp);
  tsrf_module_jumoku::inputdata(log, control, run.trees.canopy.settings);
  tsrf_module_io::inputdata(log, control, run.io);
}

/// Patches, their properties and materials, and the ground columns.
void read_surfaces(Run& run) {
  frame::Log& log = run.log;
  frame::UnitTable& units = run.units;
  tsrf_module_patch::read_patch(
      log, units.input(frame::kUnitPatch), units.input(frame::kUnitTreePatch), run.size.mx,
      run.size.my, run.size.mz, run.grdindx, run.trees.canopy.settings.NDIV, run.patch);
  tsrf_module_srfprp::read_srfprp(log, units.input(frame::kUnitSurfProp), run.srfprp);
  tsrf_module_matprp::read_matprp(log, units.input(frame::kUnitMatEleProp), run.matprp);
  const tsrf_module_data::Settings& settings = run.data.settings;
  tsrf_module_lyrstrct::lyrstrct_set_land(log, settings.DZG, settings.ZLG, run.data.settings_place,
                                          run.patch, run.matprp, run.lyrstrct);
  run.data.mpatch = run.patch.mpatch;
  tsrf_module_data::allocdata01(log, run.data);
}

/// Buildings, their room heat and air-conditioning schedules, and the wall columns.
void read_buildings(Run& run) {
  frame::Log& log = run.log;
  frame::TextInput& schedule = run.units.input(frame::kUnitRmHeat);
  tsrf_module_bldng::read_bldng(log, run.units.input(frame::kUnitBuilding), run.patch, run.bldng);
  tsrf_module_rmheat::read_rmheat(log, schedule, run.rmheat);
  tsrf_module_aircon::read_aircon(log, schedule, run.rmheat, run.aircon);
  tsrf_module_lyrstrct::lyrstrct_set_bldng(log, run.data.settings.DZW, run.patch, run.matprp,
                                           run.bldng, run.lyrstrct);
  tsrf_module_bldng::check_bldcd(log, "RmHeat", run.bldng, run.rmheat);
  tsrf_module_bldng::set_hin(run.patch, run.bldng, run.data.hin);
  tsrf_module_bldcmm::bldcmm_set_list(log, run.layer, run.bldng, run.bldcmm);
  tsrf_building::prepare(log, run.matprp, run.lyrstrct, run.bldng, run.rooms);
  tsrf_building::warn_of_step(log, run.control.dtmax, run.bldng.settings);
}

/// Columns of cells behind the patches, their conductances and transmission.
void set_columns(Run& run) {
  run.data.mzg = tsrf_module_lyrstrct::column_size(run.lyrstrct);
  tsrf_module_data::allocdata02(run.log, run.data);
  tsrf_set_gdata(run.log, run.patch, run.srfprp, run.lyrstrct, run.data);
  set_conductances(run.data);
  report_smallest_step(run.log, run.data);
  set_transmission(run.data);
}

/// Patch groups, view factors and the correction of areas.
void read_exchange(Run& run) {
  frame::Log& log = run.log;
  frame::UnitTable& units = run.units;
  tsrf_module_raddat::read_lf2fr(log, units.input(frame::kUnitPatchIndex), run.patch, run.raddat);
  tsrf_module_raddat::read_pgidprd(log, units.input(frame::kUnitPgidPrd), run.raddat);
  tsrf_module_raddat::read_viewfactor(log, units.input(frame::kUnitFormFactor), run.patch,
                                      run.raddat, run.data.skyvf0);
  tsrf_module_raddat::allocdata01(log, run.data.mpatch, run.raddat);
  tsrf_module_raddat::tsrf_set_rdata(log, run.patch, run.raddat, run.data.skyvf0);
  // What has been parsed into tables is not needed as text any more.
  units.close(frame::kUnitFormFactor);
}

/// Water temperatures; false after a reported fault, which is kept until the next test.
bool read_water(Run& run) {
  try {
    tsrf_module_wtrtmp::read_wtrtmp(run.log, run.units.input(frame::kUnitWaterTemp), run.patch,
                                    run.wtrtmp);
    return true;
  } catch (const frame::Failure&) {
    return false;
  }
}

/// The patches of glass, in whose cells the sun is absorbed, and the store for that.
std::span<const std::int32_t> prepare_glass(Run& run) {
  if (run.bldng.settings.LCBLD <= 0) return {};
  StepArrays& step = run.step;
  tsrf_window::set_glass(run.log, run.lyrstrct, run.matprp, run.data, step.glass);
  if (step.glass.patches.empty()) return {};
  frame::allocating(
      run.log, "qlayer",
      frame::bytes_of<double>(static_cast<std::size_t>(run.data.mpatch),
                              static_cast<std::size_t>(run.data.mzg)),
      [&] { step.qlayer = frame::PatchTable<double>(run.data.mpatch, run.data.mzg); });
  return step.glass.patches;
}

/// Work arrays of a step and what the writers list once.
void prepare_step(Run& run) {
  const auto n = static_cast<std::size_t>(run.data.mpatch);
  frame::allocating(run.log, "fsun,skyvf,Rl,Rs,Jdir", frame::bytes_of<double>(n, 5), [&] {
    StepArrays& step = run.step;
    for (auto* array : {&step.fsun, &step.skyvf, &step.Rl, &step.Rs, &step.Jdir}) {
      array->assign(n, 0.0);
    }
  });
  rad_admin::allocdata(run.log, run.data.mpatch, run.srfprp, run.raddat, run.radiation);
  solid1d::set_columns(run.log, run.data, prepare_glass(run), run.step.columns);
  solid1d::warn_of_implicit(run.log, run.control.dtmax, run.patch, run.step.columns);
  tsrf_module_io::prep_surftemp(run.log, run.patch, run.grdindx, run.results.surf_temp);
}

/// The first state: from the restart file, or cold.
Start restore(Run& run) {
  const tsrf_io_restart::Start start =
      tsrf_io_restart::restore(run.log, run.units.records(frame::kUnitRestart), run.control.iters,
                               run.io.settings, restart_state(run));
  return {start.next_iteration, start.time};
}

}  // namespace

tsrf_io_restart::State restart_state(Run& run) {
  return {.mpatch = run.data.mpatch,
          .mzg = run.data.mzg,
          .tlyr = run.data.tlyr.all(),
          .JRl = run.raddat.JRl,
          .JRs = run.raddat.JRs,
          .Tr = run.bldng.Tr,
          .Tm = run.bldng.Tm,
          .PID = run.patch.PID,
          .BldID = run.bldng.BldID};
}

Start tsrf_prep_init(Run& run) {
  const frame::Tag tag(run.log, "(tsrf_prep_init)");
  read_settings(run);
  read_surfaces(run);
  if (run.bldng.settings.LCBLD > 0) read_buildings(run);
  set_columns(run);
  const tsrf_module_raddat::Settings& exchange = run.raddat.settings;
  if (exchange.LCRADL > 0 || exchange.LCRADS > 0) read_exchange(run);
  tsrf_module_fixtmp::read_fixtmp(run.log, run.patch, run.fixtmp);
  const bool water_read = read_water(run);
  if (run.data.settings.LTRSMPL) {
    tsrf_module_data::read_lai_simpl(run.log, run.units.input(frame::kUnitLadSimple), run.patch,
                                     run.grdindx, run.size.mx, run.size.my, run.data);
  }
  if (exchange.LCRADL <= 0 || exchange.LCRADS <= 0) {
    run.log.program_error(run.raddat.settings_place, "### program error -1- (tsrf_prep_init)");
  }
  if (!water_read) run.log.fail();
  prepare_step(run);
  progress::note_start(run.progress);
  return restore(run);
}

}  // namespace tsrf_main01
