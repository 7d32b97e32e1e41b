// Runs of the program on faulty and on hostile input files.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "run_case.hpp"
#include "run_edits.hpp"

#if defined(TOWNSKIN_PROGRAM) && defined(TOWNSKIN_FLOW_PROGRAM)
namespace {

using run_case::edited;
using run_case::Lines;
using run_case::Outcome;
using run_case::RunCase;
namespace fs = std::filesystem;

const fs::path kSource = TOWNSKIN_SOURCE_DIR;

/// A row of the tables in tests/fault_runs; their README tells the form.
struct Row {
  std::string base, stage, title, place;
  Lines edits, lines;
};

std::vector<Row> rows_of(const fs::path& table) {
  std::vector<Row> rows;
  std::size_t number = 0;
  std::ifstream file(table);
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (line.empty() || line[0] == '#') continue;
    if (line.starts_with("== ")) {
      const Lines words = run_case::fields_of(line.substr(0, line.find(':')));
      rows.push_back({words.at(1),
                      words.at(2),
                      line.substr(line.find(':') + 1),
                      table.filename().string() + ":" + std::to_string(number),
                      {},
                      {}});
    } else if (line.starts_with(">> ")) {
      rows.back().lines.insert(rows.back().lines.end(), {"### error : data error", line.substr(3)});
    } else if (line.starts_with(">= ")) {
      const std::size_t blank = std::min(line.find(' ', 3), line.size());
      const std::string routine = "(" + line.substr(3, blank - 3) + ")";
      rows.back().lines.push_back("### data error " + routine);
      std::istringstream words(line.substr(std::min(blank + 1, line.size())));
      for (std::string word; std::getline(words, word, '|');) rows.back().lines.push_back(word);
      rows.back().lines.push_back(routine);
    } else if (line.starts_with("> ")) {
      rows.back().lines.push_back(line.substr(2));
    } else {
      rows.back().edits.push_back(line);
    }
  }
  return rows;
}

/// The tags that a failure collects on its way from each stage to the main program.
const std::map<std::string, Lines> kWayUp = {{"frame", {}},
                                             {"table", {"(read_file_table)"}},
                                             {"main", {"(tsrf_main01)"}},
                                             {"prep", {"(tsrf_prep_init)", "(tsrf_main01)"}},
                                             {"month", {"(tsrf_prep_monthly)", "(tsrf_main01)"}},
                                             {"air", {"(tsrf_set_tqair)", "(tsrf_main01)"}},
                                             {"step", {"(tsrf_admin)", "(tsrf_main01)"}},
                                             {"flow", {"(flw_main01)"}},
                                             {"start", {"(flw_prep_init)", "(flw_main01)"}}};

/// The last `count` lines as a text.
std::string last_of(const Lines& lines, std::size_t count) {
  std::string text;
  for (std::size_t n = lines.size() - std::min(count, lines.size()); n < lines.size(); ++n) {
    text += lines[n] + "\n";
  }
  return text;
}

void expect_outcome(const Row& row, const Outcome& outcome) {
  static const std::map<std::string, int> kWithoutTags = {
      {"stop", 1}, {"halt", 231}, {"open", 2}, {"end", 0}};
  if (const auto found = kWithoutTags.find(row.stage); found != kWithoutTags.end()) {
    const bool on_screen = row.stage == "stop" || row.stage == "halt";
    EXPECT_EQ(outcome.status, found->second);
    std::istringstream screen(outcome.out);
    Lines lines;
    for (std::string line; std::getline(screen, line);) lines.push_back(line);
    EXPECT_FALSE(on_screen && std::ranges::search(lines, row.lines).empty()) << last_of(lines, 20);
    EXPECT_FALSE(std::ranges::search(outcome.log, row.lines).empty()) << last_of(outcome.log, 20);
    return;
  }
  Lines wanted = row.lines;
  const Lines& way_up = kWayUp.at(row.stage);
  wanted.insert(wanted.end(), way_up.begin(), way_up.end());
  wanted.insert(wanted.end(), {"(flw_main00)", "### abnormaly terminated"});
  EXPECT_EQ(last_of(outcome.log, wanted.size()), last_of(wanted, wanted.size()));
  EXPECT_EQ(outcome.status, 231);
  EXPECT_NE(outcome.out.find("### abnormaly terminated\n"), std::string::npos);
}

