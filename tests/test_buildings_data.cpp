// Buildings' data: what the readers take, mend and refuse, and sums over several processes.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "buildings/bldcmm.hpp"
#include "buildings/bldng.hpp"
#include "buildings/wall_structure.hpp"
#include "recorded_log.hpp"

namespace {

using tsrf_module_patch::kBuilding;
using tsrf_module_patch::kLand;

/// A street of surfaces: type, SurfID, BldID.
using Surfaces = std::vector<std::array<std::int32_t, 3>>;

struct Street {
  explicit Street(const Surfaces& surfaces = {{kBuilding, 1, 7}, {kBuilding, 2, 2000000000}}) {
    for (const auto& [type, SurfID, BldID] : surfaces) {
      patch.type.push_back(type);
      patch.SurfID.push_back(SurfID);
      patch.BldID.push_back(BldID);
    }
    for (auto* list : {&walls.structure, &walls.material, &walls.building}) {
      list->assign(surfaces.size(), -1);
    }
  }
  void buildings(const std::string& lines) {
    frame::TextInput file("Building.txt", "title\n" + lines);
    read_bldng(log, file, patch, bldng);
  }
  void check(const std::vector<std::int32_t>& BCD, const std::vector<std::int32_t>& Strct) {
    tsrf_module_rmheat::Data rmheat;
    std::string blocks = "title\n";
    for (std::size_t i = 0; i < BCD.size(); ++i) {
      blocks += frame::items(1, BCD[i], Strct[i], "9*0\n");
    }
    frame::TextInput file("RmHeat.txt", blocks);
    read_rmheat(log, file, rmheat);
    check_bldcd(log, "RmHeat", bldng, rmheat);
  }
  void materials(const std::string& lines) {
    frame::TextInput file("MatEleProp.txt", "title\n" + lines);
    read_matprp(log, file, matprp);
  }
  void wall_layers(double dz) { lyrstrct_set_bldng(log, dz, patch, matprp, bldng, walls); }

