#include "flow/main01.hpp"

#include <unistd.h>

#include "flow/ambient.hpp"
#include "flow/companions.hpp"
#include "flow/domains/list_cmmbnd.hpp"
#include "flow/input/control.hpp"
#include "flow/input/schedule.hpp"
#include "flow/output/flow_set.hpp"
#include "flow/output/history.hpp"
#include "flow/output/monitor.hpp"
#include "flow/output/terminal_line.hpp"
#include "flow/prep_init.hpp"
#include "flow/step.hpp"
#include "flow/urban/mkofrac.hpp"
#include "flow/urban/porous.hpp"
#include "flow/urban/slits.hpp"
#include "frame/record_stream.hpp"

namespace flow {

namespace {

/// What the outputs of a run remember.
struct Outputs {
  SetFile restart;
  std::uint64_t kept = 0;  ///< bytes of the restart file that the next set stands behind
  bool closed = false;     ///< no pressure is held: a set tells the thermodynamic one
  HistoryFile history;
};

void read_settings(Desk& desk, Settings& settings) {
  const frame::GridSize& size = desk.size;
  frame::TextInput& control = desk.units.input(frame::kUnitControl);
  settings.control = flw_read_cntdat(desk.log, control, size.ns);
  settings.species = flw_read_spcies(desk.log, control, size.ns);
  settings.history = flw_read_hstpnt(desk.log, control, {size.mx, size.my, size.mz});
  settings.records = read_short_records(desk.log, control);
  h18_eachtrm_cnstrctr();
  if (settings.control.itemp) check_specific_heat(desk.log, settings.control, settings.species);
  settings.ambient = ambient_state(desk.log, settings.control, settings.species);
}

/// The files that the settings ask for.
SetFile open_files(Desk& desk, const Settings& settings, Outputs& outputs) {
  const Control& control = settings.control;
  const FileNames& names = desk.names;
  const bool sets = control.iters > 0 || !control.restart.none();
  const bool points = !settings.history.points.empty();
  need_name(desk.log, names, kRestart, sets, "with iters > 0 or a schedule of restart output");
  need_name(desk.log, names, kHistory, points, "with nhpnt > 0");
  need_name(desk.log, names, kInitial, control.iters == 0, "with iters = 0");
  if (sets) desk.units.open_records(desk.log, frame::kUnitRestart, names[kRestart]);
  if (points) desk.units.open_output(desk.log, frame::kUnitHistory, names[kHistory]);
  if (control.iters == 0) desk.units.check_input(desk.log, names[kInitial]);
  outputs.restart = {names[kRestart], desk.units.path_of(names[kRestart])};
  return {names[kInitial], desk.units.path_of(names[kInitial])};
}

void read_boundary(Desk& desk, Run& run) {
  const Triple cells{desk.size.mx, desk.size.my, desk.size.mz};
  Settings& settings = run.settings;
  frame::TextInput& file = desk.units.input(frame::kUnitBoundary);
  run.boundary = flw_read_bndcnd(desk.log, file, cells, settings.species, settings.ambient);
  chk_bc_exnr(desk.log, settings.records, settings.ambient);
  frame::TextInput* domain =
      desk.names[kDomain].empty() ? nullptr : &desk.units.input(frame::kUnitDomain);
  run.domains = flw_list_cmmbnd(desk.log, desk.layer, domain, file, cells);
  run.grid =
      flw_read_grid(desk.log, desk.units.input(frame::kUnitGrid), cells, run.boundary.periodic_y());
  for (int axis = 0; axis < 3; ++axis) {
    if (run.grid.box.computed(axis)) continue;
    settings.control.gravity[static_cast<std::size_t>(axis)] = 0.0;
  }
}

/// A file of the city, opened; null where the run has none. One that the run has no use for is
/// told and left alone.
frame::TextInput* city_file(Desk& desk, FileRow row, int unit, bool wanted, std::string_view why) {
  const std::string& name = desk.names[row];
  if (name.empty()) return nullptr;
  if (wanted) return &desk.units.open_input(desk.log, unit, name);
  desk.log.warn(title_of(row), "=", name, "is not used", why);
  return nullptr;
}

CityFiles open_city_files(Desk& desk, const Control& control) {
  const bool fractions = wants_fractions(desk.log, desk.units.input(frame::kUnitControl));
  need_name(desk.log, desk.names, kPorous, fractions, "with LVFRAC");
  constexpr std::string_view kNoHeat = "(itemp <= 0)";
  return {city_file(desk, kPorous, frame::kUnitPorous, fractions, "(LVFRAC = 0)"),
          city_file(desk, kSurfTemp, frame::kUnitSurfTemp, control.itemp, kNoHeat),
          city_file(desk, kBldLoad, frame::kUnitBldLoad, control.itemp, kNoHeat),
          city_file(desk, kLad, frame::kUnitLad, true, "")};
}

void list_and_check_faces(Desk& desk, Run& run) {
  const Slits slits = mkslits(desk.log, run.grid.box, run.boundary);
  const CityFiles files = open_city_files(desk, run.settings.control);
  run.openings = mkofrac(desk.log, desk.units.input(frame::kUnitControl), files, run.settings,
                         run.grid, run.boundary, run.urban);
  flw_prep_stiobs(run.boundary, run.openings);
  warn_of_narrow_cells(desk.log, run.openings);
  mkslit1(slits, run.openings);
  run.faces = list_faces(run.boundary, run.openings);
  flw_prep_ckbnd1(desk.log, run.boundary, run.openings, run.faces);
  flw_prep_ckbnd2(desk.log, run.boundary, run.openings.fluid, run.faces);
  close_faces(run.openings, run.boundary, run.faces);
  desk.log.line("no. of total cells=", run.grid.box.cells());
}

void prepare_companions() {
  ubx_setsome();
  jmk_prep_init();
  rad_prep_init();
  nlk_prep_init();
  mkc_prep_init();
  sld_prep_init();
}

Outputs start_up(Desk& desk, Run& run) {
  Outputs outputs;
  read_settings(desk, run.settings);
  run.urban.TIME0 = kcp_inputdata(desk.log, desk.units.input(frame::kUnitControl));
  const SetFile initial = open_files(desk, run.settings, outputs);
  read_boundary(desk, run);
  list_and_check_faces(desk, run);
  outputs.closed = !holds_pressure(run.boundary, run.faces);
  run.state =
      make_state(desk.log, run.grid.box, run.settings.control, run.settings.species.count());
  prepare_companions();
  outputs.kept = flw_prep_init(desk.log, run, outputs.restart, initial);
  chkmginit();
  jmk_prep_radsky();
  return outputs;
}

bool is_over(const Desk& desk, const Run& run) {
  const Control& control = run.settings.control;
  return ::access(desk.units.path_of("EXIT").c_str(), F_OK) == 0 ||
         run.state.iter >= control.itere || run.state.time >= control.timee;
}

void write_restart(Desk& desk, const Run& run, Outputs& outputs) {
  desk.log.line("output restart file : iter,time =", run.state.iter, run.state.time);
  frame::RecordWriter writer(desk.log, outputs.restart.path, outputs.kept);
  write_set(writer, run.state, outputs.closed);
  outputs.kept = writer.settle();
}

void write_outputs(Desk& desk, Run& run, Outputs& outputs, bool stop) {
  const State& state = run.state;
  Settings& settings = run.settings;
  kpc_dump_exchange();
  if (is_due(settings.control.restart, state.iter, state.time, state.dt, stop)) {
    write_restart(desk, run, outputs);
  }
  if (!settings.history.points.empty() &&
      is_due(settings.history.schedule, state.iter, state.time, state.dt, stop)) {
    write_history(desk.log, desk.units.output(frame::kUnitHistory), settings.history, state,
                  outputs.history);
  }
  h18_out_eachtrm();
}

void march(Desk& desk, Run& run, Outputs& outputs) {
  TerminalLine terminal(desk.terminal, run.state.iter, run.settings.control);
  for (bool stop = false; !stop;) {
    advance(desk.log, desk.accounts, run);
    print_monitor(desk.log, run.crew, run.state, run.openings.fluid, run.settings.control.iturb);
    flw_module_resid();
    flw_module_rsdprf();
    stop = is_over(desk, run);
    write_outputs(desk, run, outputs, stop);
    terminal.show(run.state.iter, run.state.time);
  }
}

}  // namespace

void flw_main01(Desk& desk, Run& run) {
  const frame::Tag tag(desk.log, "(flw_main01)");
  Outputs outputs = start_up(desk, run);
  desk.accounts.start(desk.log, "total");
  march(desk, run, outputs);
  desk.accounts.end(desk.log, "total");
  desk.accounts.print(desk.log);
}

}  // namespace flow
