// A whole run directory, written and then run by the surface model.
#include <gtest/gtest.h>

#include "run/check_run.hpp"
#include "run/run_directory.hpp"
#include "run/summary.hpp"
#include "run/text_file.hpp"
#include "run_case.hpp"
#include "run_parts.hpp"

namespace {

using namespace townskin_case;

/// Runs the model to its end, without a warning; returns its log.
run_case::Lines run_to_its_end(const run_case::RunCase& run) {
  const run_case::Outcome outcome = run.run();
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  for (const std::string& line : outcome.log) {
    EXPECT_FALSE(line.starts_with("%%% warning")) << line;
  }
  return outcome.log;
}

TEST(CaseRun, GoesToItsDailyCycleWithoutAWarning) {
  const Parts parts({.day = "07-21", .from = {}, .to = {}});
  const TempFolder folder;
  write_run(parts.run(), folder.path());
  const Trial trial = try_run(parts.run(), folder.path());
  EXPECT_TRUE(trial.warnings.empty());
  EXPECT_NEAR(trial.least_correction, 1.0, 2e-6);
  EXPECT_NEAR(trial.largest_correction, 1.0, 2e-6);
  EXPECT_FALSE(std::filesystem::exists(folder.path("log0000")));
  double residual = 1.0, least = 1e9, largest = 0.0;
  const run_case::RunCase run(folder.path());
  for (const std::string& line : run_to_its_end(run)) {
    std::sscanf(line.c_str(), "%%%%%% res= %lf", &residual);
    double low = 0.0, high = 0.0;
    if (std::sscanf(line.c_str(), "%%%%%% surf. temp. min&max= %lf %lf", &low, &high) == 2) {
      least = std::min(least, low), largest = std::max(largest, high);
    }
  }
  EXPECT_LT(residual, 1e-5);
  EXPECT_GT(least, 273.15 + 5.0);
  EXPECT_LT(largest, 273.15 + 85.0);
  // The sun that the model has had is that of the weather file.
  double direct = 0.0, wanted = 0.0;
  for (const EpwHour& hour : parts.days.hours) wanted += hour.direct;
  const run_case::Lines sky = run_case::lines_of(run.path("SunSky.txt"));
  ASSERT_EQ(sky.size(), 25U);
  for (std::size_t h = 1; h < sky.size(); ++h) direct += std::stod(run_case::fields_of(sky[h])[1]);
  EXPECT_NEAR(direct, wanted, 0.005 * wanted);
}

// No wall of the block stands in another's shadow: a face is in the sun from the hour before it
// turns to the sun, so that a straight line between the hours finds it whole when the beam comes.
TEST(CaseRun, FacesAreInTheSunFromTheHourBeforeItComes) {
  const Parts parts({.day = "07-21", .from = {}, .to = {}});
  const TempFolder folder;
  write_run(parts.run(), folder.path());
  const run_case::Lines lines = run_case::lines_of(folder.path("Sun.txt"));
  const std::size_t patches = parts.scene.patches.size();
  const std::vector<SunHour>& hours = parts.sunlit.hours;
  ASSERT_EQ(lines.size(), 1 + hours.size() * patches);
  std::size_t turns = 0;
  for (std::size_t h = 0; h + 1 < hours.size(); ++h) {
    for (std::size_t p = 0; p < patches; ++p) {
      const Group& group =
          parts.scene.groups[static_cast<std::size_t>(parts.scene.patches[p].group)];
      if (group.kind != PatchKind::building) continue;
      const run_case::Lines fields = run_case::fields_of(lines[1 + h * patches + p]);
      const bool up = hours[h].sun.z > 0.0;
      const bool faces = dot(hours[h].sun, group.normal) > 0.0;
      const bool comes = dot(hours[h + 1].sun, group.normal) > 0.0;
      if (!up) {
        EXPECT_EQ(fields[3], "0");
      }
      if (up && (faces || comes)) {
        EXPECT_EQ(fields[3], "1") << lines[1 + h * patches + p];
      }
      if (up && comes && !faces) ++turns;
    }
  }
  EXPECT_GT(turns, 0U);
}

TEST(CaseRun, GoesThroughItsDatesWithTreesAndWater) {
  Scene scene = block_scene::scene("grass", "water");
  add_tree(scene);
  const Parts parts({.day = {}, .from = "07-31", .to = "08-01"}, scene);
  const TempFolder folder;
  write_run(parts.run(), folder.path());
  EXPECT_TRUE(try_run(parts.run(), folder.path()).warnings.empty());
  const run_case::RunCase run(folder.path());
  run_to_its_end(run);
  const std::size_t lines = 1 + 24 * parts.scene.patches.size();
  for (const char* month : {"data/m07/", "data/m08/"}) {
    const auto rows = run_case::lines_of(run.path(month + std::string("PatchSurfTemp.txt")));
    ASSERT_EQ(rows.size(), lines);
    for (std::size_t n = 1; n < rows.size(); ++n) {
      const auto fields = run_case::fields_of(rows[n]);
      const double temperature = std::stod(fields[5]);
      EXPECT_GT(temperature, 5.0);
      EXPECT_LT(temperature, 85.0);
      const bool begins = std::string(month) == "data/m07/" && fields[4] == "1";
      if (fields[0] == "1" && !begins) {  // water, but for the first step from the cold
        EXPECT_NEAR(temperature, parts.days.mean_temperature, 1e-2);
      }
    }
  }
}

TEST(CaseRun, ShippedConstructionsAndUsesRunWithoutAWarning) {
  const Library library =
      read_library(shipped_library("constructions.toml"), shipped_library("uses.toml"));
  const auto try_with = [](const Site& site, const std::string& cover) {
    const Parts parts({.day = "coldest", .from = {}, .to = {}}, block_scene::scene(cover), site);
    const TempFolder folder;
    write_run(parts.run(), folder.path());
    for (const std::string& warning : try_run(parts.run(), folder.path()).warnings) {
      ADD_FAILURE() << site.construction.fallback << ' ' << site.use.fallback << ' ' << cover
                    << ": " << warning;
    }
  };
  Site site;
  for (const auto& [name, kind] : library.buildings) {
    site.construction.fallback = name;
    try_with(site, "asphalt");
  }
  for (const auto& [name, use] : library.uses) {
    site.use.fallback = name;
    try_with(site, "asphalt");
  }
  for (const auto& [kind, build_up] : library.ground) try_with(site, kind);
}

TEST(CaseRun, WritesTheSameBytesAgain) {
  const auto text = [] {
    const Parts parts({.day = "07-21", .from = {}, .to = {}});
    const TempFolder folder;
    write_run(parts.run(), folder.path());
    std::string all;
    for (const char* name : {"FormFactor.txt", "Sun.txt", "Patch.txt", "control.txt"}) {
      all += folder.content(name);
    }
    return all;
  };
  const std::string once = text();
  EXPECT_GT(once.size(), 1000U);
  EXPECT_EQ(once, text());
}

// A share is read back as it was, to its digits; those of nine digits exactly.
TEST(CaseFiles, SharesKeepTheirDigits) {
  const TempFolder folder;
  std::vector<double> values{0.0, 1.0, 0.1, 0.123456789, 0.00012345678, 1.23456789e-8, 5e-12};
  for (int n = 1; n < 1000; ++n) {
    const double value = std::fmod(n * 0.6180339887498949, 1.0) * std::pow(10.0, -(n % 8));
    const double scale = std::pow(10.0, 8.0 - std::floor(std::log10(value)));
    values.push_back(std::round(value * scale) / scale);
  }
  {
    TextFile out(folder.path("a/b"));
    for (const double value : values) out.share(value, 9).end_line();
    out.close();
  }
  const run_case::Lines lines = run_case::lines_of(folder.path("a/b"));
  ASSERT_EQ(lines.size(), values.size());
  for (std::size_t n = 0; n < values.size(); ++n) {
    EXPECT_DOUBLE_EQ(std::stod(lines[n]), values[n]) << lines[n];
    EXPECT_LE(lines[n].size(), 20U);
  }
}

TEST(CaseFiles, DirectoryTakesItsNameAtTheEnd) {
  const TempFolder folder;
  const std::string target = folder.path("run");
  const auto names = [&] {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      count += entry.exists() ? 1 : 0;
    }
    return count;
  };
  const auto make = [&](const std::string& text, bool force, bool finish) {
    RunDirectory directory(target + "/", force);
    TextFile out(directory.path() + "/file_name");
    out.line(text);
    out.close();
    EXPECT_NE(directory.path(), target);
    if (finish) directory.finish();
  };
  make("cut short", false, false);
  EXPECT_EQ(names(), 0U);
  make("first", false, true);
  EXPECT_EQ(folder.content("run/file_name"), "first\n");
  EXPECT_THROW(make("second", false, true), Fault);
  EXPECT_EQ(folder.content("run/file_name"), "first\n");
  make("second", true, true);
  EXPECT_EQ(folder.content("run/file_name"), "second\n");
  EXPECT_EQ(names(), 1U);
  std::filesystem::remove(target + "/file_name");
  folder.write("run/thesis.txt", "mine");
  EXPECT_THROW(make("third", true, true), Fault);  // no run: --force does not take it
  EXPECT_EQ(folder.content("run/thesis.txt"), "mine");
}

