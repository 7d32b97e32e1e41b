// tsrf_prep_monthly: what changes with the month in a dated run.
#include <algorithm>
#include <cmath>

#include "driver/start_up.hpp"

namespace tsrf_main01 {

namespace {

/// Opens a month's file on its unit.
frame::TextInput& open_month_file(Desk& desk, const Inputs& inputs, std::int32_t index, int unit,
                                  std::int32_t month) {
  const std::string name = ubx_module_filnam::make_month_name(inputs.filnam, index, month);
  desk.log.line("%%% open file=", name);
  return desk.units.open_input(desk.log, unit, name);
}

}  // namespace

void load_month(Run& run, std::int32_t month) {
  frame::Log& log = run.desk.log;
  frame::attempt(log, [&] {
    tsrf_module_srfprp::read_srfprp(
        log,
        open_month_file(run.desk, run.inputs, ubx_module_filnam::kSurfProp, frame::kUnitSurfProp,
                        month),
        run.inputs.srfprp);
  });
  frame::attempt(log, [&] {
    if (!run.trees.cells.CALJMK) return;
    jmk::read_month(log,
                    open_month_file(run.desk, run.inputs, ubx_module_filnam::kLadSimple,
                                    frame::kUnitLadSimple, month),
                    run.trees);
  });
  if (run.buildings.on()) {
    frame::attempt(log, [&] {
      tsrf_module_bldng::read_bldng(
          log,
          open_month_file(run.desk, run.inputs, ubx_module_filnam::kBuilding, frame::kUnitBuilding,
                          month),
          run.inputs.patch, run.buildings.bldng);
    });
    // The schedules are read when they are next asked for.
    open_month_file(run.desk, run.inputs, ubx_module_filnam::kRmHeat, frame::kUnitRmHeat, month);
    tsrf_module_rmheat::reset(run.buildings.rmheat);
    tsrf_module_aircon::reset(run.buildings.aircon);
  }
  tsrf_module_phydat::set_ppa(run.radiation.phydat, month);
}

void tsrf_prep_monthly(Run& run, double time) {
  if (!run.inputs.filnam.dated) return;
  const frame::Tag tag(run.desk.log, "(tsrf_prep_monthly)");
  std::int32_t first = run.inputs.filnam.MONTHS[0];
  std::int32_t last = run.inputs.filnam.MONTHS[1];
  if (run.inputs.filnam.loaded_month != 0) {
    const auto date = tsrf_module_calendar::sec2date(run.desk.log, run.inputs.calendar, time);
    const auto month = static_cast<std::int32_t>(std::lround(date[1]));
    if (month == run.inputs.filnam.loaded_month) return;
    // A month beyond MONTHS loads nothing: the last data stay in force.
    first = std::max(first, month);
    last = std::min(last, month);
  }
  for (std::int32_t month = first; month <= last; ++month) load_month(run, month);
  if (first <= last) ubx_module_filnam::set_loaded_month(run.inputs.filnam, last);
}

}  // namespace tsrf_main01
