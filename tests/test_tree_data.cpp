// The data of the trees: settings, lists of leaf cells and kinds, simple trees, and what their
// faults say.
#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

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

const std::string kDataError = "### error : data error\n";

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
  const struct {
    std::string group, tag, value, rule;
    std::vector<std::string> members;
  } rules[] = {
      {"TSRF_JUMOKU", "(tsrf_module_jumoku)", "0", "it must be > 0", {"NDIV", "NSKIP_SUNDIR"}},
      {"JMK_HTRANS", "(jmk_module_htrans)", "4", "", {"UNITH"}},
      {"JMK_HTRANS", "(jmk_module_htrans)", "-1", "it must be >= 0", {"HTRA0", "HTRA1", "HTRAC"}},
      {"JMK_HTRANS", "(jmk_module_htrans)", "0", "it must be > 0", {"LOPHBL", "AEPSHB", "REPSHB"}},
      {"JMK_STOMATAL",
       "(jmk_module_htrans)",
       "0",
       "it must be > 0",
       {"GSMAX", "APAR", "TL", "B1", "B2", "LE"}},
      {"JMK_STOMATAL", "(jmk_module_htrans)", "284.7", "it must be > tl", {"TO"}},
      {"JMK_STOMATAL", "(jmk_module_htrans)", "305.72", "it must be > to", {"TH"}},
      {"JMK_RADIAT",
       "(jmk_module_radiat)",
       "0",
       "it must be > 0",
       {"SUN0", "LOPRAD", "AEPSRD", "REPSRD"}},
  };
  for (const auto& [group, tag, value, rule, members] : rules) {
    for (const std::string& member : members) {
      std::string name = member;
      for (char& c : name) c = static_cast<char>(std::tolower(c));
      EXPECT_EQ(fault_of("&" + group + " " + member + " = " + value + " /"),
                kDataError + name + " = " + value + "\n" + rule + (rule.empty() ? "" : "\n") + tag +
                    "(inputdata)\n");
    }
  }
  EXPECT_EQ(fault_of("&JMK_DATA CALJMK = .maybe. /"),
            "### error : read error\nnamelist = jmk_data\niostat = 1\n(jmk_nml_errmsg0)\n"
            "(jmk_module_data)(inputdata)\n");
  EXPECT_EQ(fault_of("no group at all"), "");
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
  const std::string tag = "(tsrf_module_data)(read_lai_simpl)\n";
  const struct {
    std::string lines, fault;
  } cases[] = {
      {"5 1 1 1\n", kDataError + "i,j of simple-LAD data= 5 1\nthey are out of range\n"},
      {"1 0 1 1\n", kDataError + "i,j of simple-LAD data= 1 0\nthey are out of range\n"},
      {"1 1 1 1\n1 1 1 2\n", kDataError + "duplicated i,j of simple-LAD data= 1 1\n"},
      {"1 1 -1 2\n", kDataError + "lad,h of simple-LAD data= -1 2\nthey must be >= 0\ni,j = 1 1\n"},
      {"1 1 1.x 1\n", "%%% file LAD_simple.txt, line 2\n### read error : LAD_simple data\n"},
      {"1 1 1", "%%% file LAD_simple.txt, line 2\n### read error : LAD_simple data\n"},
  };
  for (const auto& [lines, fault] : cases) {
    EXPECT_EQ(SimpleTrees().read(lines), fault + tag) << lines;
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
  EXPECT_EQ(x.prepare(), kDataError +
                             "i,j,k of LAD data= 5 1 0\nthey are out of range\n"
                             "(jmk2_prep_init)(read_lad)\n(jmk2_prep_init)\n");
}

TEST(CanopyData, FaultsAreTold) {
  const std::string lad_tag = "(jmk2_prep_init)(read_lad)\n";
  const std::string kinds_tag = "(tsrf_module_treedat)(read_treedat)\n";
  const CanopyFiles good;
  const struct {
    std::string lad, kinds, fault;
  } cases[] = {
      {"7 1 0 7\n", good.kinds,
       kDataError + "i,j,k of LAD data= 7 1 0\nthey are out of range\n" + lad_tag},
      {"1 1 -1 7\n", good.kinds,
       kDataError + "i,j,k of LAD data= 1 1 -1\nthey are out of range\n" + lad_tag},
      {"1 1 4 7\n", good.kinds,
       kDataError + "i,j,k of LAD data= 1 1 4\nthey are out of range\n" + lad_tag},
      {"1 1 1 7\n1 1 1 -5\n", good.kinds,
       kDataError + "i,j,k of LAD data= 1 1 1\ntwo TreeID are specified\ntreeid = 7 -5\n" +
           lad_tag},
      {"", good.kinds, kDataError + "lack of LAD data\n" + lad_tag},
      {"1 1 x 7\n", good.kinds, "### read error : LAD data\n" + lad_tag},
      {good.lad, "7 1\n3 0\n",
       kDataError + "lad in SurfProp data = 0\nit must be > 0\ntreeid = 3\n" + kinds_tag},
      {good.lad, "7 1\n3 1\n7 2\n",
       kDataError +
           "TreeID in Tree data = 7\nit is specified redundantly in line no. n1 & n2\n"
           "n1,n2 = 1 3\n" +
           kinds_tag},
      {good.lad, "7", "### read error : LAD_simple data\n" + kinds_tag},
      {good.lad, "7 1\n",
       kDataError + "TreeID in TreeMesh data = -5\nit is not defined in TreeData\n"
                    "(tsrf_module_treedat)(set_meshid)\n"},
  };
  for (const auto& [lad, kinds, fault] : cases) {
    CanopyFiles x;
    x.lad = lad;
    x.kinds = kinds;
    EXPECT_EQ(x.prepare(), fault + "(jmk2_prep_init)\n") << lad << kinds;
  }
  CanopyFiles flat;
  flat.grid = tsrf_main01::Sizes{3, 2, 4};
  EXPECT_EQ(flat.prepare(), kDataError +
                                "lack of Grid data\n"
                                "### program error -1- (tsrf_module_jumoku)\n"
                                "(set_grid)\n");
  CanopyFiles months;
  months.prepare();
  for (const std::string lines : {"7 1\n-5 1\n", "-5 1\n", "-5 1\n7 1\n8 1\n"}) {
    EXPECT_EQ(months.next_month(lines), "### error : invalid multi-day data\n" + kinds_tag);
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
