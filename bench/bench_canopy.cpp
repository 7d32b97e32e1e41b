// The canopy's kernels on a park of trees (200 x 200 cells divided twice, crowns on a third of
// them, 210,000 leaf cells, a patch of ground in each cell), each beside its plain form: the beam's
// sweep, and the relaxation of scattered light in the near infra-red, where leaves scatter most.
#include <benchmark/benchmark.h>

#include "plain_canopy.hpp"
#include "ratio.hpp"
#include "sample_canopy.hpp"

namespace {

/// Crowns of 3 x 3 cells, four layers high, in a wide grid.
CanopyCase park() {
  Draw draw(1);
  CanopyCase::Widths widths;
  for (std::size_t a = 0; a < 3; ++a) widths[a].assign(a < 2 ? 200 : 10, 2.0);
  std::vector<CanopyCase::Leaf> leaves;
  std::vector<double> crowns;
  for (int n = 0; n < 67 * 67; ++n) crowns.push_back(draw.real(0.0, 1.0));
  for (std::int32_t k = 4; k < 8; ++k) {
    for (std::int32_t j = 0; j < 400; ++j) {
      for (std::int32_t i = 0; i < 400; ++i) {
        const double crown = crowns[static_cast<std::size_t>(j / 6 * 67 + i / 6)];
        if (crown < 1.0 / 3.0) leaves.push_back({i, j, k, 0.3 + 3.0 * crown});
      }
    }
  }
  CanopyCase x(widths, 2, leaves);
  for (std::int32_t j = 1; j <= 200; ++j) {
    for (std::int32_t i = 1; i <= 200; ++i) x.add_patch(3, {i, j, 1}, 4.0, {0.0, 0.0, 1.0});
  }
  x.prepare();
  return x;
}

const tsrf_module_phydat::SunVector kSun{0.48, -0.36, 0.8};

void beam_sweep(benchmark::State& state) {
  CanopyCase x = park();
  plain::BeamSweep plain(x.canopy());
  const auto& optics = x.trees.radiat.optics;
  compare(
      state, [] {}, [&] { plain.run(x.canopy(), kSun, 800.0, optics); },
      [&] { jmk::sweep_beam(*x.crew, kSun, 800.0, optics, x.canopy()); });
  if (plain.lost != x.canopy().beam.lost) state.SkipWithError("the two forms differ");
}
BENCHMARK(beam_sweep)->UseManualTime()->Unit(benchmark::kMillisecond);

void scattered_light(benchmark::State& state) {
  CanopyCase x = park();
  constexpr auto kBand = jmk_module_radiat::kNearInfrared;
  auto& band = x.canopy().bands[kBand];
  for (double& flux : band.outside) flux = 100.0;
  for (std::size_t c = 0; c < band.source.size(); ++c) {
    if (x.canopy().cells.leaf[c] >= 0) band.source[c] = 50.0;
  }
  const jmk::Tolerance tolerance{1e-12, 1e-10};
  plain::Relaxation plain(x.canopy());
  const auto dark = [&] {
    std::fill(band.entering.begin(), band.entering.end(), 0.0);
    std::fill(plain.entering.begin(), plain.entering.end(), std::array<double, 6>{});
  };
  std::int32_t sweeps = 0;
  compare(
      state, dark, [&] { plain.run(x.canopy(), x.trees.radiat, kBand, tolerance); },
      [&] {
        sweeps = jmk::jmk_difrad_flux(x.recorded.log, *x.crew, x.canopy(), 100, tolerance, band);
      });
  state.counters["sweeps"] = sweeps;
  const auto leaving = band.entering.end() - static_cast<std::ptrdiff_t>(plain.leaving.size());
  if (!std::equal(plain.leaving.begin(), plain.leaving.end(), leaving)) {
    state.SkipWithError("the two forms differ");
  }
}
BENCHMARK(scattered_light)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
