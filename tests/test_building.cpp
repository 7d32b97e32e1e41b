// Rooms: closed-form equilibrium, closed balances, pull-down, release and faults.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "../bench/sample_surfaces.hpp"
#include "buildings/building.hpp"
#include "patches_of.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_building;

constexpr double kOutside = 303.0;
/// Air that ventilation brings in, with the factor on its load [kg/s].
constexpr double kAir = 1e5 / (287.0459881231874 * kOutside) * 210.0 * 1.5 * 3.0 / 3600.0 * 0.6;

/// Two alike buildings of uses 1 and 5, each of a wall, a roof and a window, in mixed order.
struct Block {
  Block() : patch(patches_of({30.0, 8.0, 50.0, 10.0, 20.0, 6.0, 5.0})) {
    state = sample::empty_state(7, 3);
    state.uval = {7, 2};
    for (std::size_t p = 0; p < 6; ++p) {
      sample::set_column(state, p, {2, 0.1, 1.0, 2e5, 8.0});
      state.uval(p, 0) = 2.0;
      state.uval(p, 1) = 4e4;
    }
    std::ranges::fill(state.airst.row(0), 1e5);
    std::ranges::fill(state.airst.row(1), kOutside);
    std::ranges::fill(state.airst.row(2), 0.012);
    matprp.materials.resize(3);
    for (std::size_t m = 0; m < 3; ++m) matprp.materials[m].pos = static_cast<std::int32_t>(m + 1);
    lyrstrct.material = {0, 2, 0, 1, 1, 2, -1};
    lyrstrct.building = {0, 0, 1, 0, 1, 1, -1};

    bldng.nbld = 2;
    bldng.BldID = {70, 50};
    bldng.BldCD = {1, 5};
    bldng.Strct = {1, 1};
    bldng.floor = {3, 3};
    bldng.area = {100.0, 100.0};
    bldng.acflr = {0.7, 0.7};
    bldng.shf = {0.8, 0.8};
    bldng.cop = {3.0, 3.0};
    bldng.no_release = {0, 0};
    bldng.Tr = bldng.Tm = {304.0, 304.0};
    bldng.bldat.resize(2);
    for (auto* array : {&bldng.qtrans, &bldng.qroom, &bldng.sensible, &bldng.latent}) {
      array->assign(7, 0.0);
    }
    bldng.qtrans[1] = bldng.qtrans[5] = 200.0;
    rmheat.pairs.BCD = {1, 5};
    rmheat.pairs.Strct = {1, 1};
    rmheat.pairs.sorted = {{(1LL << 32) + 1, 0}, {(5LL << 32) + 1, 1}};
    rmheat.now = {12.0, 4.0, 298.0, 55.0, 1.5, 0.0, 12.0, 4.0, 298.0, 55.0, 1.5, 0.0};
    aircon.pair = {0, 1};
    aircon.tables.resize(2);
    prepare(recorded.log, matprp, lyrstrct, bldng, work);
  }

  std::string step(double time, double dt) {
    return recorded.lines_of([&] {
      tsrf_building::tsrf_building(recorded.log, {}, time, dt, patch, state, rmheat, aircon, bldcmm,
                                   bldng, work);
    });
  }
  void run_plant(double start, double startup, double end) {
    for (auto& table : aircon.tables) table.fill({start, startup, end});
  }
  /// Heat capacity of the air of a building at temperature T [J/K].
  static double air(double T) { return 3 * 100.0 * 3.0 * 1e5 * 1005.0 / (287.0459881231874 * T); }

  RecordedLog recorded;
  tsrf_module_patch::Data patch;
  tsrf_module_data::Data state;
  tsrf_module_matprp::Data matprp;
  tsrf_module_lyrstrct::Data lyrstrct;
  tsrf_module_bldng::Data bldng;
  tsrf_module_rmheat::Data rmheat;
  tsrf_module_aircon::Data aircon;
  tsrf_module_bldcmm::Data bldcmm;
  Work work;
};

TEST(Building, FreeRoomRelaxesToItsEquilibrium) {
  Block block;
  for (int i = 0; i < 60000; ++i) ASSERT_EQ(block.step(300.0 * i, 300.0), "");
  const double solar = 200.0 * 8.0;
  const double transmission = 2.0 * 48.0;
  const double gains = 12.0 * 210.0 + solar;
  const double Tr = kOutside + gains / (transmission + 1005.0 * kAir);
  EXPECT_NEAR(block.bldng.Tr[0], Tr, 1e-8);
  // The slab hands on the sun that it takes: to the room below it and, where that is not
  // conditioned, to the outside.
  const double to_slab = 0.7 * solar / 3.0 / (100.0 * 8.0);
  EXPECT_NEAR(block.bldng.Tm[0], 0.7 * Tr + 0.3 * kOutside + to_slab, 1e-8);
}

