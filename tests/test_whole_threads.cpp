// Whole runs by one hand and by several: every byte that they leave is the same.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "driver/flw_main00.hpp"
#include "run_case.hpp"

namespace {

using run_case::RunCase;

/// What the case leaves after some steps by so many hands.
std::map<std::string, std::string> left_by_hands(const std::string& name, int hands) {
  const RunCase run(run_case::inputs_of(name));
  run_case::set_steps(run, -1, 30);
  run_case::ask_for_account(run);
  // Loops are cut so finely that the hands share these small districts too.
  ::setenv("TOWNSKIN_FINER", "128", 1);
  ::setenv("TOWNSKIN_THREADS", std::to_string(hands).c_str(), 1);
  std::ostringstream screen;
  const int status =
      flw_main00::run({.directory = run.path().string(), .screen = screen, .errors = screen});
  ::unsetenv("TOWNSKIN_THREADS");
  ::unsetenv("TOWNSKIN_FINER");
  EXPECT_EQ(status, 0) << name << screen.str() << run.content("log0000");
  return run_case::left_by(run);
}

TEST(WholeThreads, LeaveTheSameBytes) {
  for (const std::string name :
       {"canyon", "block", "street_trees", "two_months", "flat_empty", "lone_tree", "random_4"}) {
    const auto alone = left_by_hands(name, 1);
    EXPECT_GT(alone.size(), 5U);
    for (const int hands : {2, 3, 7}) {
      const auto files = left_by_hands(name, hands);
      EXPECT_EQ(files.size(), alone.size());
      for (const auto& [file, content] : files) {
        EXPECT_TRUE(alone.contains(file) && content == alone.at(file)) << name << file << hands;
      }
    }
  }
}

}  // namespace
