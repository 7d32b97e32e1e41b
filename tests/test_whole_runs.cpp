// Runs of the program from its input files: results against references, runs in pieces, runs that
// are killed.
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <random>
#include <set>

#include "run_case.hpp"

#ifdef TOWNSKIN_PROGRAM
namespace {

using run_case::inputs_of;
using run_case::left_by;
using run_case::Lines;
using run_case::RunCase;
using run_case::set_steps;
namespace fs = std::filesystem;

const fs::path kSource = TOWNSKIN_SOURCE_DIR;

/// The lines of a log whose like (up to the first '=') a reference keeps, and the number of the
/// last step.
Lines kept_lines(const Lines& log, const Lines& reference) {
  const auto start = [](const std::string& line) { return line.substr(0, line.find('=')); };
  std::set<std::string> kinds;
  for (const std::string& line : reference) kinds.insert(start(line));
  Lines kept;
  std::string last_step;
  for (const std::string& line : log) {
    if (line.starts_with("iter=")) last_step = run_case::fields_of(line)[1];
    if (kinds.contains(start(line))) kept.push_back(line);
  }
  kept.push_back("iterations " + last_step);
  return kept;
}

struct Reference {
  std::string name;
  std::string example = {};  ///< whose inputs the case takes, all or part of them
  bool closed = false;       ///< with the closed form of scattering in leaves
};
void PrintTo(const Reference& reference, std::ostream* out) {
  *out << reference.name << (reference.closed ? ", closed" : "");
}
class References : public testing::TestWithParam<Reference> {};

TEST_P(References, ResultsAgree) {
  const auto& [name, example, closed] = GetParam();
  const fs::path expected =
      kSource / "tests/cases" / name / (closed ? "expected_closed" : "expected");
  const RunCase run(inputs_of(example.empty() ? name : example));
  run.copy_in(kSource / "tests/cases" / name);  // what differs from the example
  if (closed) {
    ASSERT_TRUE(run.replace("control.txt", "&JMK_RADIAT", "&JMK_RADIAT MDLSCT = 1,"));
  }
  const run_case::Outcome outcome = run.run();
  ASSERT_EQ(outcome.status, 0) << outcome.out << outcome.err;
  EXPECT_TRUE(outcome.err.empty()) << outcome.err;
  EXPECT_TRUE(outcome.out.ends_with("%%% normaly terminated\n"));
  EXPECT_EQ(outcome.log.back(), "%%% normaly terminated");
  const Lines log_lines = run_case::lines_of(expected / "log_lines");
  const Lines kept = kept_lines(outcome.log, log_lines);
  EXPECT_EQ(run_case::differences(log_lines, kept), "");
  const int steps = std::stoi(kept.back().substr(kept.back().find(' ')));
  EXPECT_EQ(std::ranges::count(outcome.out, '='), steps / 50) << "every 50th step is told";
  EXPECT_EQ(run.differences_from(expected), "");
}
INSTANTIATE_TEST_SUITE_P(Cases, References,
                         testing::Values(Reference{"flat"}, Reference{"flat_empty"},
                                         Reference{"canyon"}, Reference{"canyon_t1"},
                                         Reference{"periodic"}, Reference{"mixed"},
                                         Reference{"block"}, Reference{"dated", "two_months"},
                                         Reference{"trees", "street_trees"},
                                         Reference{"trees", "street_trees", true},
                                         Reference{"lone_tree"}, Reference{"lone_tree", "", true},
                                         Reference{"random_4"}, Reference{"random_4", "", true}),
                         [](const auto& reference) {
                           return reference.param.name + (reference.param.closed ? "_closed" : "");
                         });

TEST(DailyCycle, OnlyTheFirstOfSeveralStepsAtMidnightIsJudged) {
  const RunCase run(inputs_of("flat"));
  set_steps(run, -1, 1);
  ASSERT_EQ(run.run().status, 0);
  set_steps(run, 1, 9);
  ASSERT_TRUE(run.replace("control.txt", "0.9 600.0", "0.9 0.25"));
  ASSERT_TRUE(run.replace("control.txt", "&TSRF_IO", "&TSRF_IO TIMES = 86399.2,"));
  const Lines kept = kept_lines(run.run().log, {"%%% res="});
  EXPECT_EQ(kept.back(), "iterations 9");
  EXPECT_EQ(std::ranges::count(kept, std::string("%%% res= 1")), 1);
  EXPECT_EQ(
      std::ranges::count_if(kept, [](const auto& line) { return line.starts_with("%%% res"); }), 1);
}

TEST(SimpleTrees, LeaveADistrictWithoutTreesAsItIs) {
  const RunCase run(inputs_of("mixed"));
  ASSERT_TRUE(run.replace("control.txt", "LTRSMPL = .false.", "LTRSMPL = .true."));
  ASSERT_EQ(run.run().status, 0);
  EXPECT_EQ(run.differences_from(kSource / "tests/cases/mixed/expected"), "");
}

struct Pieces {
  std::string name;
  int steps_a_day;
};
class Restarts : public testing::TestWithParam<Pieces> {};

TEST_P(Restarts, TwoDaysInOneAreTwoRunsOfADay) {
  const int day = GetParam().steps_a_day;
  const auto ready = [&](const RunCase& run) {
    static_cast<void>(run.replace("control.txt", "REWIND_OUTFILE = 0", "REWIND_OUTFILE = 1"));
    static_cast<void>(run.replace("control.txt", "LCNVRG = 1", "LCNVRG = 0"));
  };
  const RunCase whole(inputs_of(GetParam().name));
  const RunCase parts(inputs_of(GetParam().name));
  ready(whole);
  ready(parts);
  set_steps(whole, 1, 2 * day);
  ASSERT_EQ(whole.run().status, 0);
  set_steps(parts, 1, day);
  ASSERT_EQ(parts.run().status, 0);
  set_steps(parts, day, 2 * day);
  ASSERT_EQ(parts.run().status, 0);
  const auto once = left_by(whole);
  EXPECT_EQ(once, left_by(parts));
  ASSERT_GT(once.at("PatchSurfTemp.txt").size(), 1000U);

  set_steps(whole, -1, 2 * day);  // again in the same directory, from the cold
  ASSERT_EQ(whole.run().status, 0);
  EXPECT_EQ(once, left_by(whole));
}
INSTANTIATE_TEST_SUITE_P(Cases, Restarts,
                         testing::Values(Pieces{"flat", 144}, Pieces{"canyon", 144},
                                         Pieces{"canyon_t1", 72}, Pieces{"mixed", 432}),
                         [](const auto& pieces) { return pieces.param.name; });

TEST(SeriesInMemory, OrReadAsTheRunGoesGiveTheSame) {
  std::vector<std::map<std::string, std::string>> results;
  for (const char* stored : {"NSTRDT = 2,", "NSTRDT = 24,"}) {
    const RunCase run(inputs_of("mixed"));
    std::string control = run.content("control.txt");
    for (std::size_t at = 0; (at = control.find("NSTRDT = ", at)) != std::string::npos; ++at) {
      control.replace(at, control.find(',', at) + 1 - at, stored);
    }
    run.write("control.txt", control);
    set_steps(run, -1, 500);  // into the second day
    ASSERT_EQ(run.run().status, 0);
    results.push_back(left_by(run));
  }
  EXPECT_EQ(results[0], results[1]);
}

/// The iteration of a restart file whose records are all whole; -1 for any other file.
int whole_state(const std::string& bytes, std::size_t records) {
  std::size_t at = 0;
  for (; records > 0; --records) {
    std::int32_t before = -1;
    std::int32_t behind = -2;
    if (at + 4 > bytes.size()) return -1;
    std::memcpy(&before, &bytes[at], 4);
    at += 4 + static_cast<std::size_t>(before);
    if (before < 0 || at + 4 > bytes.size()) return -1;
    std::memcpy(&behind, &bytes[at], 4);
    at += 4;
    if (before != behind) return -1;
  }
  std::int32_t iteration = -1;
  if (at == bytes.size()) std::memcpy(&iteration, &bytes[4], 4);
  return iteration;
}

TEST(Killed, AtAnyMomentLeavesAStateToResumeFrom) {
  const RunCase run(inputs_of("flat"));
  ASSERT_TRUE(run.replace("control.txt", "0.9 600.0", "0.9 86400.0"));  // each step ends a day
  ASSERT_TRUE(run.replace("control.txt", "LCNVRG = 1", "LCNVRG = 0"));
  std::mt19937 random(1);
  int reached = -1;
  for (int kill = 0; kill < 50; ++kill) {
    const TempFolder streams;
    set_steps(run, reached, 100'000'000);
    const pid_t child = run.start(streams, TOWNSKIN_PROGRAM);
    ASSERT_GT(child, 0);
    const auto grown = [&] {
      const std::string bytes = run.content("restart.dat");
      return bytes.empty() ? -1 : whole_state(bytes, 4);
    };
    for (int wait = 0; wait < 10'000 && grown() <= reached; ++wait) ::usleep(1000);
    ::usleep(static_cast<useconds_t>(random() % 3000));
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "ended by itself; " << streams.content("out");
    const int state = whole_state(run.content("restart.dat"), 4);
    ASSERT_GT(state, reached) << "kill " << kill;
    reached = state;
  }
  set_steps(run, reached, reached + 3);
  EXPECT_EQ(run.run().status, 0);
  EXPECT_EQ(whole_state(run.content("restart.dat"), 4), reached + 3);
}

}  // namespace
#endif
