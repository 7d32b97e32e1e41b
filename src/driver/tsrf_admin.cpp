#include "driver/tsrf_admin.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "driver/account_step.hpp"
#include "driver/daily_residual.hpp"
#include "driver/rad_admin.hpp"
#include "driver/step_results.hpp"
#include "inputs/moist_air.hpp"
#include "surface/conduction.hpp"
#include "surface/heat_balance.hpp"
#include "trees/sundir.hpp"
#include "trees/trcanopy.hpp"

namespace tsrf_main01 {

namespace {

constexpr std::int32_t kSecondsPerDay = 86400;
constexpr double kSecondsPerHour = 3600.0;
constexpr double kTolerance = 1e-05;  // of the daily residual

/// Second of the day, 1 to 86400: midnight closes a day.
std::int32_t second_of_day(double time) {
  double rest = std::fmod(time, kSecondsPerDay);
  if (rest < 0.0) rest += kSecondsPerDay;
  const auto second = static_cast<std::int32_t>(std::lround(rest));
  return second == 0 ? kSecondsPerDay : second;
}

/// The midnight next to a time, as a number of days.
double nearest_midnight(double time) { return std::round(time / kSecondsPerDay); }

/// When a step starts and ends.
struct StepTime {
  double time;        ///< model time at the start [s]
  double dt;          ///< [s]
  std::int32_t sod1;  ///< second of the day at the end
  tsrf_module_calendar::Date date0;
  tsrf_module_calendar::Date date1;

