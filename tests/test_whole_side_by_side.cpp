// Districts side by side in one process: a run touches nothing but its own directory and memory.
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <sstream>
#include <thread>

#include "driver/flw_main00.hpp"
#include "run_case.hpp"

namespace {

namespace fs = std::filesystem;
using run_case::RunCase;

const fs::path kCases = fs::path(TOWNSKIN_SOURCE_DIR) / "tests/cases";

/// A run inside this process.
struct InProcess {
  explicit InProcess(const std::string& name, bool terminal = false)
      : district(kCases / name), shows_line(terminal) {}
  void run() {
    status = flw_main00::run({.directory = district.path().string(),
                              .screen = screen,
                              .errors = errors,
                              .errors_is_terminal = shows_line});
  }
  [[nodiscard]] std::string results() const {
    return district.content("PatchSurfTemp.txt") + district.content("SurfTemp.txt") +
           district.content("SunSky.txt") + district.content("restart.dat");
  }

  RunCase district;
  bool shows_line;
  std::ostringstream screen, errors;
  int status = -1;
};

TEST(SideBySide, RunsInThreadsLeaveWhatTheyLeaveAlone) {
  const std::vector<std::string> names = {"flat_empty", "canyon_t1", "flat_empty", "canyon_t1"};
  std::vector<std::unique_ptr<InProcess>> runs;
  for (const std::string& name : names) runs.push_back(std::make_unique<InProcess>(name));
  std::vector<std::thread> threads;
  for (auto& run : runs) threads.emplace_back([&run] { run->run(); });
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < names.size(); ++i) {
    InProcess alone(names[i]);
    alone.run();
    ASSERT_EQ(alone.status, 0) << alone.errors.str();
    EXPECT_EQ(runs[i]->status, 0);
    EXPECT_EQ(runs[i]->screen.str(), alone.screen.str());
    EXPECT_GT(alone.results().size(), 1000U);
    EXPECT_TRUE(runs[i]->results() == alone.results()) << names[i];
  }
}

TEST(SideBySide, TheTerminalLineChangesNothingElse) {
  InProcess quiet("flat_empty");
  InProcess shown("flat_empty", true);
  quiet.run();
  shown.run();
  EXPECT_TRUE(quiet.errors.str().empty());
  const std::string line = shown.errors.str();
  EXPECT_TRUE(
      line.starts_with("\rday 1, hour  1, step 1 of at most 2880 (0 %)    \rday 1, hour  2"));
  EXPECT_NE(line.find("\rday 3, hour  0, step 48 of at most 2880 (2 %), residual 6.71E-03, some "),
            std::string::npos);
  EXPECT_TRUE(line.ends_with(" s left    \n"));
  EXPECT_EQ(std::ranges::count(line, '\r'), 624);
  EXPECT_EQ(quiet.screen.str(), shown.screen.str());
  EXPECT_EQ(quiet.results(), shown.results());
}

TEST(SideBySide, ArithmeticIsGivenBack) {
  const volatile double least = std::numeric_limits<double>::min();
  InProcess("flat_empty").run();
  EXPECT_GT(least / 2, 0.0);  // denormal numbers are back
}

#ifdef TOWNSKIN_PROGRAM
TEST(SideBySide, NothingWritableStandsAtNamespaceScope) {
  const TempFolder folder;
  const std::string list = folder.path("symbols");
  ASSERT_EQ(std::system(("objdump -tC " TOWNSKIN_PROGRAM " > " + list).c_str()), 0);
  const auto has = [](const std::string& line, std::initializer_list<const char*> words) {
    return std::ranges::any_of(
        words, [&](const char* word) { return line.find(word) != std::string::npos; });
  };
  std::size_t read_only = 0;
  for (const std::string& line : run_case::lines_of(list)) {
    const bool ours = has(line, {" O "}) && has(line, {"frame::", "tsrf_", "jmk", "dated_series"});
    if (!ours || has(line, {"DW.ref", "asan"})) continue;  // what the tools put in
    EXPECT_FALSE(has(line, {" .data\t", " .bss\t"})) << line;
    ++read_only;
  }
  EXPECT_GT(read_only, 5U);  // the list was made, and holds constants
}
#endif

}  // namespace
