// Temperatures by rule, glass, the daily residual and the progress record.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "../bench/sample_surfaces.hpp"
#include "driver/daily_residual.hpp"
#include "driver/progress.hpp"
#include "patches_of.hpp"
#include "recorded_log.hpp"
#include "surface/fixed_temperature.hpp"
#include "surface/window.hpp"
#include "temp_folder.hpp"

namespace {

TEST(FixedTemperature, PanelsFollowAirWindAndSun) {
  RecordedLog recorded;
  auto patch = patches_of({1.0, 1.0}, tsrf_module_patch::kSolarPanel);
  patch.type[0] = tsrf_module_patch::kLand;
  tsrf_module_fixtmp::Data fixtmp;
  tsrf_module_fixtmp::read_fixtmp(recorded.log, patch, fixtmp);
  auto state = sample::empty_state(2, 3);
  state.airst(1, 1) = 300.0;
  const auto update = [&](double sun) {
    return recorded.lines_of([&] {
      tsrf_module_fixtmp::calc_temp_pv(recorded.log, 9, patch, std::vector{sun, sun}, fixtmp,
                                       state);
    });
  };
  using Case = std::array<double, 3>;
  for (const auto& [wind, sun, temperature] :
       {Case{3.0, 0.0, 300.0}, {0.0, 1000.0, 351.0}, {1.0, 500.0, 317.613139}}) {
    state.airst(1, 3) = wind;
    EXPECT_EQ(update(sun), "");
    for (std::int32_t k = 0; k <= 3; ++k) EXPECT_NEAR(state.tlyr(1, k), temperature, 1e-6);
    EXPECT_EQ(state.tlyr(0, 0), 300.0);
  }
  EXPECT_NE(update(1e12).find("iter = 9\nPID = 2\n"), std::string::npos);
}

TEST(FixedTemperature, FarBoundaryTakesTheMeanOfTheDistrict) {
  RecordedLog recorded;
  auto patch = patches_of({1.0, 3.0, 5.0, 7.0});
  patch.type[3] = tsrf_module_patch::kFarBoundary;
  tsrf_module_fixtmp::Data fixtmp;
  tsrf_module_fixtmp::read_fixtmp(recorded.log, patch, fixtmp);
  auto state = sample::empty_state(4, 3);
  const auto update = [&] {
    return recorded.lines_of([&] {
      tsrf_module_fixtmp::calc_temp_farbd(recorded.log, patch, state, fixtmp);
      tsrf_module_fixtmp::apply(fixtmp, state);
    });
  };
  EXPECT_EQ(update(), "### program error -1- (tsrf_module_fixtmp)(calc_temp_farbd)\nPID = 4\n");
  state.lcal = {1, 1, 0, 0};
  state.tlyr(1, 0) = 310.0;
  state.tlyr(2, 0) = 400.0;
  EXPECT_EQ(update(), "");
  for (std::int32_t k = 0; k <= 3; ++k) EXPECT_DOUBLE_EQ(state.tlyr(3, k), 307.5);
  EXPECT_EQ(state.tlyr(2, 0), 400.0);
}

TEST(Window, AbsorbedAndTransmittedAreWhatEnters) {
  for (const double extinction : {0.0, 20.0, 1e20}) {
    RecordedLog recorded;
    auto state = sample::empty_state(3, 4);
    for (std::size_t p = 0; p < 3; ++p) sample::set_column(state, p, {3, 0.004, 1.0, 2e6, 8.0});
    std::ranges::fill(state.extc.all(), extinction);
    tsrf_module_matprp::Data matprp;
    matprp.materials.resize(2);
    matprp.materials[1].pos = 3;
    tsrf_module_lyrstrct::Data lyrstrct;
    lyrstrct.material = {0, 1, 1};
    lyrstrct.building = {0, 0, -1};  // a wall, a pane, a pane of no building
    tsrf_module_srfprp::Data srfprp;
    srfprp.alb = {0.1};
    tsrf_window::Glass glass;
    tsrf_window::set_glass(recorded.log, lyrstrct, matprp, state, glass);
    ASSERT_EQ(glass.patches, std::vector<std::int32_t>{1});
    frame::PatchTable<double> qlayer(3, 4);
    std::vector<double> qtrans(3, 0.0);
    tsrf_window::window(glass, srfprp, state, std::vector{500.0, 500.0, 500.0}, qlayer, qtrans);
    const double entering = 0.9 * 500.0;
    EXPECT_NEAR(qtrans[1], entering * std::exp(-extinction * 0.012), 1e-10);
    EXPECT_NEAR(qtrans[1] - (qlayer(1, 0) + qlayer(1, 1) + qlayer(1, 2)), entering, 1e-10);
    EXPECT_NEAR(qlayer(1, 0), entering * (std::exp(-extinction * 0.004) - 1.0), 1e-10);
    EXPECT_EQ(qtrans[0] + qtrans[2] + qlayer(0, 0) + qlayer(2, 0), 0.0);
  }
}

TEST(DailyResidual, IsTheLargestRelativeChangeOfAComputedColumn) {
  auto state = sample::empty_state(600, 4);
  for (std::size_t p = 0; p < 600; ++p) sample::set_column(state, p, {2, 0.1, 1.0, 2e6, 0.0});
  EXPECT_EQ(tsrf_main01::daily_residual(state), 1.0);
  EXPECT_EQ(tsrf_main01::daily_residual(state), 0.0);
  state.lcal[5] = 0;
  state.tlyr(5, 0) = 400.0;    // not computed
  state.tlyr(6, 3) = 400.0;    // behind the column
  state.tlyr(7, 2) += 1.0;     // a smaller change
  state.tlyr(599, 1) += 30.0;  // 3 nodes: 300, 330, 300
  EXPECT_DOUBLE_EQ(tsrf_main01::daily_residual(state), std::sqrt(900.0 / (2 * 90000.0 + 108900.0)));
  EXPECT_EQ(tsrf_main01::daily_residual(state), 0.0);
}

TEST(Progress, EstimatesTheTimeLeftOverMidnights) {
  RecordedLog recorded;
  TempFolder folder;
  frame::TextOutput file(folder.path("progress"));
  progress::Data data;
  progress::WallClock now{2024, 2, 29, 23, 59, 0};
  data.clock = [&now] { return now; };
  progress::note_start(data);
  const auto row = [&](const progress::WallClock& at, std::int32_t sod1, double res) {
    now = at;
    progress::update(recorded.log, file, sod1, res, data);
  };
  row({2024, 2, 29, 23, 59, 10}, 3600, 1e20);
  row({2024, 3, 1, 0, 0, 40}, 86400, 1.0);  // first day: 100 s
  row({2024, 3, 1, 0, 0, 41}, 1800, 1e20);  // no whole hour
  row({2024, 3, 1, 0, 2, 20}, 86400, 0.1);  // one decade in 100 s, 4 left
  row({2024, 3, 1, 0, 10, 0}, 86400, 0.2);  // no better: without end
  progress::write_closing_stamp(recorded.log, file, data);
  EXPECT_EQ(folder.content("progress"),
            "2024/02/29, 23:59:10,         10,        999\n"
            "2024/03/01, 00:00:40,        100,  864000000\n"
            "2024/03/01, 00:02:20,        200,        400\n"
            "2024/03/01, 00:10:00,        660, 2147483647\n"
            "2024/03/01, 00:10:00,         -1,         -1\n");
}

}  // namespace
