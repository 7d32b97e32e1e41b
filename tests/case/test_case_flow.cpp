// The air flow of a written run: the wind that comes, and a whole run behind the surface model's.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "check/check.hpp"
#include "run_case.hpp"
#include "run_parts.hpp"
#include "scene/open_air.hpp"

namespace {

using namespace townskin_case;

struct WindRow {
  double from, turn;  ///< [degree]
  double along_x, along_y;
};

TEST(CaseFlow, WindBlowsAwayFromWhereItComesInTheFrameOfTheCells) {
  const double half = std::sqrt(0.5);
  const std::vector<WindRow> rows{{270, 0, 1, 0},   {0, 0, 0, -1},        {360, 0, 0, -1},
                                  {90, 0, -1, 0},   {225, 0, half, half}, {270, 90, 0, -1},
                                  {315, 45, 0, -1}, {270.3, 0, 1, 0}};
  for (const WindRow& row : rows) {
    SCOPED_TRACE(row.from);
    Site site;
    site.flow.direction = row.from;
    site.flow.wind = 4.0;
    Scene scene = block_scene::scene();
    scene.grid.turn = row.turn * 3.14159265358979 / 180.0;
    Days days;
    days.hours.resize(24);
    for (int hour = 1; hour <= 24; ++hour) {
      days.hours[static_cast<std::size_t>(hour - 1)] = {.month = 7, .hour = hour, .pressure = 1e5};
    }
    Report report;
    const FlowSetup flow = flow_setup(site, scene, days, report);
    EXPECT_NEAR(flow.along_x, row.along_x, 2e-5);
    EXPECT_NEAR(flow.along_y, row.along_y, 2e-5);
    EXPECT_EQ(flow.along_x == 0.0, row.along_x == 0.0);
    EXPECT_EQ(flow.along_y == 0.0, row.along_y == 0.0);
    // The same wind 60 m up as over open land of roughness 3 cm.
    EXPECT_NEAR(flow.wind.speed(60.0), 4.0 * std::log(60.0 / 0.03) / std::log(10.0 / 0.03), 1e-9);
    for (std::size_t a = 0; a < 2; ++a) {
      const auto first = static_cast<std::size_t>(flow.before[a]);
      for (std::size_t n = 0; n < scene.grid.nodes[a].size(); ++n) {
        EXPECT_NEAR(flow.nodes[a][first + n], scene.grid.nodes[a][n], 1e-9);
      }
    }
    EXPECT_TRUE(report.lines().empty());
  }
}

TEST(CaseFlow, MeanDirectionsGoRoundNorth) {
  const std::vector<EpwHour> hours{
      {.wind = 2, .direction = 350}, {.wind = 2, .direction = 20}, {.wind = 9, .direction = -1}};
  EXPECT_NEAR(mean_direction(hours), 5.0, 1e-9);
  EXPECT_EQ(mean_direction(std::vector<EpwHour>{{.wind = 0, .direction = 90}}), -1.0);
}

/// A well of one cell in a block of four layers, open above or not, and a cell with a slit.
Porous well(bool open_above) {
  Porous porous;
  porous.cells = {3, 3, 4};
  porous.volume.assign(36, 0.0);
  for (auto& axis : porous.face) axis = {std::vector<double>(36), std::vector<double>(36)};
  for (std::int32_t k = 1; k <= 4; ++k) {
    const std::size_t at = porous.at({2, 2, k});
    porous.volume[at] = 1.0;
    porous.face[2][0][at] = k > 1 ? 1.0 : 0.0;
    porous.face[2][1][at] = k < 4 || open_above ? 1.0 : 0.05;
  }
  porous.volume[porous.at({1, 1, 4})] = 0.19;
  porous.face[2][1][porous.at({1, 1, 4})] = 1.0;
  return porous;
}

TEST(CaseFlow, AirFillsWhatItReaches) {
  const Porous open = open_air(well(true));
  EXPECT_EQ(open.volume[open.at({2, 2, 1})], 1.0);
  EXPECT_EQ(open.volume[open.at({1, 1, 4})], 0.0);
  EXPECT_EQ(air_above(open, {2, 2, 2}), (std::array{2, 2, 2}));
  EXPECT_EQ(air_above(open, {1, 2, 2}), (std::array{1, 2, 5}));
  const Porous closed = open_air(well(false));
  EXPECT_EQ(closed.volume[closed.at({2, 2, 1})], 0.0);
  EXPECT_EQ(closed.face[2][1][closed.at({2, 2, 1})], 0.0);
}

/// The last set of a flow's restart file: its reals, record by record.
std::vector<std::vector<double>> last_set(const std::string& bytes) {
  std::vector<std::vector<double>> records;
  for (std::size_t at = 0; at + 8 < bytes.size();) {
    std::int32_t size = 0;
    std::memcpy(&size, bytes.data() + at, 4);
    std::vector<double> reals(static_cast<std::size_t>(size) / 8);
    std::memcpy(reals.data(), bytes.data() + at + 4, reals.size() * 8);
    records.push_back(std::move(reals));
    at += static_cast<std::size_t>(size) + 8;
  }
  return records;
}

/// The air that a run has left, in cells counted from 0.
class Air {
 public:
  Air(const FlowSetup& flow, const std::string& bytes) : flow_(flow), set_(last_set(bytes)) {
    for (std::size_t a = 0; a < 3; ++a) n_[a] = flow.nodes[a].size() - 1;
  }
  [[nodiscard]] double excess(std::size_t i, std::size_t j, std::size_t k) const {
    return set_[4][i + n_[0] * (j + n_[1] * k)] - flow_.station.temperature;
  }
  /// Through the four sides, outward: mass [kg/s], and heat that it carries above the station's air
  /// [W]; `most` becomes the largest amount of mass through one of them.
  std::array<double, 2> outward(double& most) const {
    std::array<double, 2> sum{};
    for (std::size_t axis = 0; axis < 2; ++axis) {
      for (const bool far : {false, true}) {
        double mass = 0.0;
        for_faces(axis, far, [&](double through, double warmer) {
          mass += through;
          sum[1] += 1005.0 * through * warmer;
        });
        sum[0] += mass;
        most = std::max(most, std::abs(mass));
      }
    }
    return sum;
  }
  [[nodiscard]] std::array<std::size_t, 3> warmest() const {
    const auto at = static_cast<std::size_t>(std::ranges::max_element(set_[4]) - set_[4].begin());
    return {at % n_[0], at / n_[0] % n_[1], at / (n_[0] * n_[1])};
  }

