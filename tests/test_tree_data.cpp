// The data of the trees: settings, lists of leaf cells and kinds, simple trees, and what their
// faults say.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fault_table.hpp"
#include "patches_of.hpp"
#include "recorded_log.hpp"
#include "trees/htrans.hpp"
#include "trees/jmk_data.hpp"
#include "trees/jumoku_settings.hpp"
#include "trees/lai_simpl.hpp"
#include "trees/prep.hpp"
#include "trees/radiat.hpp"

namespace {

using frame::TextInput;

/// The last lines of the log when all settings of the tree model are read from `group`.
std::string fault_of(const std::string& group) {
  RecordedLog recorded;
  TextInput control("control", "1 2 3\n" + group + "\n");
  const std::string lines = recorded.lines_of([&] {
    tsrf_module_jumoku::Settings jumoku;
    jmk_module_data::Data cells;
    jmk_module_htrans::Data htrans;
    jmk_module_radiat::Data radiat;
    tsrf_module_jumoku::inputdata(recorded.log, control, jumoku);
    jmk_module_data::inputdata(recorded.log, control, cells);
    jmk_module_htrans::inputdata(recorded.log, control, htrans);
    jmk_module_radiat::inputdata(recorded.log, control, radiat);
  });
  const std::size_t place = lines.find("###");
  return place == std::string::npos ? "" : lines.substr(place);
}

TEST(TreeSettings, BrokenRulesAreToldByName) {
  for (const FaultCase& c : fault_table("tree_settings")) {
    EXPECT_EQ(fault_of(c.input), c.lines) << c.input;
  }
}

/// Simple trees on a row of three patches (land, wall, land) in a grid of 4 x 2 cells.
struct SimpleTrees {
  SimpleTrees() {
    patch = patches_of({1.0, 1.0, 1.0});
    patch.type[1] = tsrf_module_patch::kBuilding;
    patch.si = {1, 2, 3};
    patch.sj = {2, 2, 2};
    data.mpatch = 3;
    allocdata01(recorded.log, data);
  }
  std::string read(const std::string& lines) {
    TextInput file("LAD_simple.txt", "i j LAD H\n" + lines);
    return recorded.lines_of(
        [&] { read_lai_simpl(recorded.log, file, patch, grid_index, 4, 2, data); });
  }
  RecordedLog recorded;
  tsrf_module_patch::Data patch;
  tsrf_module_grdindx::Data grid_index{.NXB = 0, .NYB = 0};
  tsrf_module_data::Data data;
};

TEST(SimpleTrees, StandOnLandOnly) {
  SimpleTrees x;
  EXPECT_EQ(x.read("2 2 1.0 5.0\n3 2 0.7 4\n4 1 1 1\n"), "");
  EXPECT_EQ(x.data.treemk, (std::vector<std::int32_t>{0, 0, 1}));
  EXPECT_EQ(x.data.treeax(2, 0), 0.7);
  EXPECT_EQ(x.data.treeax(2, 1), 4.0);
  EXPECT_EQ(x.data.treeax(2, 2), 300.0);
}

TEST(SimpleTrees, AreCountedFromTheModelsArea) {
  SimpleTrees x;
  x.grid_index = {.NXF = 2, .NYF = 1, .NXB = 0, .NYB = 0, .ox = 2, .oy = 1};
  EXPECT_EQ(x.read("1 1 0.7 4\n"), "");
  EXPECT_EQ(x.data.treemk, (std::vector<std::int32_t>{0, 0, 1}));
}

TEST(SimpleTrees, FaultsAreTold) {
  for (const FaultCase& c : fault_table("simple_trees")) {
    EXPECT_EQ(SimpleTrees().read(c.input), c.lines) << c.input;
  }
}

/// The files of a canopy on a grid of 3 x 2 x 4 cells, divided twice.
struct CanopyFiles {
  std::string prepare() {
    trees.canopy.settings.NDIV = 2;
    TextInput control("control", "&JMK_DATA CALJMK = T /");
    TextInput lad_file("LAD.txt", "i j k TreeID\n" + lad);
    TextInput kinds_file("LAD_simple.txt", "TreeID LAD\n" + kinds);
    return fault_in(recorded.lines_of([&] {
      jmk2_prep_init(recorded.log, control, lad_file, kinds_file, grid, grid_index, {}, trees);
    }));
  }
  std::string next_month(const std::string& lines) {
    TextInput file("LAD_simple.txt", "TreeID LAD\n" + lines);
    return fault_in(recorded.lines_of([&] { read_month(recorded.log, file, trees); }));
  }
  static std::string fault_in(const std::string& lines) {
    const std::size_t place = lines.find("###");
    return place == std::string::npos ? "" : lines.substr(place);
  }
  std::string lad = "3 4 2 7\n2 1 0 -5\n1 1 0 7\n1 1 0 7\n4 4 2 0\n";
  std::string kinds = "-5 0.5\n7 1.25\n";
  RecordedLog recorded{};
  tsrf_main01::Grid grid = tsrf_main01::Axes{
      {{3, std::vector(7, 2.0), {}}, {2, std::vector(6, 2.0), {}}, {4, std::vector(8, 2.0), {}}}};
  tsrf_module_grdindx::Data grid_index{.NXB = 0, .NYB = 0};
  jmk::Trees trees;
};

TEST(CanopyData, LeavesStandWhereTheirFilesSay) {
  CanopyFiles x;
  EXPECT_EQ(x.prepare(), "");
  const tsrf_module_jumoku::Data& canopy = x.trees.canopy;
  EXPECT_EQ(canopy.leaves.lad, (std::vector<double>{1.25, 0.5, 1.25}));  // in the order k, j, i
  EXPECT_EQ(canopy.leaves.volume[0], 2.0);
  EXPECT_EQ(canopy.grid.cells, (std::array<std::int32_t, 3>{6, 4, 3}));
  // Two blocks of four fine cells; they do not touch, so all their outer faces are free.
  EXPECT_EQ(canopy.cells.count(), 8U);
  EXPECT_EQ(canopy.outer.size(), 2U * (4 + 4 + 8));
  EXPECT_EQ(x.next_month("-5 0.1\n7 0.2\n"), "");
  EXPECT_EQ(canopy.leaves.lad, (std::vector<double>{0.2, 0.1, 0.2}));
}

TEST(CanopyData, IsCountedFromTheModelsArea) {
  CanopyFiles x;
  x.grid_index = {.NXF = 1, .NYF = 0, .NXB = 0, .NYB = 0, .ox = 1, .oy = 0};
  EXPECT_EQ(x.prepare(), "");
  EXPECT_EQ(x.trees.canopy.cells.at[0], (std::array<std::int32_t, 3>{2, 0, 0}));
  x.lad = "5 1 0 7\n";
  EXPECT_EQ(x.prepare(),
            "### error : data error\n"
            "i,j,k of LAD data= 5 1 0\nthey are out of range\n"
            "(jmk2_prep_init)(read_lad)\n(jmk2_prep_init)\n");
}

TEST(CanopyData, FaultsAreTold) {
  for (const FaultCase& c : fault_table("canopy_data")) {
    CanopyFiles x;
    const std::size_t end_of_lad = c.input.find(';');
    x.lad = c.input.substr(0, end_of_lad);
    x.kinds = c.input.substr(end_of_lad + 1);
    EXPECT_EQ(x.prepare(), c.lines) << c.input;
  }
  CanopyFiles flat;
  flat.grid = tsrf_main01::Sizes{3, 2, 4};
  EXPECT_EQ(flat.prepare(),
            "### error : data error\n"
            "lack of Grid data\n"
            "### program error -1- (tsrf_module_jumoku)\n"
            "(set_grid)\n");
  CanopyFiles months;
  months.prepare();
  for (const std::string lines : {"7 1\n-5 1\n", "-5 1\n", "-5 1\n7 1\n8 1\n"}) {
    EXPECT_EQ(months.next_month(lines),
              "### error : invalid multi-day data\n(tsrf_module_treedat)(read_treedat)\n");
  }
}

TEST(CanopyData, StaysUntouchedWithoutTheSwitch) {
  CanopyFiles x;
  TextInput control("control", "");
  TextInput broken("LAD.txt", "title\nnot a number");
  const auto prepare = [&] {
    jmk2_prep_init(x.recorded.log, control, broken, broken, x.grid, x.grid_index, {}, x.trees);
  };
  EXPECT_EQ(x.recorded.lines_of(prepare), "");
}

}  // namespace