TEST(CaseFiles, LeftoversOfAKilledRunGoAndOthersStay) {
  const TempFolder folder;
  const std::string target = folder.path("run");
  for (const char* name :
       {"run.unfinished_aaaaaa/.grows", "run.unfinished_bbbbbb/mine", "run.unfinished_long/.grows",
        "other.unfinished_aaaaaa/.grows", "run.replaced_aaaaaa/file_name"}) {
    TextFile(folder.path(name)).close();
  }
  const RunDirectory growing(target, false);
  Report report;
  RunDirectory::tidy(target + "/", report);
  EXPECT_FALSE(std::filesystem::exists(folder.path("run.unfinished_aaaaaa")));
  for (const std::string& name :
       {folder.path("run.unfinished_bbbbbb/mine"), folder.path("run.unfinished_long/.grows"),
        folder.path("other.unfinished_aaaaaa/.grows"), folder.path("run.replaced_aaaaaa/file_name"),
        growing.path() + "/.grows"}) {
    EXPECT_TRUE(std::filesystem::exists(name)) << name;
  }
  ASSERT_EQ(report.lines().size(), 2U);
  EXPECT_NE(report.lines()[0].find("run.unfinished_aaaaaa, left by a run"), std::string::npos);
  EXPECT_NE(report.lines()[1].find("run.replaced_aaaaaa is an older run"), std::string::npos);
}

}  // namespace