TEST(Building, AccountsForAllHeatOverADay) {
  Block block;
  block.run_plant(8.0, 9.0, 18.0);
  const double dt = 600.0;
  for (int i = 0; i < 144; ++i) {
    block.state.tlyr(0, 2) = 300.0 + 8.0 * std::sin(0.05 * i);
    const auto before = block.bldng;
    ASSERT_EQ(block.step(i * dt, dt), "");
    const auto& after = block.bldng;
    const auto& budget = after.bldat[0];
    const double slab = 4e4 * 30.0 * (after.Tm[0] - before.Tm[0]) / dt - 0.7 * 1600.0 / 3.0;
    const double stored = Block::air(before.Tr[0]) * (after.Tr[0] - before.Tr[0]) / dt;
    const double gains = budget[kInternalSensible] + budget[kVentilationSensible];
    const bool on = budget[kSensibleCooled] != 0.0;
    const double h = (i + 1) / 6.0;
    EXPECT_EQ(on, h > 8.01 && h < 18.01) << h;
    const double load =
        budget[kConvection] + budget[kSolar] + gains - 3.0 * slab - (on && h < 9.01 ? stored : 0.0);
    EXPECT_NEAR(budget[kSensibleLoad], load, 1e-9 * 1e5) << h;
    if (!on) {
      const double lost = 2.0 * 48.0 * (after.Tr[0] - kOutside);
      EXPECT_NEAR(stored + lost, 0.3 * 1600.0 + gains - 3.0 * slab, 1e-9 * 1e5) << h;
    }
    // What leaves at the surfaces is the plant's heat and drive, less what ventilation took in.
    const double plant = on ? (budget[kSensibleLoad] + budget[kLatentLoad]) * 4.0 / 3.0 : 0.0;
    EXPECT_NEAR(after.sensible[0] + after.latent[0],
                plant - budget[kVentilationSensible] - budget[kVentilationLatent], 1e-9 * 1e5);
    EXPECT_NEAR(budget[kSensibleReleased] + budget[kVentilationSensible],
                0.8 * (budget[kSensibleLoad] + budget[kLatentLoad]) * 4.0 / 3.0, 1e-9 * 1e5);
  }
}

TEST(Building, PullsDownToTheSetPointAtStartup) {
  Block block;
  block.run_plant(8.0, 9.0, 18.0);
  for (const auto& [time, Tr] : {std::pair{28800.0, 303.0},
                                 {29400.0, 302.0},
                                 {30000.0, 301.0},
                                 {30600.0, 300.0},
                                 {31200.0, 299.0},
                                 {31800.0, 298.0}}) {
    ASSERT_EQ(block.step(time, 600.0), "");
    EXPECT_NEAR(block.bldng.Tr[0], Tr, 1e-9);
  }
  EXPECT_EQ(block.bldng.Tr[0], 298.0);
  block.step(32400.0, 600.0);  // ventilation from 298 K and 55 %
  EXPECT_EQ(block.bldng.Tr[0], 298.0);
  const double e = 0.55 * 611.0 * std::exp(19.850675545287046 * (1.0 - 273.0 / 298.0));
  const double humidity = 0.6219790084242508 * e / (1e5 - 0.3780209915757492 * e);
  const auto& budget = block.bldng.bldat[0];
  EXPECT_NEAR(budget[kVentilationLatent], 2501000.0 * kAir * (0.012 - humidity), 1e-7);
  EXPECT_NEAR(budget[kVentilationSensible], 1005.0 * kAir * (kOutside - 298.0), 1e-7);
  EXPECT_NEAR(budget[kLatentLoad], 4.0 * 210.0 + budget[kVentilationLatent], 1e-9);
}

TEST(Building, ReleasesAtTheSurfacesOfItsUse) {
  constexpr std::array<std::int32_t, 8> kGroups = {1, 1, 1, 1, 2, 2, 1, 1};
  for (std::int32_t use = 1; use <= 8; ++use) {
    EXPECT_EQ(release_group(use), kGroups[static_cast<std::size_t>(use - 1)]);
  }
  Block block;
  block.run_plant(-1.0, 0.0, 24.5);
  block.step(0.0, 600.0);
  const auto& b = block.bldng;
  for (const std::size_t p : {1, 2, 3, 6}) EXPECT_EQ(b.sensible[p], 0.0) << p;
  EXPECT_NEAR(b.sensible[0], b.bldat[0][kSensibleReleased], 1e-9);
  EXPECT_NEAR(b.latent[0], b.bldat[0][kLatentReleased], 1e-9);
  EXPECT_NEAR(b.sensible[4], b.bldat[1][kSensibleReleased] * 20.0 / 26.0, 1e-9);
  EXPECT_NEAR(b.latent[5], b.bldat[1][kLatentReleased] * 6.0 / 26.0, 1e-9);
  EXPECT_NE(b.sensible[0], 0.0);
  block.bldng.no_release = {1, 1};
  block.step(600.0, 600.0);
  for (std::size_t p = 0; p < 7; ++p) EXPECT_EQ(b.sensible[p], 0.0) << p;
}

TEST(Building, SaysWhatIsWrong) {
  Block hot;
  hot.rmheat.now[0] = 1e12;
  const std::string lines = hot.step(0.0, 600.0);
  EXPECT_NE(lines.find("BldID = 70\nroom temperature = "), std::string::npos) << lines;
  EXPECT_TRUE(lines.ends_with("it must be >= 1 and <= 10000\n(tsrf_building)\n")) << lines;
  Block bare;
  bare.work.surfaces.clear();
  EXPECT_EQ(bare.step(0.0, 600.0), "### program error -1- (tsrf_building)\nBldID = 70\n");
  const auto warning = [&](double dt) {
    return bare.recorded.lines_of([&] { warn_of_step(bare.recorded.log, dt, {}); });
  };
  EXPECT_EQ(warning(900.0), "");
  EXPECT_EQ(warning(910.0).find("%%% warning : dtmax = 910 s;"), 0U);
}

}  // namespace