class Faults : public testing::TestWithParam<std::string> {};

TEST_P(Faults, AreReportedInOrder) {
  const std::vector<Row> rows = rows_of(kSource / "tests/fault_runs" / (GetParam() + ".txt"));
  ASSERT_FALSE(rows.empty());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.place + ":" + row.title);
    const RunCase run(run_case::inputs_of(row.base));
    const bool flow = row.base.starts_with("flow_");
    ASSERT_TRUE(flow || run.set_line("control.txt", 3, "-1 3 0"));
    for (const std::string& edit : row.edits) ASSERT_TRUE(edited(run, edit)) << edit;
    expect_outcome(row, run.run(flow ? TOWNSKIN_FLOW_PROGRAM : TOWNSKIN_PROGRAM));
  }
}

TEST(Titles, ThatReadAsRecordsAreToldFileByFile) {
  const RunCase run(run_case::inputs_of("street_trees"));
  ASSERT_TRUE(run.set_line("control.txt", 3, "-1 3 0"));
  std::set<std::string> replaced;
  for (const auto& entry : fs::directory_iterator(run.path())) {
    const std::string file = entry.path().filename().string();
    const Lines lines = run_case::lines_of(entry.path());
    if (file == "BldSurf.txt" || file == "README.md") continue;  // not read
    if (lines.size() < 2 || lines[0][0] != '#') continue;
    ASSERT_TRUE(run.set_line(file, 1, lines[1]));
    replaced.insert(file);
  }
  const std::string warning =
      "%%% warning : the title line reads as a record, it is not used as one";
  std::set<std::string> told;
  const Outcome outcome = run.run();
  EXPECT_EQ(outcome.status, 0);
  for (const std::string& line : outcome.log) {
    if (!line.starts_with(warning)) continue;
    EXPECT_TRUE(told.insert(run_case::fields_of(line).back()).second) << line;
  }
  EXPECT_EQ(told, replaced);
  EXPECT_GT(told.size(), 10U);
}

/// What may stand in a file instead of data.
std::vector<std::string> hostile_contents() {
  constexpr std::size_t kLong = 10'000'000;
  std::string ones(kLong, '1');
  for (std::size_t i = 1; i < kLong; i += 2) ones[i] = ' ';
  std::string noise(10'000, '\0');
  for (std::size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<char>(i * i * 31 / 7);
  return {"",
          noise,
          ones,
          std::string(kLong, '1'),
          std::string(kLong, '\''),
          "# title\n2000000000*1\n",
          "# title\n,,,\n/\n",
          "&\n&&TSRF_DATA DZG"};
}

/// A run on the case with one of its files changed must end by itself, in order.
void expect_orderly_end(const std::string& base, const std::string& file, const std::string& text) {
  const RunCase run(kSource / "tests/cases" / base);
  ASSERT_TRUE(run.set_line("control.txt", 3, "-1 3 0"));
  run.write(file, text);
  const Outcome outcome =
      run.run(base.starts_with("flow_") ? TOWNSKIN_FLOW_PROGRAM : TOWNSKIN_PROGRAM);
  EXPECT_TRUE(outcome.status == 0 || outcome.status == 2 || outcome.status == 231)
      << file << " status " << outcome.status << '\n'
      << outcome.out << outcome.err << "begins with " << text.substr(0, 200);
}

class Hostile : public testing::TestWithParam<std::string> {};

TEST_P(Hostile, AnyFileCutAnywhereOrFilledWithAnything) {
  const std::vector<std::string> contents = hostile_contents();
  const fs::path folder = kSource / "tests/cases" / GetParam();
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const std::string file = entry.path().filename().string();
    const std::string whole = RunCase(folder).content(file);
    for (std::size_t cut = 1; cut <= 8 && cut < whole.size(); ++cut) {
      expect_orderly_end(GetParam(), file, whole.substr(0, whole.size() * cut / 8 - cut));
    }
    for (const std::string& content : contents) expect_orderly_end(GetParam(), file, content);
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, Hostile, testing::Values("flat", "flow_duct"),
                         [](const auto& base) { return base.param; });

INSTANTIATE_TEST_SUITE_P(Tables, Faults,
                         testing::Values("settings", "surfaces", "series", "frame", "buildings",
                                         "trees", "dated", "flow", "flow_boundary", "flow_city"),
                         [](const auto& table) { return table.param; });

}  // namespace
#endif
