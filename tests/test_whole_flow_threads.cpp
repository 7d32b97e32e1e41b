// Whole runs of the flow by one hand and by several: every byte that they leave is the same.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "driver/flw_main00.hpp"
#include "flow/program.hpp"
#include "run_case.hpp"

namespace {

using run_case::RunCase;
using Files = std::map<std::string, std::string>;

/// A case, with other lines in its control data.
struct Variant {
  std::string name;
  int steps;
  std::map<std::size_t, std::string> lines;
};
constexpr std::size_t kModels = 6;     ///< temperature, turbulence
constexpr std::size_t kTimeSteps = 8;  ///< explicit or implicit

/// The run directory of a case, with what the surfaces give to the air of a street.
void fill(const RunCase& run, const Variant& variant) {
  const std::filesystem::path source = TOWNSKIN_SOURCE_DIR;
  if (variant.name == "street_air") {
    run_case::set_steps(run, -1, 6);
    std::ostringstream screen;
    ASSERT_EQ(
        flw_main00::run({.directory = run.path().string(), .screen = screen, .errors = screen}), 0);
    run.copy_in(source / "examples/street_air");
  }
  ASSERT_TRUE(run.set_line("control.txt", 3, "-1 " + std::to_string(variant.steps) + " 1e9"));
  for (const auto& [line, text] : variant.lines) {
    ASSERT_TRUE(run.set_line("control.txt", line, text));
  }
}

/// What the run leaves by so many hands, and the lines of its log on the steps.
Files left_by_hands(const RunCase& run, int hands) {
  // Loops are cut so finely that the hands share these small boxes too.
  ::setenv("TOWNSKIN_FINER", "1024", 1);
  ::setenv("TOWNSKIN_THREADS", std::to_string(hands).c_str(), 1);
  std::ostringstream screen;
  const int status =
      flow::run_program({.directory = run.path().string(), .screen = screen, .errors = screen});
  ::unsetenv("TOWNSKIN_THREADS");
  ::unsetenv("TOWNSKIN_FINER");
  EXPECT_EQ(status, 0) << screen.str() << run.content("log0000");
  Files files = run_case::left_by(run);
  for (const std::string& line : run_case::lines_of(run.path("log0000"))) {
    if (line.starts_with("max.") || line.starts_with("min.") ||
        line.find(" L2 ") != std::string::npos) {
      files["log"] += line + '\n';
    }
  }
  return files;
}

TEST(WholeFlowThreads, LeaveTheSameBytes) {
  const std::filesystem::path source = TOWNSKIN_SOURCE_DIR;
  for (const Variant& variant :
       std::vector<Variant>{{"cavity", 20, {}},
                            {"flow_duct", 8, {}},
                            {"flow_duct", 8, {{kModels, "1 2"}, {kTimeSteps, "-1 1 1"}}},
                            {"street_air", 12, {}},
                            {"street_air", 4, {{kTimeSteps, "-1 1 1"}}}}) {
    const bool street = variant.name == "street_air";
    const RunCase run(street ? source / "examples/canyon" : run_case::inputs_of(variant.name));
    if (street) run.copy_in(source / "examples/street_air");
    fill(run, variant);
    const Files alone = left_by_hands(run, 1);
    EXPECT_GT(alone.at("log").size(), 100U);
    for (const int hands : {2, 3, 7}) {
      const Files files = left_by_hands(run, hands);
      EXPECT_EQ(files.size(), alone.size());
      for (const auto& [file, content] : files) {
        EXPECT_TRUE(alone.contains(file) && content == alone.at(file))
            << variant.name << ' ' << file << ' ' << hands;
      }
    }
  }
}

}  // namespace
