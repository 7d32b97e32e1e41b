// Both programs on one grid: what the surfaces give off is what the air of the street takes.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>

#include "run_case.hpp"

#if defined(TOWNSKIN_PROGRAM) && defined(TOWNSKIN_FLOW_PROGRAM)
namespace {

using run_case::Lines;
using run_case::RunCase;

const std::filesystem::path kExamples = std::filesystem::path(TOWNSKIN_SOURCE_DIR) / "examples";
constexpr double kVolume = 4.0 * 4.0 * 3.0;  // of the cells along the street [m3]
constexpr double kAir = 304.87538;           // tamb of the example [K]

/// The fields of the lines of a result file behind its titles.
std::vector<std::vector<double>> rows_of(const RunCase& run, const std::string& name) {
  std::vector<std::vector<double>> rows;
  for (const std::string& line : run_case::lines_of(run.path(name))) {
    if (line[0] == '#') continue;
    std::istringstream fields(line);
    rows.emplace_back();
    for (double value = 0.0; fields >> value;) rows.back().push_back(value);
  }
  return rows;
}

/// Sums by hour that the log tells of `what`.
std::map<int, double> told(const Lines& log, const std::string& what) {
  std::map<int, double> sums;
  const std::string head = "%%% sum of heat (" + what + ", hour ";
  for (const std::string& line : log) {
    if (!line.starts_with(head)) continue;
    std::istringstream rest(line.substr(head.size()));
    int hour = 0;
    rest >> hour;
    sums[hour] = std::stod(line.substr(line.find('=') + 1));
  }
  return sums;
}

/// The last number of the last line that begins with `label`, cell left out.
double last_value(const Lines& log, const std::string& label) {
  double value = NAN;
  for (const std::string& line : log) {
    if (line.starts_with(label)) value = std::stod(line.substr(line.find('=') + 1));
  }
  return value;
}

TEST(Street, TheAirTakesWhatSurfacesAndBuildingsGive) {
  const RunCase run(kExamples / "canyon");
  run.copy_in(kExamples / "street_air");
  ASSERT_TRUE(run.set_line("control.txt", 3, "-1 288 1.e9"));
  ASSERT_EQ(run.run(TOWNSKIN_PROGRAM).status, 0);
  ASSERT_TRUE(run.set_line("control.txt", 3, "-1 40 1.e9"));
  const run_case::Outcome flow = run.run(TOWNSKIN_FLOW_PROGRAM);
  ASSERT_EQ(flow.status, 0);

  std::map<int, double> surfaces, sensible, latent;
  for (const auto& row : rows_of(run, "SurfTemp.txt")) {
    surfaces[static_cast<int>(row[3])] += row[5] - row[4] * kAir;
  }
  for (const auto& row : rows_of(run, "BldLoad.txt")) {
    sensible[static_cast<int>(row[3])] += (row[4] + row[6]) * kVolume;
    latent[static_cast<int>(row[3])] += (row[5] + row[7]) * kVolume;
  }
  const std::map<std::string, std::map<int, double>> given{{"surfaces to air of tamb", surfaces},
                                                           {"buildings, sensible", sensible},
                                                           {"buildings, latent", latent}};
  for (const auto& [what, hours] : given) {
    const auto sums = told(flow.log, what);
    ASSERT_EQ(sums.size(), 24U) << what;
    for (const auto& [hour, sum] : hours) {
      EXPECT_NEAR(sums.at(hour), sum, 1e-9 * 5e6) << what << hour;
    }
  }
  EXPECT_GT(sensible[15], 1e4);
  EXPECT_GT(last_value(flow.log, "max. temp. ="), kAir + 0.05);
  EXPECT_NEAR(last_value(flow.log, "min. temp. ="), kAir, 0.05);
}

}  // namespace
#endif
