// Temperatures by rule and the progress record.
#include <gtest/gtest.h>

#include <array>

#include "../bench/sample_surfaces.hpp"
#include "driver/progress.hpp"
#include "patches_of.hpp"
#include "recorded_log.hpp"
#include "surface/fixed_temperature.hpp"
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
