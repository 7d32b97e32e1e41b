#include "driver/tsrf_main01.hpp"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "driver/account_step.hpp"
#include "driver/start_up.hpp"
#include "driver/step_results.hpp"
#include "driver/terminal_line.hpp"
#include "driver/tsrf_admin.hpp"
#include "frame/step_line.hpp"
#include "inputs/grid.hpp"
#include "results/restart.hpp"
#include "surface/air_state.hpp"
#include "trees/sundir.hpp"

namespace tsrf_main01 {

namespace {

constexpr double kSecondsPerDay = 86400.0;
/// Time before any model time: the first call of tsrf_prep_monthly loads all months.
constexpr double kBeforeTheRun = -1000.0;

/// Passes over one line of the control data that this model does not use.
void skip_record(frame::TextInput& control) {
  std::string_view line;
  while (control.next_line(line) && line.find_first_not_of(" \t") == std::string_view::npos) {
  }
}

void skip_records(frame::TextInput& control, int count) {
  for (; count > 0; --count) skip_record(control);
}

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

/// True when the remainder of `time` by a day rounds to 0.
bool at_day_end(double time) { return std::round(std::fmod(time, kSecondsPerDay)) == 0.0; }

void march(Run& run, const Start& start) {
  const double dt = run.inputs.control.dtmax;
  const std::string stop_file = run.desk.units.path_of("EXIT");
  double time = start.time;
  TerminalLine terminal(run.desk.terminal, start.iteration, run.inputs.control.itere);
  for (std::int64_t iter = start.iteration;; ++iter) {
    frame::report_step(run.desk.log, iter, time / kSecondsPerDay, dt);
    tsrf_set_tqair::tsrf_set_tqair(run.desk.log, run.desk.units.input(frame::kUnitWeather), time,
                                   dt, run.inputs.calendar, run.inputs.weather, run.surface.data);
    if (run.trees.cells.CALJMK) {
      const tsrf_module_weather::Weather& air = run.inputs.weather.now;
      tsrf_module_jumoku::storetqair(air.pressure, air.temperature, air.humidity, air.wind,
                                     run.trees.canopy);
    }
    tsrf_prep_monthly(run, time);
    const bool kconv = tsrf_admin(run, iter, time, dt);
    const bool lend = exists(stop_file) || kconv || iter == run.inputs.control.itere;
    add_to_account(run, time, dt, lend);
    time += dt;
    write_closed_month(run, iter, time, lend);
    if (at_day_end(time) || lend) {
      tsrf_io_restart::save(run.desk.log, run.desk.units.records(frame::kUnitRestart), iter, time,
                            restart_state(run));
    }
    terminal.show(iter, time, run.progress);
    if (lend) return;
  }
}

}  // namespace

void tsrf_read_cntdat(Desk& desk, Inputs& inputs, jmk::Trees& trees) {
  const frame::Tag tag(desk.log, "(tsrf_read_cntdat)");
  frame::TextInput& control = desk.units.input(frame::kUnitControl);
  ControlLines& lines = inputs.control;
  bool whole = true;
  const auto read = [&](auto&... values) {
    if (control.read(values...) == frame::ReadStatus::ok) return;
    desk.log.lost_record(control, "### read error : control data");
    whole = false;
  };
  control.rewind();
  skip_records(control, 2);
  read(lines.iters, lines.itere);
  skip_record(control);
  const std::size_t steps = control.tell();
  read(lines.dtsafe, lines.dtmax);
  skip_records(control, 20);
  const std::size_t masses = control.tell();
  read(lines.molar_mass_air);
  read(lines.molar_mass_water);
  const auto check_step = [&] {
    if (lines.dtmax > 0.0) return;
    desk.log.data_error(frame::items("dtmax =", lines.dtmax), "it must be > 0");
  };
  if (whole) frame::attempt_at(desk.log, control, steps, check_step);
  jmk_module_htrans::Constants constants;
  constants.molar_air = lines.molar_mass_air;
  constants.molar_water = lines.molar_mass_water;
  const auto set_constants = [&] {
    jmk_module_htrans::set_constants(desk.log, constants, trees.htrans);
  };
  if (whole) frame::attempt_at(desk.log, control, masses, set_constants);
  jmk_module_htrans::inputdata(desk.log, control, trees.htrans);
}

void set_calendar(Run& run) {
  if (!run.inputs.filnam.dated) return;
  run.radiation.shade.day_name = [&run](std::int32_t month, std::int32_t day) {
    const std::string name =
        ubx_module_filnam::make_day_name(run.inputs.filnam, ubx_module_filnam::kSun, month, day);
    return run.desk.units.path_of(name);
  };
  tsrf_module_calendar::Date date0{};
  std::ranges::copy(run.inputs.filnam.DATE0, date0.begin());
  run.inputs.calendar.origin = tsrf_module_calendar::date2sec({}, date0);
}

void read_canopy(Run& run) {
  const Sizes sizes{run.inputs.size.mx, run.inputs.size.my, run.inputs.size.mz};
  const bool simple = run.surface.data.settings.LTRSMPL;
  run.inputs.grid = sizes;
  if (!simple || run.buildings.on()) {
    run.inputs.grid = read_grid(run.desk.log, run.desk.units.input(frame::kUnitGrid), sizes);
  }
  if (simple) return;
  jmk::jmk2_prep_init(run.desk.log, run.desk.units.input(frame::kUnitControl),
                      run.desk.units.input(frame::kUnitLad),
                      run.desk.units.input(frame::kUnitLadSimple), run.inputs.grid,
                      run.inputs.grdindx, run.inputs.patch, run.trees);
  if (run.trees.cells.CALJMK) {
    jmk::warn_of_step(run.desk.log, run.inputs.control.dtmax, run.trees.canopy.settings);
  }
}

void tsrf_main01(Run& run) {
  const frame::Tag tag(run.desk.log, "(tsrf_main01)");
  tsrf_read_cntdat(run.desk, run.inputs, run.trees);
  set_calendar(run);
  const Start start = tsrf_prep_init(run);
  read_canopy(run);
  if (run.buildings.on()) {
    tsrf_module_io::prep_bldload(run.desk.log, run.inputs.patch, run.inputs.grid,
                                 run.results.bld_load);
  }
  tsrf_prep_monthly(run, kBeforeTheRun);
  tsrf_dummyb(run.desk.log, run.desk.units.input(frame::kUnitPorous),
              {run.inputs.size.mx, run.inputs.size.my, run.inputs.size.mz}, run.inputs.porous);
  prepare_account(run);
  run.desk.accounts.start(run.desk.log, "total");
  if (start.iteration <= run.inputs.control.itere) march(run, start);
  run.desk.accounts.end(run.desk.log, "total");
  run.desk.accounts.print(run.desk.log);
}

}  // namespace tsrf_main01
