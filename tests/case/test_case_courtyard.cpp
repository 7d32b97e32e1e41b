// From footprints to temperatures: the whole way of the tool and a run behind it.
#include <gtest/gtest.h>

#include <sstream>

#include "city_files.hpp"
#include "make_case.hpp"
#include "make_epw.hpp"
#include "run_case.hpp"
#include "scene/cut.hpp"

namespace {

using namespace townskin_case;

/// Mean temperature of the ground at noon, by area: in the courtyard, and 20 m and more outside.
std::array<double, 2> ground_at_noon(const run_case::RunCase& run) {
  std::map<std::string, std::size_t> place;  // of patches: 0 courtyard, 1 open ground
  for (const std::string& line : run_case::lines_of(run.path("geometry.txt"))) {
    const run_case::Lines row = run_case::fields_of(line);
    if (row[0] == "#" || std::stod(row[6]) != 0.0) continue;
    double far = 0.0, high = 0.0;
    for (std::size_t n = 4; n + 2 < row.size(); n += 3) {
      far = std::max({far, std::abs(std::stod(row[n])), std::abs(std::stod(row[n + 1]))});
      high = std::max(high, std::stod(row[n + 2]));
    }
    if (high > 0.0) continue;  // a wall
    if (far <= 6.0 || far >= 32.0) place[row[0]] = far <= 6.0 ? 0 : 1;
  }
  std::array<double, 2> sum{}, area{};
  for (const std::string& line : run_case::lines_of(run.path("PatchSurfTemp.txt"))) {
    const run_case::Lines row = run_case::fields_of(line);
    if (row.size() < 11 || row[4] != "12" || !place.contains(row[0])) continue;
    sum[place.at(row[0])] += std::stod(row[5]) * std::stod(row[10]);
    area[place.at(row[0])] += std::stod(row[10]);
  }
  EXPECT_NEAR(area[0], 144.0, 1e-3);
  EXPECT_GT(area[1], 1000.0);
  return {sum[0] / area[0], sum[1] / area[1]};
}

// A house of 24 m a side and 15 m height around a courtyard of 12 m.
TEST(CaseCourtyard, GroundInItIsCoolerAtNoonThanOpenGround) {
  const TempFolder folder;
  folder.write("a.geojson",
               collection(feature("a", R"("height":15)",
                                  box(-112, 988, 24, 24) + "," + box(-106, 994, 12, 12))));
  folder.write("w.epw", make_epw::text());
  folder.write("site.toml",
               "[input]\nbuildings = \"a.geojson\"\nweather = \"w.epw\"\n[run]\nday = \"07-21\"\n"
               "most_days = 3\n[rays]\nrays = 256\n[grid]\nmargin = 30\n");
  const std::string site = folder.path("site.toml"), output = folder.path("run");
  const std::vector<const char*> words{"townskin_case", site.c_str(), "-o", output.c_str()};
  const Options options = read_options(static_cast<int>(words.size()), words.data(), "");
  Report report;
  std::ostringstream screen;
  make_case(options, cut_city, report, {screen});
  const run_case::RunCase run(output);
  ASSERT_EQ(run.run().status, 0);
  const auto [courtyard, open] = ground_at_noon(run);
  EXPECT_LT(courtyard, open - 5.0);
  EXPECT_GT(courtyard, 20.0);
  EXPECT_LT(open, 75.0);
}

}  // namespace
