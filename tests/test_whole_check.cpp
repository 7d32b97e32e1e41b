// townskin_check on copies of run directories: seeded faults and doubts, clean cases, hostile
// files.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "check/check.hpp"
#include "run_edits.hpp"

namespace {

using run_case::edited;
using run_case::Lines;
using run_case::RunCase;
namespace fs = std::filesystem;

const fs::path kSource = TOWNSKIN_SOURCE_DIR;

/// What the check says of a run, its files named from the run's directory; the status.
std::pair<Lines, int> checked(const RunCase& run, bool json = false) {
  std::ostringstream out;
  const std::string directory = run.path().string();
  const int status = check::check_run(directory, json, out);
  Lines lines;
  std::istringstream in(out.str());
  for (std::string line; std::getline(in, line);) {
    for (std::size_t at = 0; (at = line.find(directory + "/")) != std::string::npos;) {
      line.erase(at, directory.size() + 1);
    }
    lines.push_back(line);
  }
  return {lines, status};
}

struct Case {
  std::string base, title;
  Lines edits, wanted;
};

std::vector<Case> cases_of(const fs::path& table) {
  std::vector<Case> cases;
  std::ifstream file(table);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line.starts_with("== ")) {
      const Lines words = run_case::fields_of(line);
      cases.push_back({words.at(1), words.at(2), {}, {}});
    } else if (line.starts_with("> ") || line.starts_with("? ")) {
      const std::size_t blank = line.find(' ', 2);
      cases.back().wanted.push_back(line.substr(2, blank - 2) +
                                    (line[0] == '>' ? ": fault: " : ": doubt: ") +
                                    line.substr(blank + 1));
    } else {
      cases.back().edits.push_back(line);
    }
  }
  return cases;
}

/// Whether a line of the report has the place and the words of a wanted one.
bool tells(const std::string& line, const std::string& wanted) {
  const std::size_t head = wanted.find("t: ") + 3;
  return line.starts_with(wanted.substr(0, head)) &&
         line.find(wanted.substr(head)) != std::string::npos;
}

void expect_findings(const Case& c) {
  SCOPED_TRACE(c.base + " " + c.title);
  const RunCase run(run_case::inputs_of(c.base));
  for (const std::string& edit : c.edits) ASSERT_TRUE(edited(run, edit)) << edit;
  Lines found;
  for (const std::string& line : checked(run).first) {
    const bool finding =
        line.find(": fault: ") != std::string::npos || line.find(": doubt: ") != std::string::npos;
    if (finding && !line.starts_with("    ")) found.push_back(line);
  }
  for (const std::string& wanted : c.wanted) {
    const auto at =
        std::ranges::find_if(found, [&](const auto& line) { return tells(line, wanted); });
    EXPECT_NE(at, found.end()) << "not told: " << wanted;
    if (at != found.end()) found.erase(at);
  }
  for (const std::string& line : found) ADD_FAILURE() << "told as well: " << line;
}

TEST(Check, TellsAllSeededFaultsAndNothingElse) {
  std::size_t faults = 0;
  for (const Case& c : cases_of(kSource / "tests/checks/faults.txt")) {
    expect_findings(c);
    faults += c.wanted.size();
  }
  EXPECT_GE(faults, 100U);
}

TEST(Check, DoubtsWhatNoReaderSees) {
  for (const Case& c : cases_of(kSource / "tests/checks/doubts.txt")) expect_findings(c);
}

TEST(Check, FindsNothingInExamplesAndNoFaultInCases) {
  for (const char* folder : {"examples", "tests/cases"}) {
    for (const auto& entry : fs::directory_iterator(kSource / folder)) {
      // Of others some files come from elsewhere.
      const bool flow =
          fs::exists(entry.path() / "flow_file_name") && !fs::exists(entry.path() / "file_name");
      if (!fs::exists(entry.path() / "PatchIndex.txt") && !flow) continue;
      const auto [lines, status] = checked(RunCase(entry.path()));
      // Cases of references go to extremes: implicit columns, groups that see the sky alone.
      EXPECT_LE(status, std::string_view(folder) == "examples" ? 0 : 1)
          << entry.path() << '\n'
          << (lines.empty() ? "" : lines.front());
    }
  }
}

TEST(Check, LeavesTheRunAsItWas) {
  const RunCase run(kSource / "tests/cases/flat");
  const auto before = run_case::left_by(run);
  ASSERT_TRUE(run.replace("control.txt", "DZG = 0.05", "DZG = 0"));
  EXPECT_EQ(checked(run).second, 2);
  EXPECT_EQ(run_case::left_by(run), before);
}

void expect_whole_report(const RunCase& run, const std::string& file) {
  const auto [lines, status] = checked(run, true);
  EXPECT_TRUE(status >= 0 && status <= 2) << file;
  for (const std::string& line : lines) {
    EXPECT_TRUE(line.starts_with("{\"severity\":\"") && line.ends_with("}")) << line;
  }
}

TEST(Check, EndsInOrderWhateverAFileHolds) {
  std::string noise(10'000, '\0');
  for (std::size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<char>(i * i * 31 / 7);
  const std::vector<std::string> contents{"",
                                          noise,
                                          std::string(3'000'000, '1'),
                                          "# title\n2000000000*1\n",
                                          "# title\n,,,\n/\n",
                                          "&\n&&TSRF_DATA DZG"};
  for (const char* name : {"flat", "flow_duct"}) {
    const fs::path folder = kSource / "tests/cases" / name;
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (!entry.is_regular_file()) continue;
      const std::string file = entry.path().filename().string();
      const std::string whole = RunCase(folder).content(file);
      Lines texts(contents);
      for (std::size_t cut = 1; cut < 6; ++cut)
        texts.push_back(whole.substr(0, whole.size() * cut / 6));
      for (const std::string& text : texts) {
        const RunCase run(folder);
        run.write(file, text);
        expect_whole_report(run, file);
      }
    }
  }
  std::ostringstream out;
  EXPECT_EQ(check::check_run((kSource / "docs").string(), false, out), 2);
}

}  // namespace
