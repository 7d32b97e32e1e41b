// A step of a run with the plain forms put together: exchange, surface balance, columns and result
// files as one would write them down. Weather, sky, Sun data and the sums over cells, which are
// plain loops, are the program's own. For districts without trees, buildings, glass and panels.
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "driver/run.hpp"
#include "driver/step_results.hpp"
#include "inputs/moist_air.hpp"
#include "plain_exchange.hpp"
#include "plain_surface.hpp"
#include "surface/air_state.hpp"

namespace plain {

/// The lines of a FormFactor file in their order, from a stream; the sky's are left out.
inline std::vector<Triple> read_factors(const std::string& name,
                                        const tsrf_module_raddat::Data& raddat) {
  std::unordered_map<std::int32_t, std::int32_t> group;
  for (const std::int32_t id : raddat.PgID) group.emplace(id, static_cast<int>(group.size()));
  std::ifstream file(name);
  file.ignore(1000, '\n');
  std::vector<Triple> triples;
  std::int32_t rank = 0, source = 0, destination = 0;
  double factor = 0.0;
  while (file >> rank >> source >> rank >> destination >> factor) {
    if (destination == 0) continue;
    triples.push_back({group.at(source), group.at(destination), static_cast<float>(factor)});
  }
  return triples;
}

/// What the plain steps work on: a run of its own, whose start is the program's.
class Steps {
 public:
  Steps(tsrf_main01::Run& run, const std::string& directory)
      : run_(run),
        triples_(read_factors(directory + "/FormFactor.txt", run.radiation.raddat)),
        patches_(std::fopen((directory + "/PatchSurfTemp.plain").c_str(), "w")),
        cells_(std::fopen((directory + "/SurfTemp.plain").c_str(), "w")),
        no_source_(run.surface.data.mpatch, run.surface.data.mzg) {
    if (patches_ == nullptr || cells_ == nullptr) throw std::runtime_error(directory);
    std::fputs("# PID, i, j, k, hour, Temp, Rad_L, Rad_S\n", patches_);
    std::fputs("# i,j,k,hour,tdrg(1:3),swlr(1:3)\n", cells_);
  }
  ~Steps() {
    std::fclose(patches_);
    std::fclose(cells_);
  }
  Steps(const Steps&) = delete;
  Steps& operator=(const Steps&) = delete;

  /// One step of `dt` [s] from `time` [s] within the first day; `timed(name, work)` does each part.
  template <class Timed>
  void step(double time, double dt, Timed&& timed) {
    timed("rest", [&] { set_air_and_sun(time, dt); });
    timed("radref", [&] { exchange(); });
    timed("therm1d", [&] {
      tsrf_main01::Surface& surface = run_.surface;
      const tsrf_main01::Incident& in = run_.radiation.incident;
      if (!tsrf_therm1d(run_.inputs.srfprp, in.skyvf, in.Rl, in.Rs, surface.data)) {
        throw std::runtime_error("no convergence");
      }
    });
    timed("solid1d", [&] { solid1d(dt, no_source_, run_.surface.data); });
    const auto second = static_cast<std::int32_t>(time + dt);
    if (!tsrf_module_io::is_whole_hour(second)) return;
    timed("results", [&] { write(tsrf_module_io::hour_slot(second)); });
  }

 private:
  void set_air_and_sun(double time, double dt) {
    using namespace tsrf_module_phydat;
    auto& [log, units, layer, crew, accounts, terminal] = run_.desk;
    tsrf_main01::Inputs& inputs = run_.inputs;
    tsrf_main01::Radiation& radiation = run_.radiation;
    tsrf_main01::Incident& in = radiation.incident;
    tsrf_module_data::Data& state = run_.surface.data;
    tsrf_set_tqair::tsrf_set_tqair(log, units.input(frame::kUnitWeather), time, dt, inputs.calendar,
                                   inputs.weather, state);
    tsrf_module_shade::set_shade(log, crew, &units.input(frame::kUnitSun), time, inputs.patch,
                                 inputs.calendar, radiation.shade, in.fsun);
    const tsrf_module_weather::Weather& now = inputs.weather.now;
    const SunVector sun = sunvec_oneday(radiation.phydat, time / 3600.0);
    const SkyFluxes sky =
        sky_fluxes(radiation.phydat, sun.z,
                   {.temperature = now.temperature,
                    .vapour_pressure = now.Rhum * 0.01 * moist_air::satvap(now.temperature).es,
                    .SunRad = now.SunRad,
                    .SunJdn = now.SunJdn,
                    .SunJsh = now.SunJsh,
                    .AtmJsh = now.AtmJsh});
    in.skyvf = state.skyvf0;
    rad_admin::set_srad0(crew, sun, sky, inputs.patch, in.fsun, in.skyvf, in.Rl, in.Rs, in.Jdir);
    rad_admin::add_sundir(crew, inputs.patch.type, in.Jdir, in.Rs);
    rad_admin::set_emission(crew, inputs.patch, state.isrf, state.tlyr.row(0), inputs.srfprp.ems,
                            radiation.raddat, radiation.work.Sl, radiation.work.Ss);
  }

  void exchange() {
    tsrf_main01::Radiation& radiation = run_.radiation;
    tsrf_main01::Incident& in = radiation.incident;
    const tsrf_module_srfprp::Data& srfprp = run_.inputs.srfprp;
    std::vector<double> sun_absorbed;
    for (const double albedo : srfprp.alb) sun_absorbed.push_back(1.0 - albedo);
    for (const Band& band : {Band{srfprp.ems, radiation.work.Sl, radiation.raddat.JRl, in.Rl},
                             Band{sun_absorbed, radiation.work.Ss, radiation.raddat.JRs, in.Rs}}) {
      plain::exchange(radiation.raddat, triples_, run_.surface.data.isrf, run_.inputs.patch.area,
                      band);
    }
    in.skyvf.assign(in.skyvf.size(), 1.0);
  }

  static void put(std::FILE* file, double value) { std::fprintf(file, " %13.5E", value + 0.0); }

  void write(std::int32_t hour) {
    const tsrf_module_patch::Data& patch = run_.inputs.patch;
    const tsrf_module_data::Data& state = run_.surface.data;
    const tsrf_module_raddat::Data& raddat = run_.radiation.raddat;
    for (std::size_t p = 0; p < patch.PID.size(); ++p) {
      std::fprintf(patches_, "%8d%5d%5d%5d%3d", patch.PID[p], patch.i[p], patch.j[p], patch.k[p],
                   hour);
      for (const double value :
           {state.tlyr(p, 0) - tsrf_module_io::kCelsius, raddat.JRl[p], raddat.JRs[p],
            state.qsurf(p, 4), state.qsurf(p, 5), patch.area[p]}) {
        put(patches_, value);
      }
      std::fputc('\n', patches_);
    }
    tsrf_module_io::SurfTemp& cells = run_.results.surf_temp;
    sum_surftemp(patch, run_.inputs.srfprp, state, cells);
    for (std::size_t c = 0; c < cells.cells.size(); ++c) {
      std::fprintf(cells_, "%6d%6d%6d%3d", cells.i[c], cells.j[c], cells.cells.k[c], hour);
      for (const auto* sums : {&cells.tdrg, &cells.swlr}) {
        for (const double value : (*sums)[c]) put(cells_, static_cast<float>(value));
      }
      std::fputc('\n', cells_);
    }
  }

  tsrf_main01::Run& run_;
  std::vector<Triple> triples_;
  std::FILE* patches_;
  std::FILE* cells_;
  Table no_source_;
};

}  // namespace plain
