// The data of the trees: settings, lists of leaf cells and kinds, simple trees, and what their
// faults say.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "patches_of.hpp"
#include "recorded_log.hpp"
#include "trees/htrans.hpp"
#include "trees/jmk_data.hpp"
#include "trees/jumoku_settings.hpp"
#include "trees/lai_simpl.hpp"
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
  const std::string jumoku = "(tsrf_module_jumoku)(inputdata)\n";
  const std::string htrans = "(jmk_module_htrans)(inputdata)\n";
  const std::string radiat = "(jmk_module_radiat)(inputdata)\n";
  const std::string over_zero = "\nit must be > 0\n";
  const struct {
    std::string group, fault;
  } cases[] = {
      {"&TSRF_JUMOKU NDIV = 0 /", "ndiv = 0" + over_zero + jumoku},
      {"&TSRF_JUMOKU NDIV = 2, NSKIP_SUNDIR = -1 /", "nskip_sundir = -1" + over_zero + jumoku},
      {"&JMK_HTRANS UNITH = 4 /", "unith = 4\n" + htrans},
      {"&JMK_HTRANS HTRA0 = -1 /", "htra0 = -1\nit must be >= 0\n" + htrans},
      {"&JMK_HTRANS HTRA1 = -1 /", "htra1 = -1\nit must be >= 0\n" + htrans},
      {"&JMK_HTRANS HTRAC = -1 /", "htrac = -1\nit must be >= 0\n" + htrans},
      {"&JMK_HTRANS LOPHBL = 0 /", "lophbl = 0" + over_zero + htrans},
      {"&JMK_HTRANS AEPSHB = 0 /", "aepshb = 0" + over_zero + htrans},
      {"&JMK_HTRANS REPSHB = 0 /", "repshb = 0" + over_zero + htrans},
      {"&JMK_STOMATAL GSMAX = 0 /", "gsmax = 0" + over_zero + htrans},
      {"&JMK_STOMATAL APAR = 0 /", "apar = 0" + over_zero + htrans},
      {"&JMK_STOMATAL TL = 0 /", "tl = 0" + over_zero + htrans},
      {"&JMK_STOMATAL TO = 284.7 /", "to = 284.7\nit must be > tl\n" + htrans},
      {"&JMK_STOMATAL TH = 300 /", "th = 300\nit must be > to\n" + htrans},
      {"&JMK_STOMATAL B1 = 0 /", "b1 = 0" + over_zero + htrans},
      {"&JMK_STOMATAL B2 = 0 /", "b2 = 0" + over_zero + htrans},
      {"&JMK_STOMATAL LE = 0 /", "le = 0" + over_zero + htrans},
      {"&JMK_RADIAT SUN0 = 0 /", "sun0 = 0" + over_zero + radiat},
      {"&JMK_RADIAT LOPRAD = 0 /", "loprad = 0" + over_zero + radiat},
      {"&JMK_RADIAT AEPSRD = 0 /", "aepsrd = 0" + over_zero + radiat},
      {"&JMK_RADIAT REPSRD = 0 /", "repsrd = 0" + over_zero + radiat},
  };
  for (const auto& [group, fault] : cases) {
    EXPECT_EQ(fault_of(group), kDataError + fault) << group;
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

}  // namespace
