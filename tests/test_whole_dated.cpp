// Dated runs of the program: across months, in pieces, and with water that follows its file.
#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "run_case.hpp"

#ifdef TOWNSKIN_PROGRAM
namespace {

using run_case::Lines;
using run_case::RunCase;
namespace fs = std::filesystem;

constexpr int kStepsADay = 96;
constexpr int kJanuary = 2 * kStepsADay;               // from the 30th
constexpr int kFebruary = kJanuary + 28 * kStepsADay;  // to its end
constexpr int kMarch = kFebruary + 2 * kStepsADay;

void require(bool done) {
  if (!done) throw std::runtime_error("the example is not as this test takes it to be");
}

/// The example with its July made January and March, its August February, each month with
/// surfaces of its own; from 30 January to 3 March.
struct Winter : RunCase {
  Winter() : RunCase(run_case::inputs_of("two_months")) {
    fs::rename(path("data/m07"), path("data/m01"));
    fs::rename(path("data/m08"), path("data/m02"));
    fs::copy(path("data/m01"), path("data/m03"));
    fs::copy(path("data/m01/WaterTemp.txt"), path("data/m02/WaterTemp.txt"));
    require(replace("data/m02/SurfProp.txt", "\n10 0.12 0.95", "\n10 0.30 0.85"));
    require(replace("data/m03/SurfProp.txt", "\n11 0.3 0.92", "\n11 0.6 0.92"));
    require(replace("data/m02/RmHeat.txt", "\n9 1 1 22.00", "\n9 1 1 12.00"));
    require(replace("data/m02/RmHeat.txt", " 0.30 0.0 1 30 75", " 0.30 0.0 1 15 45"));
    require(replace("data/m03/Building.txt", " 3 144 0.8 ", " 3 144 0.5 "));
    const Lines summer = run_case::lines_of(path("Weather.txt"));
    std::string weather = summer[0] + "\n";
    for (const auto& [month, of_summer] : {std::pair("1", '7'), {"2", '8'}, {"3", '7'}}) {
      for (const std::string& line : summer) {
        const bool beyond = of_summer == '8' && std::atoi(line.c_str() + 1) > 28;
        if (line[0] == of_summer && !beyond) weather += month + line.substr(1) + "\n";
      }
    }
    write("Weather.txt", weather);
    require(replace("control.txt", "DATE0 = 2015, 7, 28", "DATE0 = 2015, 1, 30"));
    require(replace("control.txt", "0.9 600.0", "0.9 900.0"));
    set_months("7, 8", "1, 3");
    set_months("7, 8", "1, 3");  // those of the shade
  }
  void set_months(const std::string& old_months, const std::string& months) const {
    require(replace("control.txt", "MONTHS = " + old_months, "MONTHS = " + months));
  }
  /// Runs to its end; the months whose files of a name were opened, in order, by name.
  std::map<std::string, std::string> months_opened(int first, int last) const {
    run_case::set_steps(*this, first, last);
    const run_case::Outcome outcome = run();
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    std::map<std::string, std::string> months;
    for (const std::string& line : outcome.log) {
      if (!line.starts_with("%%% open file")) continue;
      const fs::path file = run_case::fields_of(line).back();
      months[file.filename()] += file.parent_path().filename().string().substr(2);
    }
    return months;
  }
  std::map<std::string, std::string> results_of(int month) const {
    std::map<std::string, std::string> results;
    for (const char* name : {"SurfTemp", "PatchSurfTemp", "heat", "BldLoad"}) {
      results[name] = content("data/m0" + std::to_string(month) + "/" + name + ".txt");
    }
    return results;
  }
  std::string sky_rows() const {
    const std::string text = content("SunSky.txt");
    return text.substr(text.find('\n') + 1);
  }
};

std::map<std::string, std::string> loads(const std::string& monthly, const std::string& sun) {
  return {{"SurfProp.txt", monthly},
          {"Building.txt", monthly},
          {"RmHeat.txt", monthly},
          {"Sun.txt", sun}};
}

TEST(DatedRuns, CrossMonthsAndGoOnAfterAStop) {
  const Winter whole;
  EXPECT_EQ(whole.months_opened(-1, kMarch), loads("123123", "123"));
  for (const int month : {1, 2, 3}) {
    auto results = whole.results_of(month);
    EXPECT_EQ(std::ranges::count(results["PatchSurfTemp"], '\n'), 1 + 24 * 370);
    EXPECT_EQ(std::ranges::count(results["heat"], '\n'), 1 + 24 * 6);
  }

  const Winter parts;
  constexpr int kStop = kJanuary + 11 * kStepsADay + 3;
  EXPECT_EQ(parts.months_opened(-1, kStop), loads("12312", "12"));
  EXPECT_TRUE(parts.results_of(1) == whole.results_of(1)) << "January closed before the stop";
  EXPECT_EQ(parts.results_of(3)["heat"], "") << "March has not begun";
  std::string sky = parts.sky_rows();

  parts.write("EXIT", "");  // one step more
  EXPECT_EQ(parts.months_opened(kStop, kMarch), loads("1232", "2"));
  fs::remove(parts.path("EXIT"));
  sky += parts.sky_rows();

  // Where the first month is February, nothing of January is left from the start.
  for (const bool from_february : {false, true}) {
    Winter rest;
    rest.copy_in(parts.path());
    if (from_february) rest.set_months("1, 3", "2, 3");
    EXPECT_EQ(rest.months_opened(kStop + 1, kMarch),
              from_february ? loads("2323", "23") : loads("12323", "23"));
    EXPECT_TRUE(rest.content("restart.dat") == whole.content("restart.dat"));
    EXPECT_TRUE(rest.results_of(3) == whole.results_of(3));
    EXPECT_TRUE(rest.results_of(2) != whole.results_of(2)) << "the sums before the stop are lost";
    EXPECT_TRUE(sky + rest.sky_rows() == whole.sky_rows());
  }
}

TEST(DatedRuns, WaterFollowsItsFileWhenAsked) {
  std::map<int, double> file;  // deg C by hour, of the pond (PID 7)
  for (const bool follows : {false, true}) {
    const RunCase run(run_case::inputs_of("two_months"));
    require(run.replace("control.txt", "NITEM = 1,", follows ? "LWTRTMP = 1," : ""));
    run_case::set_steps(run, -1, 144);
    ASSERT_EQ(run.run().status, 0);
    for (const std::string& line : run_case::lines_of(run.path("data/m07/WaterTemp.txt"))) {
      const Lines words = run_case::fields_of(line);
      if (words[1] == "7") file[std::stoi(words[0])] = std::stod(words[3]);
    }
    const auto at = [&](double hour) {  // the file's days repeat
      const int before = static_cast<int>(hour);
      const double share = hour - before;
      return (1.0 - share) * file[before] + share * file[before + 1];
    };
    // A step's mean takes what the step before has set.
    for (const std::string& line : run_case::lines_of(run.path("data/m07/PatchSurfTemp.txt"))) {
      const Lines words = run_case::fields_of(line);
      const int hour = line[0] == '#' ? 0 : std::stoi(words[4]);
      if (hour < 3 || words[0] != "7") continue;
      double mean = 26.85;
      for (int step = 0; follows && step < 6; ++step) {
        mean = (step == 0 ? 0.0 : mean) + at(hour - 1 + (step - 1) / 6.0) / 6.0;
      }
      EXPECT_NEAR(std::stod(words[5]), mean, 6e-5) << hour;
    }
  }
}

TEST(DatedRuns, HoursWithoutAStepAreZero) {
  const RunCase run(run_case::inputs_of("two_months"));
  run_case::set_steps(run, -1, 18);  // three hours
  ASSERT_EQ(run.run().status, 0);
  for (const auto& [name, place, first] : {std::tuple{"PatchSurfTemp", 4U, 5U},
                                           {"SurfTemp", 3U, 4U},
                                           {"heat", 0U, 2U},
                                           {"BldLoad", 3U, 4U}}) {
    std::set<std::string> empty, filled;
    for (const auto& line :
         run_case::lines_of(run.path(std::string("data/m07/") + name + ".txt"))) {
      const Lines words = run_case::fields_of(line);
      if (line[0] == '#') continue;
      const bool stepped = std::stoi(words[place]) <= 3;
      for (std::size_t n = first; n < words.size(); ++n) {
        (stepped ? filled : empty).insert(words[n]);
      }
    }
    EXPECT_EQ(empty.size(), 1U) << name;
    EXPECT_EQ(std::stod(*empty.begin()), 0.0) << name;
    EXPECT_GT(filled.size(), 1U) << name;
  }
}

TEST(DatedRuns, ReportTheDiskThatAMonthDidNotFitOn) {
  const RunCase run(run_case::inputs_of("two_months"));
  fs::create_symlink("/dev/full", run.path("data/m07/heat.txt"));
  run_case::set_steps(run, -1, 3);
  const run_case::Outcome outcome = run.run();
  EXPECT_EQ(outcome.status, 231);
  EXPECT_NE(std::ranges::find(outcome.log, "file = data/m07/heat.txt"), outcome.log.end());
}

}  // namespace
#endif
