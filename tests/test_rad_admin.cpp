// The order of a step's radiation: who gets sun, sky, exchange and trees, by the two switches.
#include <gtest/gtest.h>

#include <cmath>

#include "driver/rad_admin.hpp"
#include "inputs/moist_air.hpp"
#include "patches_of.hpp"
#include "radiation/view_factor_table.hpp"
#include "recorded_log.hpp"
#include "trees/jumoku.hpp"

namespace {

constexpr double kSigma = moist_air::kStefanBoltzmann;

/// One patch of each type, the last two of none, facing up under half a sky, none of which sees
/// another.
struct Step {
  explicit Step(std::int32_t LCRADL, std::int32_t LCRADS) {
    constexpr std::int32_t n = 9;
    patch.type = {1, 2, 3, 4, 5, 6, 7, 8, 100000};
    raddat.settings.LCRADL = LCRADL;
    raddat.settings.LCRADS = LCRADS;
    raddat.NPGID = n;
    raddat.pgx = {8, 7, 6, 5, 4, 3, 2, 1, 0};
    raddat.view_factors = tsrf_module_raddat::ViewFactorGatherer(n).take_table(crew);
    srfprp.ems = {0.9};
    srfprp.alb = {0.2};
    state.isrf.assign(n, 0);
    state.treemk.assign(n, 0);
    state.tlyr = frame::PatchTable<double>(n, 3, 290.0);
    state.airst = frame::PatchTable<double>(n, 4, 101325.0);
    state.treeax = frame::PatchTable<double>(n, 3, 300.0);
    for (std::size_t p = 0; p < n; ++p) {
      state.airst(p, 1) = 295.0;
      state.airst(p, 2) = 0.01;
      state.airst(p, 3) = 2.0;
      state.treeax(p, 0) = 1.5;
      state.treeax(p, 1) = 4.0;
    }
    allocdata01(recorded.log, n, raddat);
    rad_admin::allocdata(recorded.log, n, srfprp, raddat, work);
  }
  void run() {
    const auto sundir = [&] {
      calls += "sundir ";
      Jdir[0] *= 0.5;  // the crown before the wall
    };
    const auto trcanopy = [&] { calls += "trcanopy "; };
    rad_admin::rad_admin(recorded.log, crew, accounts, {0.6, 0.0, 0.8}, {500, 100, 350}, patch,
                         srfprp, {htrans, radiat, sundir, trcanopy}, state, raddat,
                         {fsun, skyvf, Jdir, Rl, Rs}, work);
  }
  RecordedLog recorded;
  frame::Crew crew;
  frame::Accounts accounts;
  tsrf_module_patch::Data patch = patches_of(std::vector<double>(9, 2.0));
  tsrf_module_srfprp::Data srfprp;
  tsrf_module_data::Data state;
  tsrf_module_raddat::Data raddat;
  jmk_module_htrans::Data htrans;
  jmk_module_radiat::Data radiat;
  std::vector<double> fsun = std::vector<double>(9, 1.0), skyvf = std::vector<double>(9, 0.5);
  std::vector<double> Jdir = fsun, Rl = fsun, Rs = fsun;
  rad_admin::Work work;
  std::string calls;
};

TEST(RadAdmin, SwitchesDecideThePathOfAStep) {
  struct Row {
    std::int32_t LCRADL, LCRADS;
    std::string calls;
    double wall_direct;  // the canopy's shade counts where the short-wave exchange is on
    double skyvf;
  };
  for (const Row& row : {Row{1, 1, "sundir trcanopy ", 200, 1.0}, Row{1, 0, "sundir ", 400, 1.0},
                         Row{0, 1, "sundir ", 200, 0.5}, Row{0, 0, "", 400, 0.5}}) {
    SCOPED_TRACE(testing::Message() << row.LCRADL << row.LCRADS);
    Step step(row.LCRADL, row.LCRADS);
    step.run();
    EXPECT_EQ(step.calls, row.calls);
    // With the long-wave exchange alone skyvf is 1 when the short-wave part is formed.
    const double sky = row.LCRADS > 0 ? 50.0 : 100.0 * row.skyvf;
    for (std::size_t p = 0; p < 9; ++p) {
      const bool takes_beam = p != 1 && p != 5 && p < 7;
      EXPECT_NEAR(step.Rs[p], sky + (p == 0 ? row.wall_direct : takes_beam ? 400.0 : 0.0), 1e-10);
      EXPECT_NEAR(step.Rl[p], 175.0, 1e-10);
      EXPECT_EQ(step.skyvf[p], row.skyvf);
      if (row.LCRADL == 0) continue;
      // Emission at 290 K and the reflected tenth; a tree patch sends on what it was left with.
      const double emitted = p == 1 ? 405.0 : !takes_beam ? 0.0 : 0.9 * kSigma * std::pow(290.0, 4);
      EXPECT_NEAR(step.raddat.JRl[p], emitted + 17.5, 1e-9);
    }
    EXPECT_NEAR(step.raddat.JRs[3], row.LCRADS > 0 ? 0.2 * step.Rs[3] : 0.0, 1e-10);
  }
}

TEST(RadAdmin, ATreeOverAPatchShadesItOnlyWithoutTheExchange) {
  Step open(0, 0);
  Step under(0, 0);
  under.state.treemk[0] = 1;
  open.run();
  under.run();
  jmk::SimpleTree tree{.LAD = 1.5, .H = 4.0, .T = 300.0};
  const jmk::Ground ground{
      .cosi = 0.8, .emission = 0.9 * kSigma * std::pow(290.0, 4), .emissivity = 0.9, .albedo = 0.2};
  const jmk::Air air{.p = 101325.0, .T = 295.0, .q = 0.01, .U = 2.0};
  const auto beneath = jmk::jumoku(under.recorded.log, under.htrans, under.radiat, {0.6, 0.0, 0.8},
                                   ground, air, {500, 50, 175}, tree);
  EXPECT_NEAR(under.Rs[0], beneath.direct * 0.8 + beneath.scattered, 1e-9);
  EXPECT_NEAR(under.Rl[0], beneath.longwave, 1e-9);
  EXPECT_NEAR(under.state.treeax(0, 2), tree.T, 1e-9);
  EXPECT_NE(under.state.treeax(0, 2), 300.0);
  EXPECT_EQ(under.Rs[3], open.Rs[3]);
  Step both(1, 1);
  both.state.treemk[0] = 1;
  both.run();
  EXPECT_EQ(both.state.treeax(0, 2), 300.0);
  // A short-wave exchange keeps its own Rs and takes the long-wave from beneath the tree.
  Step half(0, 1);
  half.state.treemk[0] = 1;
  half.run();
  EXPECT_EQ(half.Rl[0], under.Rl[0]);
  EXPECT_EQ(half.Rs[0], both.Rs[0]);
}

}  // namespace
