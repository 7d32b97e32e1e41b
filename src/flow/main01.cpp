#include "flow/main01.hpp"

#include <unistd.h>

#include "flow/companions.hpp"
#include "flow/input/schedule.hpp"
#include "flow/output/flow_set.hpp"
#include "flow/output/history.hpp"
#include "flow/output/monitor.hpp"
#include "flow/output/terminal_line.hpp"
#include "flow/prep_init.hpp"
#include "flow/start_up.hpp"
#include "flow/step.hpp"
#include "flow/urban/mkofrac.hpp"
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

/// The files that the settings ask for.
SetFile open_files(Desk& desk, const Settings& settings, Outputs& outputs) {
  const Control& control = settings.control;
  const FileNames& names = desk.names;
  const Wanted wanted = wanted_files(desk.log, names, settings);
  if (wanted.sets) desk.units.open_records(desk.log, frame::kUnitRestart, names[kRestart]);
  if (wanted.points) desk.units.open_output(desk.log, frame::kUnitHistory, names[kHistory]);
  if (control.iters == 0) desk.units.check_input(desk.log, names[kInitial]);
  outputs.restart = {names[kRestart], desk.units.path_of(names[kRestart])};
  return {names[kInitial], desk.units.path_of(names[kInitial])};
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
  settle_settings(desk.log, run.settings);
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
