#include "driver/tsrf_main01.hpp"

#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "driver/step_results.hpp"
#include "driver/terminal_line.hpp"
#include "driver/tsrf_admin.hpp"
#include "inputs/grid.hpp"
#include "results/restart.hpp"
#include "surface/air_state.hpp"

namespace tsrf_main01 {

namespace {

constexpr double kSecondsPerDay = 86400.0;
/// Time before any model time: the first call of tsrf_prep_monthly loads all months.
constexpr double kBeforeTheRun = -1000.0;
constexpr std::int64_t kScreenEvery = 50;

/// Passes over one line of the control data that this model does not use.
void skip_record(frame::TextInput& control) {
  std::string_view line;
  while (control.next_line(line) && line.find_first_not_of(" \t") == std::string_view::npos) {
  }
}

void skip_records(frame::TextInput& control, int count) {
  for (; count > 0; --count) skip_record(control);
}

/// The fixed lines of the control data; those of the flow field are passed over.
void tsrf_read_cntdat(Run& run) {
  const frame::Tag tag(run.log, "(tsrf_read_cntdat)");
  frame::TextInput& control = run.units.input(frame::kUnitControl);
  ControlLines& lines = run.control;
  const auto read = [&](auto&... values) {
    if (control.read(values...) != frame::ReadStatus::ok) {
      run.log.read_error(control, "### read error : control data");
    }
  };
  control.rewind();
  skip_records(control, 2);
  read(lines.iters, lines.itere);
  skip_record(control);
  read(lines.dtsafe, lines.dtmax);
  skip_records(control, 20);
  read(lines.molar_mass_air);
  read(lines.molar_mass_water);
  if (!(lines.dtmax > 0.0)) {
    run.log.data_error(frame::items("dtmax =", lines.dtmax), "it must be > 0");
  }
  jmk_module_htrans::Constants constants;
  constants.molar_air = lines.molar_mass_air;
  constants.molar_water = lines.molar_mass_water;
  jmk_module_htrans::set_constants(run.log, constants, run.trees.htrans);
  jmk_module_htrans::inputdata(run.log, control, run.trees.htrans);
}

/// A dated run's date of model time 0, and where its days' Sun files stand.
void set_calendar(Run& run) {
  if (!run.filnam.dated) return;
  run.shade.day_name = [&run](std::int32_t month, std::int32_t day) {
    const std::string name =
        ubx_module_filnam::make_day_name(run.filnam, ubx_module_filnam::kSun, month, day);
    return run.units.path_of(name);
  };
  tsrf_module_calendar::Date date0{};
  std::ranges::copy(run.filnam.DATE0, date0.begin());
  run.calendar.origin = tsrf_module_calendar::date2sec({}, date0);
}

/// "iter=" and its numbers, as they stand on the log and, now and then, on standard output.
void report_iteration(frame::Log& log, std::int64_t iter, double time, double dtmax) {
  std::string line = "iter=";
  frame::append_int(line, iter, 8);
  frame::append_e13(line, time / kSecondsPerDay);
  frame::append_e13(line, dtmax);
  log.line(line);
  if (iter % kScreenEvery == 0 && !log.is_screen()) log.screen(line);
  log.flush();
}

bool stop_file_exists(const frame::UnitTable& units) {
  return ::access(units.path_of("EXIT").c_str(), F_OK) == 0;
}

/// True when the remainder of `time` by a day rounds to 0.
bool at_day_end(double time) { return std::round(std::fmod(time, kSecondsPerDay)) == 0.0; }

void march(Run& run, const Start& start) {
  const double dt = run.control.dtmax;
  double time = start.time;
  TerminalLine terminal(run.terminal, start.iteration, run.control.itere);
  for (std::int64_t iter = start.iteration;; ++iter) {
    report_iteration(run.log, iter, time, dt);
    tsrf_set_tqair::tsrf_set_tqair(run.log, run.units.input(frame::kUnitWeather), time, dt,
                                   run.calendar, run.weather, run.data);
    if (run.trees.cells.CALJMK) {
      const tsrf_module_weather::Weather& air = run.weather.now;
      tsrf_module_jumoku::storetqair(air.pressure, air.temperature, air.humidity, air.wind,
                                     run.trees.canopy);
    }
    tsrf_prep_monthly(run, time);
    const bool kconv = tsrf_admin(run, iter, time, dt);
    const bool lend = stop_file_exists(run.units) || kconv || iter == run.control.itere;
    time += dt;
    write_closed_month(run, iter, time, lend);
    if (at_day_end(time) || lend) {
      tsrf_io_restart::save(run.log, run.units.records(frame::kUnitRestart), iter, time,
                            restart_state(run));
    }
    terminal.show(iter, time, run.progress);
    if (lend) return;
  }
}

}  // namespace

void tsrf_main01(Run& run) {
  const frame::Tag tag(run.log, "(tsrf_main01)");
  tsrf_read_cntdat(run);
  set_calendar(run);
  const Start start = tsrf_prep_init(run);
  const Sizes sizes{run.size.mx, run.size.my, run.size.mz};
  const bool releases_heat = run.bldng.settings.LCBLD > 0;
  run.grid = sizes;
  if (!run.data.settings.LTRSMPL || releases_heat) {
    run.grid = read_grid(run.log, run.units.input(frame::kUnitGrid), sizes);
  }
  if (!run.data.settings.LTRSMPL) {
    jmk::jmk2_prep_init(run.log, run.units.input(frame::kUnitControl),
                        run.units.input(frame::kUnitLad), run.units.input(frame::kUnitLadSimple),
                        run.grid, run.grdindx, run.patch, run.trees);
  }
  if (releases_heat) {
    tsrf_module_io::prep_bldload(run.log, run.patch, run.grid, run.results.bld_load);
  }
  tsrf_prep_monthly(run, kBeforeTheRun);
  tsrf_dummyb(run.log, run.units.input(frame::kUnitPorous), sizes, run.porous);
  run.accounts.start(run.log, "total");
  if (start.iteration <= run.control.itere) march(run, start);
  run.accounts.end(run.log, "total");
  run.accounts.print(run.log);
}

}  // namespace tsrf_main01
