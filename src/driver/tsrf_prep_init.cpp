// tsrf_prep_init: brings up every module. The order is a requirement: later steps use what earlier
// ones read, and it settles which of several faults a user sees first.
#include "buildings/wall_structure.hpp"
#include "driver/account_step.hpp"
#include "driver/start_up.hpp"
#include "inputs/lyrstrct.hpp"
#include "results/restart.hpp"
#include "surface/columns.hpp"
#include "surface/conduction.hpp"
#include "trees/lai_simpl.hpp"

namespace tsrf_main01 {

void read_settings(Run& run) {
  frame::Log& log = run.desk.log;
  frame::TextInput& control = run.desk.units.input(frame::kUnitControl);
  constexpr std::int32_t kFirstCell = 1;
  tsrf_module_grdindx::inputdata(log, control, kFirstCell, kFirstCell, run.inputs.grdindx);
  tsrf_module_data::inputdata(log, control, run.surface.data);
  tsrf_module_phydat::inputdata(log, control, run.radiation.phydat);
  tsrf_module_bldng::read_nmlst_bldng(log, control, run.buildings.bldng);
  tsrf_module_raddat::inputdata(log, control, run.radiation.raddat);
  tsrf_module_shade::inputdata(log, control, run.inputs.filnam.dated, run.radiation.shade);
  tsrf_module_weather::inputdata(log, control, run.inputs.weather);
  tsrf_module_rmheat::inputdata(log, control, run.buildings.rmheat);
  tsrf_module_fixtmp::inputdata(log, control, run.surface.fixtmp);
  tsrf_module_wtrtmp::inputdata(log, control, run.inputs.wtrtmp);
  tsrf_module_jumoku::inputdata(log, control, run.trees.canopy.settings);
  tsrf_module_io::inputdata(log, control, run.results.io);
  tsrf_module_account::inputdata(log, control, run.account);
  check_account_name(run);
}

void read_surfaces(Desk& desk, Inputs& inputs, Surface& surface, const jmk::Trees& trees) {
  frame::Log& log = desk.log;
  frame::UnitTable& units = desk.units;
  frame::attempt(log, [&] {
    tsrf_module_patch::read_patch(
        log, units.input(frame::kUnitPatch), units.input(frame::kUnitTreePatch), inputs.size.mx,
        inputs.size.my, inputs.size.mz, inputs.grdindx, trees.canopy.settings.NDIV, inputs.patch);
  });
  frame::attempt(log, [&] {
    tsrf_module_srfprp::read_srfprp(log, units.input(frame::kUnitSurfProp), inputs.srfprp);
  });
  frame::attempt(log, [&] {
    tsrf_module_matprp::read_matprp(log, units.input(frame::kUnitMatEleProp), inputs.matprp);
  });
  const tsrf_module_data::Settings& settings = surface.data.settings;
  tsrf_module_lyrstrct::lyrstrct_set_land(log, settings.DZG, settings.ZLG,
                                          surface.data.settings_place, inputs.patch, inputs.matprp,
                                          inputs.lyrstrct);
  surface.data.mpatch = inputs.patch.mpatch;
  tsrf_module_data::allocdata01(log, surface.data);
}

void read_buildings(Desk& desk, Inputs& inputs, Surface& surface, Buildings& buildings) {
  frame::Log& log = desk.log;
  frame::TextInput& schedule = desk.units.input(frame::kUnitRmHeat);
  frame::attempt(log, [&] {
    tsrf_module_bldng::read_bldng(log, desk.units.input(frame::kUnitBuilding), inputs.patch,
                                  buildings.bldng);
  });
  const bool scheduled = frame::attempt(log, [&] {
    tsrf_module_rmheat::read_rmheat(log, schedule, buildings.rmheat);
    tsrf_module_aircon::read_aircon(log, schedule, buildings.rmheat, buildings.aircon);
  });
  tsrf_module_lyrstrct::lyrstrct_set_bldng(log, surface.data.settings.DZW, inputs.patch,
                                           inputs.matprp, buildings.bldng, inputs.lyrstrct);
  if (scheduled) {
    tsrf_module_bldng::check_bldcd(log, "RmHeat", buildings.bldng, buildings.rmheat);
  }
  tsrf_module_bldng::set_hin(inputs.patch, buildings.bldng, surface.data.hin);
  tsrf_module_bldcmm::bldcmm_set_list(log, desk.layer, buildings.bldng, buildings.bldcmm);
  tsrf_building::prepare(log, inputs.matprp, inputs.lyrstrct, buildings.bldng, buildings.rooms);
  tsrf_building::warn_of_step(log, inputs.control.dtmax, buildings.bldng.settings);
}

void set_columns(Desk& desk, const Inputs& inputs, Surface& surface) {
  surface.data.mzg = tsrf_module_lyrstrct::column_size(inputs.lyrstrct);
  tsrf_module_data::allocdata02(desk.log, surface.data);
  tsrf_set_gdata(desk.log, inputs.patch, inputs.srfprp, inputs.lyrstrct, surface.data);
  set_conductances(surface.data);
  report_smallest_step(desk.log, surface.data);
  set_transmission(surface.data);
}

void read_exchange(Desk& desk, const Inputs& inputs, Surface& surface, Radiation& radiation) {
  frame::Log& log = desk.log;
  frame::UnitTable& units = desk.units;
  tsrf_module_raddat::read_lf2fr(log, units.input(frame::kUnitPatchIndex), inputs.patch,
                                 radiation.raddat);
  frame::attempt(log, [&] {
    tsrf_module_raddat::read_pgidprd(log, units.input(frame::kUnitPgidPrd), radiation.raddat);
  });
  tsrf_module_raddat::read_viewfactor(log, desk.crew, units.input(frame::kUnitFormFactor),
                                      inputs.patch, radiation.raddat, surface.data.skyvf0);
  tsrf_module_raddat::allocdata01(log, surface.data.mpatch, radiation.raddat);
  tsrf_module_raddat::tsrf_set_rdata(log, inputs.patch, radiation.raddat, surface.data.skyvf0);
  // What has been parsed into tables is not needed as text any more.
  units.close(frame::kUnitFormFactor);
}

namespace {

/// Water temperatures; false after a reported fault, which is kept until the next test.
bool read_water(Desk& desk, Inputs& inputs) {
  try {
    tsrf_module_wtrtmp::read_wtrtmp(desk.log, desk.units.input(frame::kUnitWaterTemp), inputs.patch,
                                    inputs.wtrtmp);
    return true;
  } catch (const frame::Failure&) {
    return false;
  }
}

/// The patches of glass, in whose cells the sun is absorbed, and the store for that.
std::span<const std::int32_t> prepare_glass(Desk& desk, const Inputs& inputs, Surface& surface,
                                            const Buildings& buildings) {
  if (!buildings.on()) return {};
  tsrf_window::set_glass(desk.log, inputs.lyrstrct, inputs.matprp, surface.data, surface.glass);
  if (surface.glass.patches.empty()) return {};
  frame::allocating(
      desk.log, "qlayer",
      frame::bytes_of<double>(static_cast<std::size_t>(surface.data.mpatch),
                              static_cast<std::size_t>(surface.data.mzg)),
      [&] { surface.qlayer = frame::PatchTable<double>(surface.data.mpatch, surface.data.mzg); });
  return surface.glass.patches;
}

}  // namespace

void prepare_columns(Desk& desk, const Inputs& inputs, Surface& surface,
                     const Buildings& buildings) {
  solid1d::set_columns(desk.log, surface.data, prepare_glass(desk, inputs, surface, buildings),
                       surface.columns);
  solid1d::warn_of_implicit(desk.log, inputs.control.dtmax, inputs.patch, surface.columns);
}

void read_plan_trees(Run& run) {
  if (!run.surface.data.settings.LTRSMPL) return;
  tsrf_module_data::read_lai_simpl(run.desk.log, run.desk.units.input(frame::kUnitLadSimple),
                                   run.inputs.patch, run.inputs.grdindx, run.inputs.size.mx,
                                   run.inputs.size.my, run.surface.data);
}

void check_bands(frame::Log& log, const tsrf_module_raddat::Data& raddat) {
  if (raddat.settings.LCRADL > 0 && raddat.settings.LCRADS > 0) return;
  log.program_error(raddat.settings_place, "### program error -1- (tsrf_prep_init)");
}

namespace {

/// Work arrays of a step and what the writers list once.
void prepare_step(Desk& desk, const Inputs& inputs, Surface& surface, Radiation& radiation,
                  const Buildings& buildings, Results& results) {
  const auto n = static_cast<std::size_t>(surface.data.mpatch);
  frame::allocating(desk.log, "fsun,skyvf,Rl,Rs,Jdir", frame::bytes_of<double>(n, 5), [&] {
    Incident& step = radiation.incident;
    for (auto* array : {&step.fsun, &step.skyvf, &step.Rl, &step.Rs, &step.Jdir}) {
      array->assign(n, 0.0);
    }
  });
  rad_admin::allocdata(desk.log, surface.data.mpatch, inputs.srfprp, radiation.raddat,
                       radiation.work);
  prepare_columns(desk, inputs, surface, buildings);
  tsrf_module_io::prep_surftemp(desk.log, inputs.patch, inputs.grdindx, results.surf_temp);
}

}  // namespace

Start restore(Run& run) {
  const tsrf_io_restart::Start start = tsrf_io_restart::restore(
      run.desk.log, run.desk.units.records(frame::kUnitRestart), run.inputs.control.iters,
      run.results.io.settings, restart_state(run));
  return {start.next_iteration, start.time};
}

tsrf_io_restart::State restart_state(Run& run) {
  return {.mpatch = run.surface.data.mpatch,
          .mzg = run.surface.data.mzg,
          .tlyr = run.surface.data.tlyr.all(),
          .JRl = run.radiation.raddat.JRl,
          .JRs = run.radiation.raddat.JRs,
          .Tr = run.buildings.bldng.Tr,
          .Tm = run.buildings.bldng.Tm,
          .PID = run.inputs.patch.PID,
          .BldID = run.buildings.bldng.BldID};
}

Start tsrf_prep_init(Run& run) {
  const frame::Tag tag(run.desk.log, "(tsrf_prep_init)");
  read_settings(run);
  read_surfaces(run.desk, run.inputs, run.surface, run.trees);
  if (run.buildings.on()) read_buildings(run.desk, run.inputs, run.surface, run.buildings);
  set_columns(run.desk, run.inputs, run.surface);
  const tsrf_module_raddat::Settings& exchange = run.radiation.raddat.settings;
  if (exchange.LCRADL > 0 || exchange.LCRADS > 0)
    read_exchange(run.desk, run.inputs, run.surface, run.radiation);
  tsrf_module_fixtmp::read_fixtmp(run.desk.log, run.inputs.patch, run.surface.fixtmp);
  const bool water_read = read_water(run.desk, run.inputs);
  read_plan_trees(run);
  check_bands(run.desk.log, run.radiation.raddat);
  if (!water_read) run.desk.log.fail();
  prepare_step(run.desk, run.inputs, run.surface, run.radiation, run.buildings, run.results);
  progress::note_start(run.progress);
  return restore(run);
}

}  // namespace tsrf_main01
