// Conduction in the columns: bits of the plain form, closed-form solutions, conservation.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

#include "../bench/plain_surface.hpp"
#include "../bench/sample_surfaces.hpp"
#include "recorded_log.hpp"
#include "surface/conduction.hpp"

namespace {

constexpr double kDiffusivity = 1.6 / 2.3e6;

/// One column that a test marches on.
struct Single {
  explicit Single(const sample::Column& column)
      : state(sample::empty_state(1, column.cells + 1)), last(column.cells) {
    sample::set_column(state, 0, column);
    solid1d::set_columns(recorded.log, state, {}, work);
  }
  void step(double dt) { solid1d::solid1d(dt, {}, state, work); }
  double& T(std::int32_t k) { return state.tlyr(0, k); }
  double stored() {
    double sum = 0.0;
    for (std::int32_t k = 1; k <= last; ++k) {
      sum += state.capa(0, k - 1) * state.dzl(0, k - 1) * T(k);
    }
    return sum;
  }
  /// Flux into the column from both its ends.
  double inflow() {
    return state.gcond(0, 0) * (T(0) - T(1)) + state.gcond(0, last) * (T(last + 1) - T(last));
  }

  RecordedLog recorded;
  solid1d::Work work;
  tsrf_module_data::Data state;
  std::int32_t last;
};

sample::Column concrete(std::int32_t cells, double dz, double hin = 0.0) {
  return {cells, dz, 1.6, 2.3e6, hin};
}

TEST(Conduction, HasTheBitsOfThePlainForm) {
  RecordedLog recorded;
  for (std::uint32_t seed = 1; seed <= 12; ++seed) {
    sample::District fast(5000, seed);
    const std::vector<std::int32_t> heated = {3, 4, 700, 4444};
    frame::PatchTable<double> qlayer(fast.state.mpatch, fast.state.mzg);
    for (const std::int32_t p : heated) {
      for (std::int32_t k = 0; k < fast.state.nlyr[static_cast<std::size_t>(p)]; ++k) {
        qlayer(static_cast<std::size_t>(p), k) = -100.0 * seed - k;
      }
    }
    sample::District plain = fast;
    solid1d::Work work;
    solid1d::set_columns(recorded.log, fast.state, heated, work);
    for (const double dt : {1.0, 300.0, 300.0, 36000.0, 300.0}) {
      solid1d::solid1d(dt, qlayer, fast.state, work);
      plain::solid1d(dt, qlayer, plain.state);
      for (std::size_t p = 0; p < fast.Rl.size(); ++p) {
        // The node behind the last cell is held here; the plain form moves it a little.
        const std::int32_t far = fast.state.nlyr[p] + 1;
        EXPECT_NEAR(plain.state.tlyr(p, far), fast.state.tlyr(p, far), 0.01);
        plain.state.tlyr(p, far) = fast.state.tlyr(p, far);
      }
      ASSERT_TRUE(std::ranges::equal(fast.state.tlyr.all(), plain.state.tlyr.all())) << dt;
    }
  }
}

TEST(Conduction, IsExplicitUpToTheLimit) {
  for (const auto& [dt, rise] :
       {std::pair{1.0, 9.9}, {std::nextafter(1.0, 2.0), 10.0 * 0.99 / 1.99}}) {
    Single column({1, 1.0, 0.495, 1.0, 0.0});  // stiffness 0.99 per second
    column.T(0) = 310.0;
    column.step(dt);
    EXPECT_NEAR(column.T(1), 300.0 + rise, 1e-12);
  }
}

TEST(Conduction, StoresWhatFlowsIn) {
  for (const double dt : {60.0, 20000.0}) {  // explicit: fluxes at the start; implicit: at the end
    Single column(concrete(6, 0.03, 8.0));
    for (std::int32_t k = 0; k <= 7; ++k) column.T(k) = 300.0 + 10.0 * std::sin(1.7 * k);
    const double before = column.stored();
    const double at_start = column.inflow();
    column.step(dt);
    const double inflow = column.work.kinds[0].implicit ? column.inflow() : at_start;
    EXPECT_NEAR(column.stored() - before, dt * inflow, 1e-12 * before);
  }
}

TEST(Conduction, SettlesToTheSeriesOfResistances) {
  Single column(concrete(5, 0.04, 8.0));
  column.T(0) = 320.0;
  column.T(6) = 293.0;
  for (int i = 0; i < 3; ++i) column.step(1e9);
  const double flux = 27.0 / (0.2 / 1.6 + 1.0 / 8.0);
  for (std::int32_t k = 1; k <= 5; ++k) {
    EXPECT_NEAR(column.T(k), 320.0 - flux * (k - 0.5) * 0.04 / 1.6, 1e-6);
  }
}

TEST(Conduction, FollowsTheErrorFunction) {
  // Step of the surface of a half space by 1 K; after one hour (Carslaw and Jaeger 1959).
  constexpr double dz = 0.002;
  Single column(concrete(200, dz));
  column.T(0) = 301.0;
  constexpr int kSteps = 2400;
  for (int i = 0; i < kSteps; ++i) column.step(3600.0 / kSteps);
  for (const auto& [x, rise] : {std::pair{0.02, 0.777486}, {0.05, 0.479882}, {0.10, 0.157660}}) {
    const auto k = static_cast<std::int32_t>(std::lround(x / dz));  // between cells k and k+1
    EXPECT_NEAR(0.5 * (column.T(k) + column.T(k + 1)) - 300.0, rise, 1e-4);
  }
  EXPECT_NEAR(10.0 * column.inflow(), 180.3839, 0.02);
}

/// Amplitude over the exact one, as a complex number, 0.14 m deep in a half space whose surface
/// swings by the day; 1 where the scheme is exact.
std::complex<double> periodic_response(double dz) {
  using std::numbers::pi;
  const double omega = 2.0 * pi / 86400.0;
  const double depth = std::sqrt(2.0 * kDiffusivity / omega);
  const auto exact = [&](double x, double t) {
    return 300.0 + 10.0 * std::exp(-x / depth) * std::sin(omega * t - x / depth);
  };
  const auto cells = static_cast<std::int32_t>(std::lround(1.56 / dz));
  const int steps = static_cast<int>(std::ceil(86400.0 / (0.3 * dz * dz / kDiffusivity)));
  const double dt = 86400.0 / steps;
  Single column(concrete(cells, dz));
  for (std::int32_t k = 1; k <= cells; ++k) column.T(k) = exact((k - 0.5) * dz, 0.0);
  const auto place = static_cast<std::int32_t>(std::lround(0.14 / dz + 0.5));
  std::complex<double> sum = 0.0;
  for (int i = 0; i < 2 * steps; ++i) {
    column.T(0) = exact(0.0, i * dt);
    if (i >= steps) sum += (column.T(place) - 300.0) * std::polar(1.0, -omega * i * dt);
    column.step(dt);
  }
  const std::complex<double> i(0.0, 1.0);
  return sum * 2.0 * i / static_cast<double>(steps) / 10.0 * std::exp((1.0 + i) * 0.14 / depth);
}

TEST(Conduction, CarriesTheDaysSwingToSecondOrder) {
  const std::complex<double> coarse = periodic_response(0.04) - 1.0;
  const std::complex<double> fine = periodic_response(0.04 / 3.0) - 1.0;
  EXPECT_LT(std::abs(coarse), 0.03);
  EXPECT_NEAR(std::log(std::abs(coarse) / std::abs(fine)) / std::log(3.0), 2.0, 0.15);
  EXPECT_LT(std::abs(std::arg(fine + 1.0)), 4e-3);
}

TEST(Conduction, WarnsOfImplicitColumns) {
  // Behind the surface the limit is 0.99 C d2/(3 k): 47.4 s for cells of 1 cm, 1186 s for 5 cm.
  // What a surface seems to hold more is dt 2 k/d.
  sample::Column thin = concrete(4, 0.01);
  sample::Column thick = concrete(4, 0.05);
  tsrf_module_data::Data state = sample::empty_state(3, 5);
  sample::set_column(state, 0, thick);
  sample::set_column(state, 1, thin);
  sample::set_column(state, 2, thin);
  tsrf_module_patch::Data patch;
  patch.PID = {7, 8, 9};
  patch.SurfID = {101, 102, 102};
  patch.area = {1.0, 2.0, 3.5};
  RecordedLog recorded;
  solid1d::Work work;
  solid1d::set_columns(recorded.log, state, {}, work);
  const auto warning = [&](double dt) {
    return recorded.lines_of([&] { solid1d::warn_of_implicit(recorded.log, dt, patch, work); });
  };
  EXPECT_EQ(warning(47.0), "");
  const std::string lines = warning(300.0);
  EXPECT_TRUE(
      lines.starts_with("%%% warning : 2 columns of 5.5 m2 are implicit at dtmax = 300 s; "))
      << lines;
  EXPECT_NE(lines.find("PID = 8 SurfID = 102 : 96000 J/m2 K; explicit up to dtmax = 47.4"),
            std::string::npos)
      << lines;
}

}  // namespace
