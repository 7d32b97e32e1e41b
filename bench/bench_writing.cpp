// Writing PatchSurfTemp: 1,000,000 patches, one hour, against the plain forms.
//
// Every form writes the same bytes to /dev/null. Counter `ratio` of the writer's own line is the
// time of the snprintf form over its time, measured turn by turn in this process.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iostream>

#include "ratio.hpp"
#include "results/patch_surf_temp.hpp"

namespace {

constexpr std::int32_t kPatches = 1000000;

struct District {
  District() {
    patch.mpatch = kPatches;
    for (std::int32_t p = 0; p < kPatches; ++p) {
      patch.PID.push_back(p + 1);
      patch.i.push_back(p % 300 + 1);
      patch.j.push_back(p / 300 + 1);
      patch.k.push_back(p % 20);
      area.push_back(4.0 + p % 5);
      const double x = p * 0.001;
      temperature.push_back(290.0 + 20.0 * std::sin(x));
      JRl.push_back(400.0 + 30.0 * std::sin(3.0 * x));
      JRs.push_back(100.0 + 99.0 * std::sin(5.0 * x));
      latent.push_back(p % 4 == 0 ? -30.0 * std::sin(x) : 0.0);
      conductive.push_back(200.0 * std::sin(7.0 * x));
    }
  }
  tsrf_module_patch::Data patch;
  std::vector<double> temperature, JRl, JRs, latent, conductive, area;
};

void write_fast(const District& d, frame::Log& log, frame::TextOutput& file) {
  tsrf_module_io::FileStart start;
  frame::Crew crew;
  tsrf_module_io::write_patchsurftemp(
      log, crew, file, {}, 3600, d.patch,
      {d.temperature, 273.15, d.JRl, d.JRs, d.latent, d.conductive, d.area}, start);
}

void write_snprintf(const District& d, std::FILE* file) {
  for (std::size_t p = 0; p < kPatches; ++p) {
    std::fprintf(file, "%8d%5d%5d%5d%3d %13.5E %13.5E %13.5E %13.5E %13.5E %13.5E\n",
                 d.patch.PID[p], d.patch.i[p], d.patch.j[p], d.patch.k[p], 1,
                 d.temperature[p] - 273.15, d.JRl[p], d.JRs[p], d.latent[p], d.conductive[p],
                 d.area[p]);
  }
  std::fflush(file);
}

void write_stream(const District& d, std::ostream& file) {
  file << std::scientific << std::uppercase << std::setprecision(5);
  for (std::size_t p = 0; p < kPatches; ++p) {
    file << std::setw(8) << d.patch.PID[p] << std::setw(5) << d.patch.i[p] << std::setw(5)
         << d.patch.j[p] << std::setw(5) << d.patch.k[p] << std::setw(3) << 1;
    for (const double value :
         {d.temperature[p] - 273.15, d.JRl[p], d.JRs[p], d.latent[p], d.conductive[p], d.area[p]}) {
      file << ' ' << std::setw(13) << value;
    }
    file << '\n';
  }
  file.flush();
}

void Writer(benchmark::State& state) {
  const District district;
  frame::Log log(std::cout, std::cerr);
  frame::TextOutput fast("/dev/null");
  std::FILE* plain = std::fopen("/dev/null", "w");
  compare(
      state, [] {}, [&] { write_snprintf(district, plain); },
      [&] { write_fast(district, log, fast); });
  std::fclose(plain);
}
BENCHMARK(Writer)->UseManualTime()->Unit(benchmark::kMillisecond);

void PlainSnprintf(benchmark::State& state) {
  const District district;
  std::FILE* file = std::fopen("/dev/null", "w");
  for (auto _ : state) write_snprintf(district, file);
  std::fclose(file);
}
BENCHMARK(PlainSnprintf)->Unit(benchmark::kMillisecond);

void PlainStream(benchmark::State& state) {
  const District district;
  std::ofstream file("/dev/null");
  for (auto _ : state) write_stream(district, file);
}
BENCHMARK(PlainStream)->Unit(benchmark::kMillisecond);

}  // namespace
