// The tables that a run starts from: what their readers take, mend and refuse.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "faults.hpp"
#include "inputs/grid.hpp"
#include "inputs/grid_index.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/matprp.hpp"
#include "inputs/patch.hpp"
#include "inputs/srfprp.hpp"
#include "recorded_log.hpp"
#include "surface/surface_state.hpp"

namespace {

/// A district of a few cells, read from texts.
struct District {
  RecordedLog recorded;
  frame::Log& log = recorded.log;
  tsrf_module_data::Data data;
  tsrf_module_grdindx::Data index;
  tsrf_main01::Sizes sizes{4, 3, 2};
  tsrf_main01::Grid grid;
  tsrf_main01::Porous porous;
  tsrf_module_patch::Data patch;
  tsrf_module_srfprp::Data srfprp;
  tsrf_module_matprp::Data matprp;
  tsrf_module_lyrstrct::Data lyrstrct;
  std::int32_t NDIV = 1;

  void settings(const std::string& text) {
    frame::TextInput control("control", text);
    tsrf_module_grdindx::inputdata(log, control, 1, 1, index);
    tsrf_module_data::inputdata(log, control, data);
  }
  void grid_file(const std::string& text) {
    frame::TextInput input("Grid.txt", text);
    grid = tsrf_main01::read_grid(log, input, sizes);
  }
  void porous_file(const std::string& text) {
    frame::TextInput input("Porous.txt", text);
    tsrf_dummyb(log, input, sizes, porous);
  }
  void patches(const std::string& patch_lines, const std::string& tree_lines = "") {
    frame::TextInput patch_file("Patch.txt", "title\n" + patch_lines);
    frame::TextInput tree_file("TreePatch.txt", tree_lines.empty() ? "" : "title\n" + tree_lines);
    read_patch(log, patch_file, tree_file, 4, 3, 2, index, NDIV, patch);
  }
  void properties(const std::string& lines) {
    frame::TextInput input("SurfProp.txt", "title\n" + lines);
    read_srfprp(log, input, srfprp);
  }
  void materials(const std::string& lines) {
    frame::TextInput input("MatEleProp.txt", "title\n" + lines);
    read_matprp(log, input, matprp);
  }
  void ground(double dz, double zl) { lyrstrct_set_land(log, dz, zl, "", patch, matprp, lyrstrct); }
};

const std::string kDataError = "### error : data error\n";
const std::string kRoad = "7 1 1 0 2.5 0 0 1 3 101 0\n";
const std::string kLeaf = "8 1 1 0 1 -1. 0 0 2 1 0\n";

const auto grid = reads(&District::grid_file);
const auto porous = reads(&District::porous_file);
TEST(Settings, BoundaryWidthsTakeTheFrontsWhenNegative) {
  District d;
  d.settings("&dummygrid nxf = 2, nyb = 0, nyf = 1, dxf = 3.5 / &TSRF_DATA WSKY0 = 1 HTRNS = 0 /");
  EXPECT_EQ((std::vector{d.index.NXB, d.index.NYB, d.index.ox, d.index.oy}),
            (std::vector{2, 0, 2, 1}));
  EXPECT_EQ(d.data.settings.HTRNS, 0.0);
}

TEST(Grid, MirrorsTwoCellsAtEachEnd) {
  District d;
  d.grid_file("5 ignored\n0 1,3 6\n10\n4\n-1 0 1 2\n3\n0 5 7\n");
  const auto& axes = std::get<tsrf_main01::Axes>(d.grid);
  EXPECT_EQ(axes[0].widths, (std::vector<double>{2, 1, 1, 2, 3, 4, 4, 3}));
  EXPECT_EQ(axes[0].coordinates, (std::vector<double>{-1, 0, 1, 3, 6, 10, 14}));
  EXPECT_EQ(axes[2].widths, (std::vector<double>{2, 5, 5, 2, 2, 5}));
  for (const tsrf_main01::Axis& axis : axes) {
    for (std::int32_t i = 0; i <= axis.cells + 1; ++i) {
      EXPECT_EQ(axis.x(i) + axis.dx(i), axis.x(i + 1));
    }
  }
  District empty;
  empty.grid_file("\n  \n");
  empty.porous_file("");
  EXPECT_EQ(std::get<tsrf_main01::Sizes>(empty.grid), empty.sizes);
}

TEST(Grid, FaultsOfBothFiles) {
  const std::string x = "5\n0 1 3 6 10\n";
  const std::string size = "grid size in Grid data not consistent\nmx,my,mz must be = 5 4 3\n";
  expect_faults<District>(
      kDataError, "(tsrf_main01)(read_grid)",
      {{grid("6\n0 1 3 6 10 11\n"), size},
       {grid(x + "3\n0 1 2\n"), size},
       {grid(x + "2000000000"), size},
       {grid("5\n0 1 1 6 10\n"), "i,x(i),x(i-1) in Grid data = 3 1 1\nthey must increase\n"},
       {grid(x + "4\n0 1 2 1.5\n"), "i,y(i),y(i-1) in Grid data = 4 1.5 2\nthey must increase\n"}});
  expect_faults<District>("### read error : Grid data\n", "(tsrf_main01)(read_grid)",
                          {{grid("five"), ""},
                           {grid("5\n0 1 3 6"), ""},
                           {grid("5\n0 1 3 6 x"), ""},
                           {grid(x), ""},
                           {grid(x + "4\n0 1 2 3\n3"), ""}});
  expect_faults<District>("### error : ", "(tsrf_dummyb)",
                          {{porous("1 1 1 7*1.\n1 1 1 1 1"), "read error in Porous file\n"},
                           {porous("4 3 2 7*0.5\n4 4 2 7*0.5"),
                            "data error in Porous file\ni,j,k= 4 4 2\nthey are out of range\n"}});
}

TEST(Patch, ListHoldsBothFilesAndShiftsTreePatchesInFrontOfTheirFace) {
  District d;
  d.settings("&DUMMYGRID NXF = 1, NXB = 0, NYF = 1, NYB = 0 /");
  d.NDIV = 2;
  d.patches("2000000000 3 2 0 4 0 0 1 3 101 0 surplus\n-5 1 1\n1 2. 1 0 0 9 1 2 3\n",
            "1 6 1 1 1 0. 0. -1. 2 5 0\n2 6 1 1 1 1. 0 0 2 2\n0\n\n");
  EXPECT_EQ(d.patch.mpatch, 4);
  EXPECT_EQ(d.patch.patch_lines, 2);
  EXPECT_EQ(d.patch.si, (std::vector{4, 2, 8, 9}));
  EXPECT_EQ(d.patch.sj, (std::vector{3, 2, 3, 3}));
  EXPECT_EQ(d.patch.sk, (std::vector{1, 2, 1, 2}));
  EXPECT_EQ(d.patch.by_pid.find(2000000000), 0);
  EXPECT_EQ(d.patch.by_pid.find(-5), 1);
  EXPECT_EQ(d.patch.BldID, (std::vector{0, 2, 0, 0}));
  District long_tree_file;  // only as many positions as it has lines are looked at
  long_tree_file.patches(kRoad, kLeaf + "9 1 1 0 1 0 0 1 3 6 0");
  EXPECT_EQ(long_tree_file.patch.type.back(), 3);
}

TEST(Patch, AreasAreMendedAndTheFirstTenReported) {
  District d;
  std::string lines, warnings;
  for (int pid = 1; pid <= 12; ++pid) {
    lines += std::to_string(pid) + " 1 1 0 -3 0 0 1 3 1 0\n";
    if (pid > 10) continue;
    warnings += "%%% warning : invalid data\narea in Patch data = -3\nit must be > 0\npid = " +
                std::to_string(pid) + "\n";
  }
  EXPECT_EQ(d.recorded.lines_of([&] { d.patches(lines); }), warnings);
  EXPECT_EQ(d.patch.area, std::vector<double>(12, 1e-20));
}

TEST(SurfProp, HoldsTwoRowsMoreAndRereadsTheSameCodesOnly) {
  District d;
  const std::string concrete = "2000000000 0.25 1 0.3 2000 1000 0 0\n";
  d.properties(concrete + "1 1 0 0 1600 1000 3.75e-7 20\n");
  EXPECT_EQ(d.srfprp.alb, (std::vector<double>{0.25, 1, 0, 1}));
  EXPECT_EQ(d.srfprp.ems, (std::vector<double>{1, 0, 1, 0}));
  EXPECT_EQ(d.srfprp.beta, (std::vector<double>{0.3, 0, 0, 0}));
  EXPECT_EQ(d.srfprp.heat_capacity[0], 2e6);
  EXPECT_DOUBLE_EQ(d.srfprp.conductivity[1], 0.6);
  EXPECT_EQ(d.srfprp.by_code.find(1), 1);
  EXPECT_EQ(d.srfprp.by_code.find(2000000000), 0);
  d.properties("2000000000 0.5 1 0 1 1 1 1\n1 0.75 0 0 1 1 1 1\n");
  EXPECT_EQ(d.srfprp.alb, (std::vector<double>{0.5, 0.75, 0, 1}));
  for (const std::string& other :
       {concrete, "1 0.5 1 0 1 1 1 1\n" + concrete, concrete + concrete.substr(1)}) {
    EXPECT_EQ(d.recorded.lines_of([&] { d.properties(other); }),
              "### error : invalid multi-day data\n(tsrf_module_srfprp)(read_srfprp)\n");
  }
}

TEST(MatEleProp, BlocksBecomeMaterials) {
  District d;
  EXPECT_EQ(d.recorded.lines_of([&] {
    d.materials(
        "2000000000 1 7 0 0 2 0.1 10\n2000000000 1 7 9 8 2 0.2\n 11\n1 3 2 0 0 1 4d-3 30\n");
  }),
            "%%% nmatprp= 2\n");
  const auto& wall = d.matprp.materials.at(0);
  EXPECT_EQ(wall.thick, (std::vector<double>{0.1, 0.2}));
  EXPECT_EQ(wall.SurfCD, (std::vector{10, 11}));
  EXPECT_EQ((std::vector{wall.pos, wall.strct, wall.nolyr()}), (std::vector{1, 7, 2}));
  EXPECT_EQ(d.matprp.by_surfid.find(1), 1);
  EXPECT_EQ(d.matprp.by_surfid.find(2000000000), 0);
}

TEST(Ground, CellsOfAGradingSumToTheDepth) {
  RecordedLog recorded;
  for (const double dz : {0.001, 0.0123, 0.05, 0.1, 1.0}) {
    // From two cells on, over the switch from equal to graded cells, and close to whole numbers,
    // where the ratio is all but 1.
    for (double total = 1.5; total < 1e5; total *= 1.003) {
      for (const double zl : {dz * total, dz * std::round(total) * (1.0 + 1.1e-6)}) {
        const auto [n, ratio] = tsrf_module_lyrstrct::cal_gemtrc(recorded.log, 20, dz, zl);
        double sum = 0.0;
        for (std::int32_t cell = 0; cell < n; ++cell) sum += dz * std::pow(ratio, cell);
        const bool starting_value = std::abs(ratio - 1.0) < 1e-6;  // taken as it is
        EXPECT_NEAR(sum / zl, 1.0, starting_value ? 1e-5 : 1e-11) << dz << " " << zl;
        EXPECT_GE(n, zl / dz > 20.0 + 1e-9 ? 20 : 2);
        EXPECT_LT(ratio, 1.5);
      }
    }
  }
}

TEST(Ground, LandPatchesShareOneStructureAMaterial) {
  const std::string two = "7 1 1 0 1 0 0 1 3 5 0\n8 1 1 0 1 0 0 1 4 9 0\n9 1 1 0 1 0 0 1 3 5 0\n";
  District d;
  d.patches(two + "4 1 1 0 1 0 0 1 3 2 0\n");
  d.materials("2 1 1 0 0 1 1 30\n5 1 1 0 0 2 0.2 10\n5 1 1 0 0 2 0.2 11\n");
  EXPECT_EQ(d.recorded.lines_of([&] { d.ground(0.05, 0.75); }),
            "%%% nz,dz,zl in land = 15 0.05 0.75\n");
  EXPECT_EQ(d.lyrstrct.structure, (std::vector{0, -1, 0, 1}));
  EXPECT_EQ(d.lyrstrct.material, (std::vector{1, -1, 1, 0}));
  ASSERT_EQ(d.lyrstrct.structures.at(0).parts.size(), 1U);
  EXPECT_EQ(d.lyrstrct.structures[0].parts[0].SurfCD, 10);
  EXPECT_EQ(d.lyrstrct.structures[0].parts[0].thickness, 0.75);
  EXPECT_EQ(column_size(d.lyrstrct), 16);
  EXPECT_EQ(tsrf_module_lyrstrct::column_size({}), 2);
}

TEST(Ground, Faults) {
  District d;
  d.patches(kRoad);
  EXPECT_EQ(d.recorded.lines_of([&] { d.ground(0.02, 0.5); }),
            "%%% nz,dz,zl in land = 20 0.02 0.5\n" + kDataError +
                "SurfID in Patch data = 101\nit is not defined in MatEleProp data\n"
                "(tsrf_module_lyrstrct)(lyrstrct_set_land)\n");
  for (const auto& [dz, zl] : {std::pair{0.5, 0.6}, {1e-300, 1e300}, {1.0, 1e-3}}) {
    District other;
    EXPECT_EQ(other.recorded.lines_of([&] { other.ground(dz, zl); }),
              "### program error -1- (tsrf_module_lyrstrct)\n(cal_gemtrc)\n");
  }
}

}  // namespace