  [[nodiscard]] bool ends_hour() const { return tsrf_module_io::is_whole_hour(sod1); }
  /// Of steps below a second several end within half a second of midnight; the first of them closes
  /// the day.
  [[nodiscard]] bool closes_day() const {
    const auto at_midnight = [](double t) { return second_of_day(t) == kSecondsPerDay; };
    return sod1 == kSecondsPerDay &&
           !(at_midnight(time) && nearest_midnight(time) == nearest_midnight(time + dt));
  }
};

StepTime step_time(Desk& desk, Inputs& inputs, double time, double dt) {
  return {.time = time,
          .dt = dt,
          .sod1 = second_of_day(time + dt),
          .date0 = tsrf_module_calendar::sec2date(desk.log, inputs.calendar, time),
          .date1 = tsrf_module_calendar::sec2date(desk.log, inputs.calendar, time + dt)};
}

/// Runs `work` under the stopwatch `process`.
template <class Work>
void timed(Desk& desk, std::string_view process, Work&& work) {
  desk.accounts.start(desk.log, process);
  work();
  desk.accounts.end(desk.log, process);
}

/// Room heat and air-conditioning of the hour; rooms start at their set points.
void set_room_schedules(Desk& desk, Inputs& inputs, Buildings& buildings, const StepTime& step) {
  frame::TextInput& schedule = desk.units.input(frame::kUnitRmHeat);
  tsrf_module_bldng::Data& bldng = buildings.bldng;
  tsrf_module_bldng::bldng_alloc_tmpdata(desk.log, inputs.patch.mpatch, bldng);
  tsrf_module_rmheat::set_rmheat(desk.log, schedule, step.time, inputs.calendar, buildings.rmheat);
  tsrf_module_aircon::set_aircon(desk.log, schedule, buildings.rmheat, bldng.BldCD, bldng.Strct,
                                 buildings.aircon);
  if (0.5 * step.dt > step.time) {
    tsrf_module_aircon::set_initial_rooms(desk.log, buildings.rmheat, bldng.BldCD, bldng.Strct,
                                          bldng.Tr, bldng.Tm);
  }
}

/// Sunlit fractions of the patches, and the water temperatures where they are prescribed.
void set_shade_and_water(Desk& desk, Inputs& inputs, Surface& surface, Radiation& radiation,
                         const StepTime& step) {
  frame::TextInput* sun = inputs.filnam.dated ? nullptr : &desk.units.input(frame::kUnitSun);
  tsrf_module_shade::set_shade(desk.log, desk.crew, sun, step.time, inputs.patch, inputs.calendar,
                               radiation.shade, radiation.incident.fsun);
  if (inputs.wtrtmp.settings.LWTRTMP < 1) return;
  tsrf_module_wtrtmp::set_wtrtmp(desk.log, desk.units.input(frame::kUnitWaterTemp), step.time,
                                 inputs.patch, inputs.calendar, inputs.wtrtmp);
  tsrf_module_wtrtmp::tsrf_set_wtrtmp(inputs.wtrtmp, surface.data.mzg + 1, surface.data.tlyr);
}

/// Sun and sky of the step.
struct Sky {
  tsrf_module_phydat::SunVector sun;
  tsrf_module_phydat::SkyFluxes fluxes;
};

Sky set_sky(Desk& desk, Inputs& inputs, const Radiation& radiation, const StepTime& step) {
  const tsrf_module_weather::Weather& now = inputs.weather.now;
  const double vapour = now.Rhum * 0.01 * moist_air::satvap(now.temperature).es;
  Sky sky;
  sky.sun = inputs.filnam.dated
                ? tsrf_module_phydat::sunvec_mltday(desk.log, inputs.calendar, radiation.phydat,
                                                    step.time)
                : tsrf_module_phydat::sunvec_oneday(radiation.phydat, step.time / kSecondsPerHour);
  sky.fluxes = tsrf_module_phydat::sky_fluxes(radiation.phydat, sky.sun.z,
                                              {.temperature = now.temperature,
                                               .vapour_pressure = vapour,
                                               .SunRad = now.SunRad,
                                               .SunJdn = now.SunJdn,
                                               .SunJsh = now.SunJsh,
                                               .AtmJsh = now.AtmJsh});
  return sky;
}

/// The hourly row of Sun & Sky.
void report_sky(Desk& desk, const Inputs& inputs, Results& results, std::int64_t iter,
                const StepTime& step, const Sky& sky) {
  if (desk.layer.myrank != 0 || !step.ends_hour()) return;
  tsrf_module_io::write_sunskyrad(
      desk.log, desk.units.output(frame::kUnitSunSky), results.io.settings, inputs.filnam.dated,
      {step.sod1, step.date0, step.date1, iter}, sky.fluxes, results.sun_sky);
}

/// Radiation on every patch, with what the trees take of it.
void radiation_step(Desk& desk, const Inputs& inputs, Surface& surface, Radiation& radiation,
                    jmk::Trees& trees, const StepTime& time, const Sky& sky) {
  Incident& step = radiation.incident;
  std::ranges::copy(surface.data.skyvf0, step.skyvf.begin());
  const auto sundir = [&] {
    jmk::tsrf_sundir(desk.log, desk.crew, time.dt, time.time, sky.sun, sky.fluxes, inputs.patch,
                     step.fsun, trees.cells, trees.radiat, trees.canopy, step.Jdir);
  };
  const auto trcanopy = [&] {
    jmk::tsrf_trcanopy(desk.log, desk.crew, sky.fluxes, inputs.patch, trees.cells, trees.htrans,
                       trees.radiat, trees.canopy, step.Rl, step.Rs, radiation.raddat.JRl,
                       radiation.raddat.JRs);
  };
  rad_admin::rad_admin(desk.log, desk.crew, desk.accounts, sky.sun, sky.fluxes, inputs.patch,
                       inputs.srfprp, {trees.htrans, trees.radiat, sundir, trcanopy}, surface.data,
                       radiation.raddat, {step.fsun, step.skyvf, step.Jdir, step.Rl, step.Rs},
                       radiation.work);
}

/// Sun in the glass of the windows, and the rooms' air behind the walls.
void set_windows_and_rooms(const Inputs& inputs, Surface& surface, const Radiation& radiation,
                           Buildings& buildings) {
  tsrf_window::window(surface.glass, inputs.srfprp, surface.data, radiation.incident.Jdir,
                      surface.qlayer, buildings.bldng.qtrans);
  tsrf_building::set_room_nodes(buildings.rooms, buildings.bldng, surface.data);
}

/// Temperatures that a rule sets: far boundary, fixed patches, solar panels.
void set_fixed_temperatures(Desk& desk, const Inputs& inputs, Surface& surface,
                            const Radiation& radiation, std::int64_t iter) {
  tsrf_module_fixtmp::calc_temp_farbd(desk.log, inputs.patch, surface.data, surface.fixtmp);
  tsrf_module_fixtmp::apply(surface.fixtmp, surface.data);
  tsrf_module_fixtmp::calc_temp_pv(desk.log, iter, inputs.patch, radiation.incident.Rs,
                                   surface.fixtmp, surface.data);
}

/// Daily residual, convergence and the progress record; true when the day repeats itself.
bool judge_day(Desk& desk, Surface& surface, progress::Data& progress, const StepTime& step) {
  if (surface.data.settings.LCNVRG <= 0) return false;
  const double res = step.closes_day() ? daily_residual(surface.data) : 1e20;
  progress::update(desk.log, desk.units.output(frame::kUnitProgressLog), step.sod1, res, progress);
  if (step.closes_day()) desk.log.line("%%% res=", res);
  return kTolerance > res;
}

/// The least and greatest surface temperature, one maximum reduction for both.
void report_extremes(Desk& desk, const Surface& surface) {
  std::array<double, 2> extremes = {-1e20, -1e20};  // least negated, greatest
  const auto temperature = surface.data.tlyr.row(0);
  for (std::size_t p = 0; p < temperature.size(); ++p) {
    if (surface.data.lcal[p] <= 0) continue;
    extremes[0] = std::max(extremes[0], -temperature[p]);
    extremes[1] = std::max(extremes[1], temperature[p]);
  }
  frame::flw_m_reduce_max(desk.layer, std::span<double>(extremes));
  desk.log.line("%%% surf. temp. min&max=", -extremes[0], extremes[1]);
}

}  // namespace

bool tsrf_admin(Run& run, std::int64_t iter, double time, double dtmax) {
  const frame::Tag tag(run.desk.log, "(tsrf_admin)");
  const bool buildings = run.buildings.on();
  const StepTime step = step_time(run.desk, run.inputs, time, dtmax);
  const Incident& arrays = run.radiation.incident;

  gather_temperatures(run, step.sod1);
  if (buildings) set_room_schedules(run.desk, run.inputs, run.buildings, step);
  set_shade_and_water(run.desk, run.inputs, run.surface, run.radiation, step);
  const Sky sky = set_sky(run.desk, run.inputs, run.radiation, step);
  run.radiation.sky = sky.fluxes;
  note_account(run, time);
  report_sky(run.desk, run.inputs, run.results, iter, step, sky);

  timed(run.desk, "rad_admin", [&] {
    radiation_step(run.desk, run.inputs, run.surface, run.radiation, run.trees, step, sky);
  });
  timed(run.desk, "therm1d", [&] {
    tsrf_therm1d::tsrf_therm1d(run.desk.log, run.desk.crew, iter, run.inputs.patch,
                               run.inputs.srfprp, arrays.skyvf, arrays.Rl, arrays.Rs,
                               run.surface.data);
  });
  timed(run.desk, "window", [&] {
    if (buildings) set_windows_and_rooms(run.inputs, run.surface, run.radiation, run.buildings);
  });
  timed(run.desk, "solid1d", [&] {
    solid1d::solid1d(run.desk.crew, dtmax, run.surface.qlayer, run.surface.data,
                     run.surface.columns);
  });
  set_fixed_temperatures(run.desk, run.inputs, run.surface, run.radiation, iter);
  timed(run.desk, "building", [&] {
    if (!buildings) return;
    tsrf_building::tsrf_building(run.desk.log, run.desk.layer, time, dtmax, run.inputs.patch,
                                 run.surface.data, run.buildings.rmheat, run.buildings.aircon,
                                 run.buildings.bldcmm, run.buildings.bldng, run.buildings.rooms);
  });
  const bool kconv = judge_day(run.desk, run.surface, run.progress, step);
  write_results(run, iter, step.sod1);
  report_extremes(run.desk, run.surface);
  return kconv;
}

}  // namespace tsrf_main01
