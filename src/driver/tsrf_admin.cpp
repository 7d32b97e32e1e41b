#include "driver/tsrf_admin.hpp"

#include <algorithm>
#include <array>
#include <cmath>

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

StepTime step_time(Run& run, double time, double dt) {
  return {.time = time,
          .dt = dt,
          .sod1 = second_of_day(time + dt),
          .date0 = tsrf_module_calendar::sec2date(run.log, run.calendar, time),
          .date1 = tsrf_module_calendar::sec2date(run.log, run.calendar, time + dt)};
}

/// Runs `work` under the stopwatch `process`.
template <class Work>
void timed(Run& run, std::string_view process, Work&& work) {
  run.accounts.start(run.log, process);
  work();
  run.accounts.end(run.log, process);
}

/// Room heat and air-conditioning of the hour; rooms start at their set points.
void set_room_schedules(Run& run, const StepTime& step) {
  frame::TextInput& schedule = run.units.input(frame::kUnitRmHeat);
  tsrf_module_bldng::Data& bldng = run.bldng;
  tsrf_module_bldng::bldng_alloc_tmpdata(run.log, run.patch.mpatch, bldng);
  tsrf_module_rmheat::set_rmheat(run.log, schedule, step.time, run.calendar, run.rmheat);
  tsrf_module_aircon::set_aircon(run.log, schedule, run.rmheat, bldng.BldCD, bldng.Strct,
                                 run.aircon);
  if (0.5 * step.dt > step.time) {
    tsrf_module_aircon::set_initial_rooms(run.log, run.rmheat, bldng.BldCD, bldng.Strct, bldng.Tr,
                                          bldng.Tm);
  }
}

/// Sunlit fractions of the patches, and the water temperatures where they are prescribed.
void set_shade_and_water(Run& run, const StepTime& step) {
  frame::TextInput* sun = run.filnam.dated ? nullptr : &run.units.input(frame::kUnitSun);
  tsrf_module_shade::set_shade(run.log, sun, step.time, run.patch, run.calendar, run.shade,
                               run.step.fsun);
  if (run.wtrtmp.settings.LWTRTMP < 1) return;
  tsrf_module_wtrtmp::set_wtrtmp(run.log, run.units.input(frame::kUnitWaterTemp), step.time,
                                 run.patch, run.calendar, run.wtrtmp);
  tsrf_module_wtrtmp::tsrf_set_wtrtmp(run.wtrtmp, run.data.mzg + 1, run.data.tlyr);
}

/// Sun and sky of the step.
struct Sky {
  tsrf_module_phydat::SunVector sun;
  tsrf_module_phydat::SkyFluxes fluxes;
};

Sky set_sky(Run& run, const StepTime& step) {
  const tsrf_module_weather::Weather& now = run.weather.now;
  const double vapour = now.Rhum * 0.01 * moist_air::satvap(now.temperature).es;
  Sky sky;
  sky.sun = run.filnam.dated
                ? tsrf_module_phydat::sunvec_mltday(run.log, run.calendar, run.phydat, step.time)
                : tsrf_module_phydat::sunvec_oneday(run.phydat, step.time / kSecondsPerHour);
  sky.fluxes = tsrf_module_phydat::sky_fluxes(run.phydat, sky.sun.z,
                                              {.temperature = now.temperature,
                                               .vapour_pressure = vapour,
                                               .SunRad = now.SunRad,
                                               .SunJdn = now.SunJdn,
                                               .SunJsh = now.SunJsh,
                                               .AtmJsh = now.AtmJsh});
  return sky;
}

/// The hourly row of Sun & Sky.
void report_sky(Run& run, std::int64_t iter, const StepTime& step, const Sky& sky) {
  if (run.layer.myrank != 0 || !step.ends_hour()) return;
  tsrf_module_io::write_sunskyrad(run.log, run.units.output(frame::kUnitSunSky), run.io.settings,
                                  run.filnam.dated, {step.sod1, step.date0, step.date1, iter},
                                  sky.fluxes, run.results.sun_sky);
}