 private:
  [[nodiscard]] double size(std::size_t a, std::size_t cell) const {
    return flow_.nodes[a][cell + 1] - flow_.nodes[a][cell];
  }
  template <class Use>
  void for_faces(std::size_t axis, bool far, Use&& use) const {
    const std::size_t other = 1 - axis;
    for (std::size_t k = 0; k < n_[2]; ++k) {
      for (std::size_t along = 0; along < n_[other]; ++along) {
        std::array<std::size_t, 3> face{along, along, k};
        face[axis] = far ? n_[axis] : 0;
        const std::size_t wide = n_[0] + (axis == 0 ? 1 : 0), deep = n_[1] + (axis == 1 ? 1 : 0);
        const double flux = set_[6 + axis][face[0] + wide * (face[1] + deep * k)];
        const double area = size(other, along) * size(2, k);
        std::array<std::size_t, 3> cell = face;
        cell[axis] -= far ? 1 : 0;
        use((far ? 1.0 : -1.0) * flux * area, excess(cell[0], cell[1], cell[2]));
      }
    }
  }

  const FlowSetup& flow_;
  std::vector<std::vector<double>> set_;
  std::array<std::size_t, 3> n_{};
};

/// What surfaces and buildings give to the air of the last hour [W].
double heat_given(const run_case::RunCase& run, const Parts& parts, const Air& air) {
  const std::string hour = std::to_string(parts.site.flow.hour);
  double heat = 0.0;
  for (const std::string& line : run_case::lines_of(run.path("SurfTemp.txt"))) {
    const run_case::Lines row = run_case::fields_of(line);
    if (row[0][0] == '#' || row[3] != hour) continue;
    const auto cell = [&](std::size_t a) { return std::stoul(row[a]) - 1; };
    const double excess =
        air.excess(cell(0) + static_cast<std::size_t>(parts.flow.before[0]),
                   cell(1) + static_cast<std::size_t>(parts.flow.before[1]), cell(2));
    heat += std::stod(row[5]) - std::stod(row[4]) * (parts.flow.station.temperature + excess);
  }
  for (const std::string& line : run_case::lines_of(run.path("BldLoad.txt"))) {
    const run_case::Lines row = run_case::fields_of(line);
    if (row[0][0] != '#' && row[3] == hour) heat += std::stod(row[6]) * 4.0 * 4.0 * 3.0;
  }
  return heat;
}

/// Fills the cells of the block.
void fill_block(Scene& scene) {
  using block_scene::kFrom, block_scene::kTo, block_scene::kStoreys;
  for (int k = 1; k <= kStoreys; ++k) {
    for (int j = kFrom + 1; j <= kTo; ++j) {
      for (int i = kFrom + 1; i <= kTo; ++i) scene.air.push_back({{i, j, k}, 0.0, {}});
    }
  }
}

// The wind carries away what surfaces and buildings give off. With a wrong offset of the cells the
// warmth would lie elsewhere, or go into the block with a warning.
TEST(CaseFlow, CarriesTheHeatOfTheSurfacesAway) {
  Scene scene = block_scene::scene();
  add_tree(scene);
  fill_block(scene);
  Site site;
  site.flow.direction = 240.0;
  site.flow.seconds = 240.0;
  site.flow.step = 4.0;
  site.run.most_days = 2;
  const Parts parts({.day = "07-21", .from = {}, .to = {}}, scene, site);
  const TempFolder folder;
  write_run(parts.run(), folder.path());
  const run_case::RunCase run(folder.path());
  std::ostringstream said;  // of results that the flow takes and that are still to come as well
  EXPECT_EQ(check::check_run(run.path().string(), false, said), 0) << said.str();
  ASSERT_EQ(run.run().status, 0);
  const run_case::Outcome outcome = run.run(TOWNSKIN_FLOW_PROGRAM);
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  for (const std::string& line : outcome.log) {
    EXPECT_FALSE(line.starts_with("%%% warning")) << line;
  }
  const Air air(parts.flow, run.content("flow_restart.dat"));
  double largest = 0.0;
  const auto [mass, heat] = air.outward(largest);
  EXPECT_LT(std::abs(mass), 1e-3 * largest);
  const double given = heat_given(run, parts, air);
  EXPECT_GT(given, 20e3);
  EXPECT_NEAR(heat, given, 0.05 * given);
  const std::array<std::size_t, 3> warmest = air.warmest();
  EXPECT_LT(air.excess(warmest[0], warmest[1], warmest[2]), 15.0);
  for (std::size_t a = 0; a < 2; ++a) {  // the plate of six cells
    EXPECT_GE(warmest[a], static_cast<std::size_t>(parts.flow.before[a]));
    EXPECT_LT(warmest[a], static_cast<std::size_t>(parts.flow.before[a] + 6));
  }
}

}  // namespace
