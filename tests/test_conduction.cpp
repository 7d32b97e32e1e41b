// Conduction in the columns: bits of the plain form, a closed-form solution.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "../bench/plain_surface.hpp"
#include "../bench/sample_surfaces.hpp"
#include "recorded_log.hpp"
#include "surface/conduction.hpp"
#include "surface/window.hpp"

namespace {

/// One column that a test marches on.
struct Single {
  explicit Single(const sample::Column& column)
      : state(sample::empty_state(1, column.cells + 1)), last(column.cells) {
    sample::set_column(state, 0, column);
    solid1d::set_columns(recorded.log, state, {}, work);
  }
  void step(double dt) { solid1d::solid1d(crew, dt, {}, state, work); }
  double& T(std::int32_t k) { return state.tlyr(0, k); }
  /// Flux into the column from both its ends.
  double inflow() {
    return state.gcond(0, 0) * (T(0) - T(1)) + state.gcond(0, last) * (T(last + 1) - T(last));
  }

  RecordedLog recorded;
  frame::Crew crew;
  solid1d::Work work;
  tsrf_module_data::Data state;
  std::int32_t last;
};

sample::Column concrete(std::int32_t cells, double dz, double hin = 0.0) {
  return {cells, dz, 1.6, 2.3e6, hin};
}

/// Makes patch p's column that of its neighbour but for one number of one cell: columns share their
/// coefficients only where all is the same.
void make_twin(std::size_t p, tsrf_module_data::Data& state) {
  const std::int32_t cells = state.nlyr[p] = state.nlyr[p - 1];
  state.lcal[p] = state.lcal[p - 1];
  for (auto* table : {&state.dzl, &state.capa, &state.gcond}) {
    for (std::int32_t k = 0; k < state.mzg; ++k) (*table)(p, k) = (*table)(p - 1, k);
  }
  if (cells == 0) return;
  auto* const table = std::array{&state.dzl, &state.capa, &state.gcond}[p % 3];
  (*table)(p, static_cast<std::int32_t>(p / 3) % cells) *= 1.5;
}

TEST(Conduction, HasTheBitsOfThePlainForm) {
  RecordedLog recorded;
  for (std::uint32_t seed = 1; seed <= 12; ++seed) {
    sample::District fast(5000, seed);
    for (std::size_t p = 1; p < fast.Rl.size(); p += 5) make_twin(p, fast.state);
    const std::vector<std::int32_t> heated = {3, 4, 700, 4444};
    frame::PatchTable<double> qlayer(fast.state.mpatch, fast.state.mzg);
    for (const std::int32_t p : heated) {
      for (std::int32_t k = 0; k < fast.state.nlyr[static_cast<std::size_t>(p)]; ++k) {
        qlayer(static_cast<std::size_t>(p), k) = -100.0 * seed - k;
      }
    }
    sample::District plain = fast;
    frame::Crew crew({1 + seed % 4});
    solid1d::Work work;
    solid1d::set_columns(recorded.log, fast.state, heated, work);
    for (const double dt : {1.0, 300.0, 300.0, 36000.0, 300.0}) {
      solid1d::solid1d(crew, dt, qlayer, fast.state, work);
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

#ifndef __SANITIZE_ADDRESS__  // which ends the program where memory fails
// Building surfaces of glass, the first and the last patch among them, and no others.
TEST(Glass, TakesWhatDoesNotPassIt) {
  auto state = sample::empty_state(5, 3);
  for (std::size_t p = 0; p < 5; ++p) {
    sample::set_column(state, p, {2, 0.01, 1.0, 2e6, 8.0});
    state.extc(p, 0) = 10.0;
    state.extc(p, 1) = 30.0;
  }
  tsrf_module_matprp::Data matprp;
  matprp.materials.resize(2);
  matprp.materials[1].pos = 3;
  tsrf_module_lyrstrct::Data lyrstrct;
  lyrstrct.material = {1, 0, 1, -1, 1};
  lyrstrct.building = {0, 0, -1, 0, 0};
  tsrf_module_srfprp::Data srfprp;
  srfprp.alb = {0.25};
  RecordedLog recorded;
  tsrf_window::Glass glass;
  tsrf_window::set_glass(recorded.log, lyrstrct, matprp, state, glass);
  frame::PatchTable<double> taken(5, 2);
  std::vector<double> passed(5), beam(5, 800.0);
  tsrf_window::window(glass, srfprp, state, beam, taken, passed);
  for (std::size_t p = 0; p < 5; ++p) {
    const double in = p == 0 || p == 4 ? 600.0 : 0.0;
    EXPECT_NEAR(taken(p, 0), in * (std::exp(-0.1) - 1.0), 1e-10) << p;
    EXPECT_NEAR(passed[p], in * std::exp(-0.4), 1e-10) << p;
    EXPECT_NEAR(taken(p, 0) + taken(p, 1), passed[p] - in, 1e-10) << p;
  }
}

TEST(State, TellsWhichArrayFindsNoMemory) {
  RecordedLog recorded;
  tsrf_module_data::Data data;
  data.mpatch = 1 << 14;
  data.mzg = std::numeric_limits<std::int32_t>::max() - 1;  // beyond any address space
  EXPECT_EQ(recorded.lines_of([&] { allocdata02(recorded.log, data); }),
            "### error : allocation failed\narray,bytes = dzl 281474976448512\n"
            "(tsrf_module_data)(allocdata02)\n");
}
#endif

}  // namespace