  RecordedLog recorded;
  frame::Log& log = recorded.log;
  tsrf_module_patch::Data patch;
  tsrf_module_matprp::Data matprp;
  tsrf_module_bldng::Data bldng;
  tsrf_module_lyrstrct::Data walls;
};

const std::string kFirst = "7 1 2 3 100 0.5 0.8 3 0\n";
const std::string kSecond = "2000000000 8 -2 1 80 1.0005 1.001 2.5 1 surplus\n";
const std::string kOther = "8 0 0 0 0 9 9 0 0\n";  // of another district
const std::string kMaterials = "1 1 1 0 0 1 0.2 10\n2 1 1 0 0 2 0.01 11\n2 1 1 0 0 2 0.1 10\n";

TEST(Buildings, OnlyThoseThatPatchesNameAreKept) {
  Street street;
  street.buildings(kOther + kFirst + kOther + kSecond);
  const tsrf_module_bldng::Data& bldng = street.bldng;
  EXPECT_EQ(bldng.nbld, 2);
  EXPECT_EQ(bldng.BldCD, (std::vector{1, 8}));
  EXPECT_EQ(bldng.floor, (std::vector{3, 1}));
  EXPECT_EQ(bldng.acflr, (std::vector{0.5, 1.0}));
  EXPECT_EQ(bldng.shf, (std::vector{0.8, 1.0}));
  EXPECT_EQ(bldng.no_release, (std::vector{0, 1}));
  EXPECT_EQ(bldng.by_bldid.find(2000000000), 1);
  street.check({8, 3, 1}, {-2, 3, 2});

  street.bldng.Tr = {290.0, 291.0};
  street.buildings("7 1 2 4 100 0 0 4 0\n" + kSecond);
  EXPECT_EQ(bldng.floor[0], 4);
  EXPECT_EQ(bldng.Tr, (std::vector{290.0, 291.0}));
  for (const std::string& other : {kFirst, kSecond + kFirst, "7 1 1 3 100 0.5 0.8 3 0\n" + kSecond,
                                   "7 2 2 3 100 0.5 0.8 3 0\n" + kSecond}) {
    EXPECT_EQ(street.recorded.lines_of([&] { street.buildings(other); }),
              "### error : invalid multi-day data\n(tsrf_module_bldng)(read_bldng)\n");
  }
}

TEST(Buildings, WallsAreCutIntoEqualCells) {
  Street street({{kBuilding, 2, 7}, {kLand, 2, 7}, {kBuilding, 1, 7}, {kBuilding, 2, 7}});
  street.buildings(kFirst);
  street.materials(kMaterials);
  street.wall_layers(0.03);
  EXPECT_EQ(street.walls.structure, (std::vector{0, -1, 1, 0}));
  EXPECT_EQ(street.walls.material, (std::vector{1, -1, 0, 1}));
  EXPECT_EQ(street.walls.building, (std::vector{0, -1, 0, 0}));
  const auto& parts = street.walls.structures[0].parts;
  ASSERT_EQ(parts.size(), 2U);
  EXPECT_EQ((std::vector{parts[0].SurfCD, parts[0].cells, parts[1].SurfCD, parts[1].cells}),
            (std::vector{11, 1, 10, 3}));
  EXPECT_EQ(column_size(street.walls), 8);  // 0.2 m in 7 cells
  std::vector<double> hin(4, 0.0);
  set_hin(street.patch, street.bldng, hin);
  EXPECT_EQ(hin, (std::vector<double>{8, 0, 8, 8}));
  Street thin;  // more cells than 32 bits count
  thin.buildings(kFirst + kSecond);
  thin.materials(kMaterials);
  EXPECT_THROW(thin.wall_layers(1e-300), frame::Failure);
}

// All processes hold the totals of their buildings after the two phases of an exchange that a test
// carries from one to the other.
TEST(SharedBuildings, SumsReachAllThatShareThem) {
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    const std::size_t ranks = 1 + random() % 6;
    std::vector<std::vector<std::int32_t>> ids(ranks);
    std::vector<std::vector<double>> sums(ranks);
    std::vector<frame::ShareLists> lists;
    std::map<std::int32_t, double> totals;
    for (std::size_t r = 0; r < ranks; ++r) {
      for (std::int32_t id = 0; id < 9; ++id) {
        if (random() % 2 == 0) ids[r].push_back(id * 250000000 - 1);
      }
      std::shuffle(ids[r].begin(), ids[r].end(), random);
      for (const std::int32_t id : ids[r]) {
        sums[r].push_back(static_cast<double>(random() % 1000));  // whole: exact in any order
        sums[r].push_back(1.0);
        totals[id] += sums[r].end()[-2];
      }
    }
    for (std::size_t r = 0; r < ranks; ++r) {
      lists.push_back(tsrf_module_bldcmm::lists_of(static_cast<std::int32_t>(r), ids));
    }
    using List = std::vector<frame::Partner> frame::ShareLists::*;
    const auto carry = [&](List from, List to, auto take) {
      std::vector<std::vector<frame::Message>> sent, received(ranks);
      for (std::size_t r = 0; r < ranks; ++r) sent.push_back(pack(lists[r].*from, 2, sums[r]));
      for (std::size_t r = 0; r < ranks; ++r) {
        for (frame::Message& message : sent[r]) {
          auto& inbox = received[static_cast<std::size_t>(message.rank)];
          inbox.push_back({static_cast<std::int32_t>(r), message.values});
        }
      }
      for (std::size_t r = 0; r < ranks; ++r) {
        ASSERT_EQ((lists[r].*to).size(), received[r].size());
        for (std::size_t i = 0; i < received[r].size(); ++i) {
          ASSERT_EQ((lists[r].*to)[i].rank, received[r][i].rank);
        }
        take(lists[r].*to, 2, received[r], sums[r]);
      }
    };
    carry(&frame::ShareLists::keepers, &frame::ShareLists::sharers, frame::add);
    carry(&frame::ShareLists::sharers, &frame::ShareLists::keepers, frame::put);
    for (std::size_t r = 0; r < ranks; ++r) {
      for (std::size_t b = 0; b < ids[r].size(); ++b) {
        EXPECT_EQ(sums[r][2 * b], totals[ids[r][b]]);
        EXPECT_EQ(sums[r][2 * b + 1], std::ranges::count_if(ids, [&](const auto& list) {
                    return std::ranges::count(list, ids[r][b]) > 0;
                  }));
      }
    }
  }
}

TEST(SharedBuildings, OneProcessKeepsItsSums) {
  Street street;
  street.buildings(kFirst + kSecond);
  const frame::ProcessLayer layer;
  tsrf_module_bldcmm::Data bldcmm;
  bldcmm_set_list(street.log, layer, street.bldng, bldcmm);
  EXPECT_TRUE(bldcmm.lists.keepers.empty() && bldcmm.lists.sharers.empty());
  std::vector<double> sums{1.0, 2.0};
  sumbldat01(street.log, layer, bldcmm, 1, sums);
  EXPECT_EQ(sums, (std::vector{1.0, 2.0}));
}

}  // namespace
