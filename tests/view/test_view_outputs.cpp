// The files that townskin_view writes: what other programs read in them, and what they replace.
#include <gtest/gtest.h>

#include <cstring>

#include "flow/flow_run.hpp"
#include "view_case.hpp"

namespace {

using namespace townskin_view;
using view_case::FinishedRun;
using view_case::Said;
namespace fs = std::filesystem;

/// Runs a script of this folder in the system's Python; it is skipped where a package lacks.
Said check(const std::string& script, const std::string& arguments) {
#ifdef SYSTEM_PYTHON
  return view_case::run(std::string(SYSTEM_PYTHON) + " " + TOWNSKIN_SOURCE_DIR + "/tests/view/" +
                        script + " " + arguments);
#else
  static_cast<void>(script + arguments);
  return {77, "no Python"};
#endif
}

TEST(Outputs, OpenInTheirOwnReadersWithTheValuesOfTheText) {
  bool skipped = false;
  for (const char* name : {"mixed", "street_trees"}) {
    const FinishedRun run(name);
    const std::string out = run.path("out").string();
    std::string command = run.directory() + " --vtk " + out + "/vtk --csv " + out + "/csv";
#ifdef TOWNSKIN_VIEW_NETCDF
    command += " --netcdf " + out + "/run.nc";
#endif
    const Said made = view_case::view(command);
    ASSERT_EQ(made.status, 0) << made.text;
    for (const auto& [script, file] :
         {std::pair{"check_netcdf.py", "/run.nc"}, {"check_vtk.py", "/vtk"}}) {
      if (!fs::exists(out + file)) continue;
      const Said said = check(script, run.directory() + " " + out + file);
      if (said.status == 77) skipped = true;
      EXPECT_TRUE(said.status == 0 || said.status == 77) << script << '\n' << said.text;
    }
  }
  if (skipped) GTEST_SKIP() << "a package of Python is not there";
}

TEST(Outputs, CsvHasTheDigitsOfTheText) {
  const FinishedRun run("mixed");
  const std::string out = run.path("out").string();
  ASSERT_EQ(view_case::view(run.directory() + " --csv " + out).status, 0);
  const auto text = run_case::lines_of(run.path("PatchSurfTemp.txt"));
  const auto table = run_case::lines_of(out + "/patch_hours.csv");
  ASSERT_EQ(table.size(), text.size());
  const std::string head = "month,day,hour [h],PID,surface_temperature [degC],";
  ASSERT_TRUE(table[0].starts_with(head)) << table[0];
  for (std::size_t n = 1; n < table.size(); ++n) {
    const auto row = run_case::fields_of(text[n]);
    std::istringstream line(table[n]);
    std::vector<std::string> fields;
    for (std::string field; std::getline(line, field, ',');) fields.push_back(field);
    ASSERT_EQ(fields[2], row[4]);
    ASSERT_EQ(fields[3], row[0]);
    for (std::size_t c = 0; c < 5; ++c) {
      if (fields[4 + c].empty()) continue;
      ASSERT_EQ(std::strtof(fields[4 + c].c_str(), nullptr),
                std::strtof(row[5 + c].c_str(), nullptr))
          << table[n];
    }
  }
}

TEST(Outputs, AppearTogetherAndReplaceOnlyTheirOwn) {
  const FinishedRun run("flat");
  const std::string in = run.directory();
  const TempFolder folder;
  const std::string out = folder.path("tables");
  ASSERT_EQ(view_case::view(in + " --csv " + out).status, 0);
  EXPECT_EQ(view_case::view(in + " --csv " + out).status, 0) << "its own are replaced";
  folder.write("tables/patches.csv", "mine");
  fs::remove_all(folder.path("vtk"));
  const Said said = view_case::view(in + " --vtk " + folder.path("vtk") + " --csv " + out);
  EXPECT_EQ(said.status, 2);
  EXPECT_NE(said.text.find("--force"), std::string::npos) << said.text;
  EXPECT_EQ(folder.content("tables/patches.csv"), "mine");
  EXPECT_FALSE(fs::exists(folder.path("vtk"))) << "nothing is half-written";
  EXPECT_EQ(view_case::view(in + " --csv " + out + " --force").status, 0);
  EXPECT_NE(folder.content("tables/patches.csv"), "mine");
#ifdef TOWNSKIN_VIEW_NETCDF
  const std::string patches = run.content("Patch.txt");
  EXPECT_EQ(view_case::view(in + " --netcdf " + in + "/Patch.txt --force").status, 2);
  EXPECT_EQ(run.content("Patch.txt"), patches);
  for (int n = 0; n < 2; ++n) {
    EXPECT_EQ(view_case::view(in + " --netcdf " + folder.path("a.nc")).status, 0);
  }
#endif
  for (const auto& entry : fs::recursive_directory_iterator(folder.path())) {
    EXPECT_EQ(entry.path().string().find("unfinished"), std::string::npos) << entry.path();
  }
}

/// The points of a history file, and their velocities at its last output.
struct History {
  std::vector<std::int32_t> points;
  std::vector<double> velocity;
};

History last_of(const std::string& bytes) {
  std::vector<std::string_view> records;
  for (std::size_t at = 0; at + 4 <= bytes.size();) {
    std::uint32_t size = 0;
    std::memcpy(&size, &bytes[at], 4);
    records.push_back(std::string_view(bytes).substr(at + 4, size));
    at += size + 8;
  }
  History history;
  const auto take = [](std::string_view record, auto& values) {
    values.resize(record.size() / sizeof(values[0]));
    std::memcpy(values.data(), record.data(), record.size());
  };
  take(records.at(1), history.points);
  take(records.back(), history.velocity);
  const auto behind = static_cast<std::ptrdiff_t>(history.velocity.size() - history.points.size());
  history.velocity.erase(history.velocity.begin(), history.velocity.begin() + behind);
  return history;
}

TEST(FlowRuns, GiveTheVelocitiesOfTheHistoryFile) {
  const run_case::RunCase run(run_case::inputs_of("flow_duct"));
  ASSERT_EQ(run.run(TOWNSKIN_FLOW_PROGRAM).status, 0);
  const FlowRun flow = read_flow_run(run.path().string());
  FlowFields last;
  const FlowSets sets = read_flow_sets(flow, [&](const FlowFields& fields) { last = fields; });
  ASSERT_GT(sets.count, 0U);
  const History history = last_of(run.content("history.dat"));
  ASSERT_EQ(history.points.size(), history.velocity.size());
  const std::size_t mx = flow.nodes[0].size() - 1, my = flow.nodes[1].size() - 1;
  for (std::size_t n = 0; n < history.points.size(); n += 3) {
    const auto at = [&](std::size_t a) {
      return static_cast<std::size_t>(history.points[n + a]) - 1;
    };
    const std::size_t cell = (at(2) * my + at(1)) * mx + at(0);
    for (std::size_t a = 0; a < 3; ++a) {
      const double wanted = history.velocity[n + a];
      EXPECT_NEAR(last.velocity[3 * cell + a], wanted, 1e-12 + 1e-12 * std::abs(wanted));
    }
  }
  // A restart file that is cut gives the sets before the cut, or a fault where there is none.
  const std::string bytes = run.content("restart.dat");
  for (std::size_t size = 0; size < bytes.size(); size += bytes.size() / 23 + 1) {
    run.write("restart.dat", bytes.substr(0, size));
    const FlowSets found = read_flow_sets(flow, [](const FlowFields&) {});
    EXPECT_LT(found.count, sets.count);
    EXPECT_TRUE(size == 0 || found.count > 0 || !found.note.empty()) << size;
  }
  const Said said = view_case::view(run.path().string() + " --vtk " + run.path("out").string());
  EXPECT_TRUE(said.status == 2 || sets.count > 1) << said.text;
  run.write("restart.dat", bytes);
  ASSERT_EQ(view_case::view(run.path().string() + " --vtk " + run.path("out").string()).status, 0);
  const Said opened = check("check_vtk.py", run.path().string() + " " + run.path("out").string());
  EXPECT_TRUE(opened.status == 0 || opened.status == 77) << opened.text;
}

}  // namespace