/// Radiation on every patch, with what the trees take of it.
void radiation_step(Run& run, const StepTime& time, const Sky& sky) {
  StepArrays& step = run.step;
  jmk::Trees& trees = run.trees;
  std::ranges::copy(run.data.skyvf0, step.skyvf.begin());
  const auto sundir = [&] {
    jmk::tsrf_sundir(run.log, time.dt, time.time, sky.sun, sky.fluxes, run.patch, step.fsun,
                     trees.cells, trees.radiat, trees.canopy, step.Jdir);
  };
  const auto trcanopy = [&] {
    jmk::tsrf_trcanopy(run.log, sky.fluxes, run.patch, trees.cells, trees.htrans, trees.radiat,
                       trees.canopy, step.Rl, step.Rs, run.raddat.JRl, run.raddat.JRs);
  };
  rad_admin::rad_admin(run.log, run.accounts, sky.sun, sky.fluxes, run.patch, run.srfprp,
                       {trees.htrans, trees.radiat, sundir, trcanopy}, run.data, run.raddat,
                       {step.fsun, step.skyvf, step.Jdir, step.Rl, step.Rs}, run.radiation);
}

/// Sun in the glass of the windows, and the rooms' air behind the walls.
void set_windows_and_rooms(Run& run) {
  tsrf_window::window(run.step.glass, run.srfprp, run.data, run.step.Jdir, run.step.qlayer,
                      run.bldng.qtrans);
  tsrf_building::set_room_nodes(run.rooms, run.bldng, run.data);
}

/// Temperatures that a rule sets: far boundary, fixed patches, solar panels.
void set_fixed_temperatures(Run& run, std::int64_t iter) {
  tsrf_module_fixtmp::calc_temp_farbd(run.log, run.patch, run.data, run.fixtmp);
  tsrf_module_fixtmp::apply(run.fixtmp, run.data);
  tsrf_module_fixtmp::calc_temp_pv(run.log, iter, run.patch, run.step.Rs, run.fixtmp, run.data);
}

/// Daily residual, convergence and the progress record; true when the day repeats itself.
bool judge_day(Run& run, const StepTime& step) {
  if (run.data.settings.LCNVRG <= 0) return false;
  const double res = step.closes_day() ? daily_residual(run.data) : 1e20;
  progress::update(run.log, run.units.output(frame::kUnitProgressLog), step.sod1, res,
                   run.progress);
  if (step.closes_day()) run.log.line("%%% res=", res);
  return kTolerance > res;
}

/// The least and greatest surface temperature, one maximum reduction for both.
void report_extremes(Run& run) {
  std::array<double, 2> extremes = {-1e20, -1e20};  // least negated, greatest
  const auto surface = run.data.tlyr.row(0);
  for (std::size_t p = 0; p < surface.size(); ++p) {
    if (run.data.lcal[p] <= 0) continue;
    extremes[0] = std::max(extremes[0], -surface[p]);
    extremes[1] = std::max(extremes[1], surface[p]);
  }
  frame::flw_m_reduce_max(run.layer, std::span<double>(extremes));
  run.log.line("%%% surf. temp. min&max=", -extremes[0], extremes[1]);
}

}  // namespace

bool tsrf_admin(Run& run, std::int64_t iter, double time, double dtmax) {
  const frame::Tag tag(run.log, "(tsrf_admin)");
  const bool buildings = run.bldng.settings.LCBLD > 0;
  const StepTime step = step_time(run, time, dtmax);
  StepArrays& arrays = run.step;

  gather_temperatures(run, step.sod1);
  if (buildings) set_room_schedules(run, step);
  set_shade_and_water(run, step);
  const Sky sky = set_sky(run, step);
  report_sky(run, iter, step, sky);

  timed(run, "rad_admin", [&] { radiation_step(run, step, sky); });
  timed(run, "therm1d", [&] {
    tsrf_therm1d::tsrf_therm1d(run.log, iter, run.patch, run.srfprp, arrays.skyvf, arrays.Rl,
                               arrays.Rs, run.data);
  });
  timed(run, "window", [&] {
    if (buildings) set_windows_and_rooms(run);
  });
  timed(run, "solid1d", [&] { solid1d::solid1d(dtmax, arrays.qlayer, run.data, arrays.columns); });
  set_fixed_temperatures(run, iter);
  timed(run, "building", [&] {
    if (!buildings) return;
    tsrf_building::tsrf_building(run.log, run.layer, time, dtmax, run.patch, run.data, run.rmheat,
                                 run.aircon, run.bldcmm, run.bldng, run.rooms);
  });
  const bool kconv = judge_day(run, step);
  write_results(run, iter, step.sod1);
  report_extremes(run);
  return kconv;
}

}  // namespace tsrf_main01
