// Restart, history and initial files of the flow program, as runs leave and meet them.
#include <gtest/gtest.h>
#include <signal.h>

#include <array>
#include <cstring>
#include <thread>

#include "flow/program.hpp"
#include "run_case.hpp"

#ifdef TOWNSKIN_FLOW_PROGRAM
namespace {

using run_case::Outcome;
using run_case::RunCase;

const std::filesystem::path kDuct =
    std::filesystem::path(TOWNSKIN_SOURCE_DIR) / "tests/cases/flow_duct";
constexpr std::size_t kRecords = 9;  // of a set with held pressure

Outcome run_flow(const RunCase& run) { return run.run(TOWNSKIN_FLOW_PROGRAM); }

/// First iteration, last one, and the end of time.
void set_run(const RunCase& run, const std::string& line) {
  ASSERT_TRUE(run.set_line("control.txt", 3, line));
}

/// The records of a file; ends early, with a failure, on a frame that is not whole.
std::vector<std::string> records_of(const std::string& file) {
  std::vector<std::string> records;
  for (std::size_t at = 0; at < file.size();) {
    std::uint32_t before = 0;
    std::uint32_t after = 1;
    if (at + 4 <= file.size()) std::memcpy(&before, file.data() + at, 4);
    if (at + 8 + before <= file.size()) std::memcpy(&after, file.data() + at + 4 + before, 4);
    EXPECT_EQ(before, after) << "at byte " << at << " of " << file.size();
    if (before != after) break;
    records.push_back(file.substr(at + 4, before));
    at += 8 + before;
  }
  return records;
}

template <class Number>
Number number_at(const std::string& record, std::size_t byte) {
  Number value{};
  std::memcpy(&value, record.data() + byte, sizeof value);
  return value;
}

/// Iterations of the sets on a restart file, all of `records` records.
std::vector<std::int32_t> sets_of(const RunCase& run, std::size_t records = kRecords) {
  const auto all = records_of(run.content("restart.dat"));
  EXPECT_EQ(all.size() % records, 0U);
  std::vector<std::int32_t> sets;
  for (std::size_t n = 0; n + records <= all.size(); n += records) {
    EXPECT_EQ(all[n].size(), 40U);
    sets.push_back(number_at<std::int32_t>(all[n + 1], 0));
  }
  return sets;
}

/// Walls all around: no pressure is held, and a set ends with the thermodynamic one.
void close(const RunCase& run) {
  ASSERT_TRUE(run.replace("boundary.txt", "2 1 1 1 1\n1. 0. 0.", "2 5 2 2 3\n0. 1. 0."));
  ASSERT_TRUE(run.replace("boundary.txt", "1 2 2 2 2", "2 5 2 2 3"));
  ASSERT_TRUE(run.set_line("control.txt", 15, "0. 0. 0."));
}

/// Temperature and species, a warm floor behind a cold, damp inlet.
void warm(const RunCase& run) {
  ASSERT_TRUE(run.set_line("control.txt", 6, "1 0"));
  ASSERT_TRUE(run.set_line("control.txt", 7, "1 1 0"));
  ASSERT_TRUE(
      run.replace("boundary.txt", "2 5 2 2 3\n0. 0. 0. 300. 0.", "2 3 3 2 3\n0. 0. 0. 320. 0."));
  ASSERT_TRUE(
      run.replace("boundary.txt", "1. 0. 0. 300. 0.\n0.99 0.01", "1. 0. 0. 290. 0.\n0.98 0.02"));
}

TEST(FlowRestart, TwoHalvesAreTheWhole) {
  for (const bool heat : {false, true}) {
    for (const bool closed : {false, true}) {
      for (const char* integration : {"1 1 0", "1 1 1", "-1 1 1"}) {
        SCOPED_TRACE(closed ? "closed" : "open");
        SCOPED_TRACE(integration);
        SCOPED_TRACE(heat ? "warm" : "even");
        const RunCase whole(kDuct);
        if (heat) warm(whole);
        if (closed) close(whole);
        ASSERT_TRUE(whole.set_line("control.txt", 33, heat && closed ? "2 2 0" : "1 1 0"));
        ASSERT_TRUE(whole.set_line("control.txt", 8, integration));
        const RunCase halves(kDuct);
        halves.copy_in(whole.path());
        ASSERT_EQ(run_flow(whole).status, 0);
        set_run(halves, "-1 5 1000.");
        ASSERT_EQ(run_flow(halves).status, 0);
        set_run(halves, "5 8 1000.");
        ASSERT_EQ(run_flow(halves).status, 0);
        EXPECT_EQ(sets_of(halves, closed ? kRecords + 1 : kRecords),
                  (std::vector<std::int32_t>{2, 5, 8}));
        EXPECT_TRUE(halves.content("restart.dat") == whole.content("restart.dat"));
      }
    }
  }
}

/// The eddy viscosity is on no set: it must follow from what a set holds.
TEST(FlowRestart, TwoHalvesAreTheWholeWithTurbulence) {
  for (const char* models : {"0 1", "0 2", "1 1"}) {
    for (const char* integration : {"1 1 1", "-1 1 1"}) {
      SCOPED_TRACE(models);
      SCOPED_TRACE(integration);
      const RunCase whole(kDuct);
      ASSERT_TRUE(whole.set_line("control.txt", 6, models));
      ASSERT_TRUE(whole.set_line("control.txt", 7, "1 1 1"));
      ASSERT_TRUE(whole.set_line("control.txt", 8, integration));
      const RunCase halves(kDuct);
      halves.copy_in(whole.path());
      const Outcome outcome = run_flow(whole);
      ASSERT_EQ(outcome.status, 0);
      const bool k_epsilon = models[2] == '1';
      for (const std::string label : {"max. mut   =", "     k & e ="}) {
        const auto lines = std::ranges::count_if(
            outcome.log, [&](const std::string& line) { return line.starts_with(label); });
        EXPECT_EQ(lines, k_epsilon || label[0] == 'm' ? 8 : 0) << label;
      }
      set_run(halves, "-1 5 1000.");
      ASSERT_EQ(run_flow(halves).status, 0);
      set_run(halves, "5 8 1000.");
      ASSERT_EQ(run_flow(halves).status, 0);
      EXPECT_EQ(sets_of(halves, k_epsilon ? kRecords + 1 : kRecords),
                (std::vector<std::int32_t>{2, 5, 8}));
      EXPECT_TRUE(halves.content("restart.dat") == whole.content("restart.dat"));
    }
  }
}

/// An obstacle, a partly open cell, leaves, warm surfaces and a building; heat and k-epsilon.
void build_city(const RunCase& run) {
  run.write("Porous.txt", "3 2 1 0 0 0 0 0 0 0\n5 3 2 .5 1 .5 .5 .5 1 1\n");
  run.write("SurfTemp.txt", "# title\n4 2 1 12 .5 160. .1 0 0 1\n3 2 1 12 .5 155. 0 0 0 1\n");
  run.write("BldLoad.txt", "# title\n2 2 1 12 0 0 900. 90.\n");
  run.write("LAD.txt", "# title\n2 4 2 3.\n");
  run.write("flow_file_name",
            run.content("flow_file_name") + "\nPorous.txt\nSurfTemp.txt\nBldLoad.txt\nLAD.txt\n");
  run.write("control.txt", run.content("control.txt") + "&VFRAC LVFRAC = 1 /\n");
  run.write("boundary.txt", run.content("boundary.txt") +
                                "0 6 0 5 0 4 0\n2 3 2 2 3\n0. 0. 0. 300. 0.\n1. 0.\n0. 0.\n");
  ASSERT_TRUE(run.set_line("boundary.txt", 3, "5"));
  ASSERT_TRUE(run.set_line("control.txt", 6, "1 1"));
  ASSERT_TRUE(run.set_line("control.txt", 7, "1 1 1"));
}

TEST(FlowRestart, ACityGoesOnAsItWouldHave) {
  for (const char* integration : {"1 1 1", "-1 1 1"}) {
    SCOPED_TRACE(integration);
    const RunCase whole(kDuct);
    build_city(whole);
    ASSERT_TRUE(whole.set_line("control.txt", 8, integration));
    const RunCase halves(kDuct);
    halves.copy_in(whole.path());
    const Outcome outcome = run_flow(whole);
    ASSERT_EQ(outcome.status, 0);
    const run_case::Lines warning{
        "%%% warning : SurfTemp data gives heat to cells that are not "
        "fluid, it goes to those at their faces ; cells = 1"};
    EXPECT_FALSE(std::ranges::search(outcome.log, warning).empty());
    set_run(halves, "-1 5 1000.");
    ASSERT_EQ(run_flow(halves).status, 0);
    set_run(halves, "5 8 1000.");
    ASSERT_EQ(run_flow(halves).status, 0);
    EXPECT_EQ(sets_of(halves, kRecords + 1), (std::vector<std::int32_t>{2, 5, 8}));
    EXPECT_TRUE(halves.content("restart.dat") == whole.content("restart.dat"));
  }
}

TEST(FlowRestart, KeepsTheSetsUpToTheOneMet) {
  const RunCase run(kDuct);
  ASSERT_EQ(run_flow(run).status, 0);
  set_run(run, "2 4 1000.");
  ASSERT_EQ(run_flow(run).status, 0);
  EXPECT_EQ(sets_of(run), (std::vector<std::int32_t>{2, 4}));
  const std::string before = run.content("restart.dat");
  set_run(run, "3 8 1000.");
  const Outcome missing = run_flow(run);
  EXPECT_EQ(missing.status, 231);
  EXPECT_FALSE(
      std::ranges::search(missing.log, run_case::Lines{"### error : restart file (flw_prep_init)",
                                                       "specified iteration counts not found",
                                                       "iteration (restart file)= 2 & 4",
                                                       "iteration (specified)   = 3"})
          .empty());
  ASSERT_TRUE(run.set_line("control.txt", 1, "6 5 2"));  // a cold start that fails
  set_run(run, "-1 8 1000.");
  EXPECT_EQ(run_flow(run).status, 231);
  EXPECT_TRUE(run.content("restart.dat") == before);
}

TEST(FlowRestart, AnotherGridIsRefused) {
  const RunCase run(kDuct);
  ASSERT_EQ(run_flow(run).status, 0);
  std::string file = run.content("restart.dat");
  const std::int32_t other = 7;
  std::memcpy(file.data() + 8, &other, sizeof other);  // my of the first set
  run.write("restart.dat", file);
  set_run(run, "5 8 1000.");
  const Outcome outcome = run_flow(run);
  EXPECT_FALSE(
      std::ranges::search(
          outcome.log, run_case::Lines{"### error : restart file (flw_prep_init)",
                                       "size not consistent", "mx,my,mz,ns(restart file)= 6 7 4 2",
                                       "mx,my,mz,ns(specified)   = 6 5 4 2", "(flw_prep_init)",
                                       "(flw_main01)", "(flw_main00)"})
          .empty());
}

TEST(FlowRestart, AFileCutOrSpoiltAnywhereEndsInOrder) {
  const RunCase run(kDuct);
  ASSERT_EQ(run_flow(run).status, 0);
  set_run(run, "5 8 1000.");
  const std::string whole = run.content("restart.dat");
  const std::size_t set = whole.size() / 3;
  for (std::size_t cut = 0; cut < whole.size(); cut += cut % set < 200 ? 13 : 331) {
    run.write("restart.dat", whole.substr(0, cut));
    const Outcome outcome = run_flow(run);
    EXPECT_EQ(outcome.status, cut < 2 * set ? 231 : 0) << "cut at " << cut;
    if (cut % set == 0 || cut > 2 * set) continue;
    const auto named = [](const std::string& line) {
      return line.starts_with("%%% file restart.dat, record ");
    };
    EXPECT_TRUE(std::ranges::any_of(outcome.log, named)) << "cut at " << cut;
  }
  for (std::size_t at = 0; at < whole.size(); at += 97) {
    std::string spoilt = whole;
    for (std::size_t n = at; n < std::min(at + 9, whole.size()); ++n) spoilt[n] = '\xff';
    run.write("restart.dat", spoilt);
    const int status = run_flow(run).status;
    EXPECT_TRUE(status == 0 || status == 231) << "spoilt at " << at << " status " << status;
  }
}

TEST(FlowRestart, AKillLeavesWholeSets) {
  const RunCase run(kDuct);
  set_run(run, "-1 100000 1e9");
  ASSERT_TRUE(run.set_line("control.txt", 4, "1. 1. 1e6 0"));
  for (int trial = 0; trial < 12; ++trial) {
    const TempFolder streams;
    const pid_t child = run.start(streams, TOWNSKIN_FLOW_PROGRAM);
    std::this_thread::sleep_for(std::chrono::microseconds(40000 + 7919 * trial));
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    const auto sets = sets_of(run);
    for (std::size_t n = 0; n < sets.size(); ++n) {
      EXPECT_EQ(sets[n], static_cast<std::int32_t>(n) + 1);
    }
  }
}

TEST(FlowInitial, ACoarseFieldStartsAFineOne) {
  const RunCase run(kDuct);
  ASSERT_EQ(run_flow(run).status, 0);
  std::filesystem::rename(run.path("restart.dat"), run.path("first.dat"));
  run.write("flow_file_name", run.content("flow_file_name") + "first.dat\n");
  // Each cell along x becomes two.
  ASSERT_TRUE(run.set_line("control.txt", 1, "12 5 4"));
  ASSERT_TRUE(run.replace("Grid.txt", "7\n0. 0.1 0.2 0.3 0.4\n0.5 0.6",
                          "13\n0. .05 0.1 .15 0.2 .25 0.3 .35 0.4\n.45 0.5 .55 0.6"));
  std::string boundary = run.content("boundary.txt");
  for (std::size_t at = 0; (at = boundary.find("\n0 6 ", at)) != std::string::npos; ++at) {
    boundary.replace(at, 5, "\n0 12 ");
  }
  boundary.replace(boundary.find("\n6 6 "), 5, "\n12 12 ");
  run.write("boundary.txt", boundary);
  set_run(run, "0 1 1000.");
  const Outcome outcome = run_flow(run);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(sets_of(run), std::vector<std::int32_t>{1});
  ASSERT_TRUE(run.replace("Grid.txt", "5\n0. 0.1", "4\n0. 0.1"));
  ASSERT_TRUE(run.set_line("control.txt", 1, "12 5 3"));
  boundary = run.content("boundary.txt");
  for (std::size_t at = 0; (at = boundary.find(" 0 4 ", at)) != std::string::npos; ++at) {
    boundary.replace(at, 5, " 0 3 ");
  }
  run.write("boundary.txt", boundary);
  ASSERT_TRUE(run.set_line("control.txt", 30, "3 3 2 6 1 3"));
  const Outcome refused = run_flow(run);
  EXPECT_FALSE(std::ranges::search(refused.log,
                                   run_case::Lines{"lack of data in initial file of coaser mesh",
                                                   "(ubx_module_init)", "(flw_prep_init)"})
                   .empty());
}

TEST(FlowHistory, HoldsItsPointsAtItsTimes) {
  const RunCase run(kDuct);
  ASSERT_EQ(run_flow(run).status, 0);
  const auto records = records_of(run.content("history.dat"));
  // Iterations 1, 3, 5, 7 by the schedule and 8 at the stop.
  ASSERT_EQ(records.size(), 2U + 2U * 5U);
  EXPECT_EQ(number_at<std::int32_t>(records[0], 0), 2);
  EXPECT_EQ(number_at<std::int32_t>(records[1], 12), 6);
  EXPECT_EQ(number_at<std::int32_t>(records[10], 8), 8);
  ASSERT_EQ(records[11].size(), 8U * (2U + 2U + 4U + 6U));
  EXPECT_EQ(number_at<double>(records[11], 0), 300.0);
  EXPECT_EQ(number_at<double>(records[11], 8U * 4U), 0.99);
  // The fluxes of the point (3,3,2) stand in the set of the same iteration.
  const auto set = records_of(run.content("restart.dat"));
  const auto flux = [&](std::size_t face) {
    return number_at<double>(set[2 * kRecords + 6], 8U * (face + 7U * (2U + 5U * 1U)));
  };
  const double density = 101325.0 / (8.314 * 300.0 * (0.99 / 0.028964 + 0.01 / 0.018015));
  EXPECT_NEAR(number_at<double>(records[11], 8U * 8U), 0.5 * (flux(2) + flux(3)) / density, 1e-14);
}

TEST(FlowRun, KeepsNoMoreThan65000Groups) {
  for (const int groups : {65000, 65001}) {
    const RunCase run(kDuct);
    const std::string file = run.content("boundary.txt");
    const std::size_t first = file.find('\n', file.find('\n') + 1) + 1;  // the line of the count
    const std::string all = file.substr(file.find('\n', first) + 1);
    std::size_t end = 0;
    for (int line = 0; line < 5; ++line) end = all.find('\n', end) + 1;
    std::string text = file.substr(0, first) + std::to_string(groups) + "\n";
    for (int n = 4; n < groups; ++n) text += all.substr(0, end);
    run.write("boundary.txt", text + all);  // the later of two groups on a face holds
    const Outcome outcome = run_flow(run);
    const bool refused = groups > 65000;
    EXPECT_EQ(outcome.status, refused ? 1 : 0) << groups;
    EXPECT_EQ(std::ranges::count(outcome.log, std::string("nbnd > mbnd")), refused ? 1 : 0);
  }
}

TEST(FlowRun, StopsAtTheFileExit) {
  const RunCase run(kDuct);
  run.write("EXIT", "");
  const Outcome outcome = run_flow(run);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "%%% normaly terminated\n");
  EXPECT_EQ(sets_of(run), std::vector<std::int32_t>{1});
  EXPECT_TRUE(std::filesystem::exists(run.path("EXIT")));
}

TEST(FlowRun, ShowsItsProgressOnATerminalAndNothingElse) {
  const RunCase run(kDuct);
  std::ostringstream screen;
  std::ostringstream errors;
  EXPECT_EQ(flow::run_program({run.path().string(), screen, errors, true}), 0);
  EXPECT_EQ(screen.str(), "%%% normaly terminated\n");
  EXPECT_TRUE(errors.str().starts_with("\rstep 1 of at most 8, time "));
  EXPECT_EQ(errors.str().find(" %)"), errors.str().find("(12 %)") + 3);
  EXPECT_NE(errors.str().find("\rstep 8 of at most 8, time "), std::string::npos);
  EXPECT_TRUE(errors.str().ends_with(" (100 %)    \n"));
}

TEST(FlowRun, WritesEveryFiftiethStepOnTheScreen) {
  const RunCase run(kDuct);
  set_run(run, "-1 100 1000.");
  const Outcome outcome = run_flow(run);
  EXPECT_EQ(std::ranges::count(outcome.out, '\n'), 3);
  EXPECT_NE(outcome.out.find("iter=      50 "), std::string::npos);
}

}  // namespace
#endif
