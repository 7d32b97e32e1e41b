// docs/files.md tells the settings that the program has, with the defaults that it takes.
#include <gtest/gtest.h>

#include <map>

#include "run_case.hpp"

#ifdef TOWNSKIN_PROGRAM
namespace {

using run_case::Lines;
using Settings = std::map<std::string, std::map<std::string, std::string>>;  // group, member

const std::filesystem::path kSource = TOWNSKIN_SOURCE_DIR;

/// The tables behind headings "### GROUP", whose rows begin "| `MEMBER` | default |".
Settings documented() {
  Settings groups;
  std::string group;
  for (const std::string& line : run_case::lines_of(kSource / "docs/files.md")) {
    if (line[0] == '#') group = line.starts_with("### ") ? line.substr(4) : "";
    if (group.empty() || !line.starts_with("| `")) continue;
    const std::size_t bar = line.find(" | ", 3);
    const std::size_t next = line.find(" | ", bar + 3);
    groups[group][line.substr(3, bar - 4)] = line.substr(bar + 3, next - bar - 3);
  }
  return groups;
}

/// The groups as a log repeats them.
Settings echoed(const Lines& log) {
  Settings groups;
  std::string group;
  for (const std::string& line : log) {
    if (line[0] == '&') group = line.substr(1);
    if (line[0] == '/') group.clear();
    const std::size_t equals = line.find(" = ");
    if (group.empty() || equals == std::string::npos) continue;
    groups[group][line.substr(1, equals - 1)] = line.substr(equals + 3, line.size() - equals - 4);
  }
  return groups;
}

TEST(Docs, TellTheSettingsAndTheirDefaults) {
  const Settings told = documented();
  ASSERT_GT(told.size(), 10U);
  const run_case::RunCase run(kSource / "tests/cases/flat");
  std::string control;
  for (const std::string& line : run_case::lines_of(run.path("control.txt"))) {
    if (line[0] == '&') break;
    control += line + "\n";
  }
  for (const auto& [group, members] : told) {
    control += "&" + group + " ";
    for (const auto& [member, value] : members) {
      if (value == "required") control += member + " = 1, ";
    }
    control += "/\n";
  }
  run.write("control.txt", control);
  run.write("FormFactor.txt", "# LVFSKY is 0 by default\n0 1 0 2 0.5\n");
  Settings found = echoed(run.run().log);
  run.write("control.txt", control.insert(control.find('&'), "&JMK_DATA CALJMK = .true. /\n"));
  run.write("LAD.txt", "# a leaf\n2 2 0 1\n");
  run.write("LAD_simple.txt", "# a tree\n1 0.8\n");
  found["JMK_RADIAT"] = echoed(run.run().log)["JMK_RADIAT"];  // read with a tree canopy only
  for (auto& [group, members] : found) {
    ASSERT_TRUE(told.contains(group)) << group << " is not in docs/files.md";
    for (auto& [member, value] : members) {
      const auto place = told.at(group).find(member);
      if (place != told.at(group).end() && place->second == "required") value = "required";
    }
    EXPECT_EQ(members, told.at(group)) << group;
  }
  EXPECT_EQ(found.size(), told.size());
}

}  // namespace
#endif
