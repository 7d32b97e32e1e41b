// Buildings' data: what the readers take, mend and refuse, and sums over several processes.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "buildings/bldcmm.hpp"
#include "buildings/bldng.hpp"
#include "recorded_log.hpp"

namespace {

TEST(Buildings, OnlyThoseThatPatchesNameAreKept) {
  RecordedLog recorded;
  tsrf_module_patch::Data patch;
  patch.BldID = {7, 2000000000, 7};
  tsrf_module_bldng::Data bldng;
  const auto read = [&](const std::string& lines) {
    frame::TextInput file("Building.txt", "title\n" + lines);
    read_bldng(recorded.log, file, patch, bldng);
  };
  const std::string other = "8 0 0 0 0 9 9 0 0\n";  // of another district
  const std::string second = "2000000000 8 -2 1 80 1.0005 1.001 2.5 1 surplus\n";
  read(other + "7 1 2 3 100 0.5 0.8 3 0\n" + other + second);
  EXPECT_EQ(bldng.nbld, 2);
  EXPECT_EQ(bldng.BldCD, (std::vector{1, 8}));
  EXPECT_EQ(bldng.floor, (std::vector{3, 1}));
  EXPECT_EQ(bldng.acflr, (std::vector{0.5, 1.0}));
  EXPECT_EQ(bldng.shf, (std::vector{0.8, 1.0}));
  EXPECT_EQ(bldng.no_release, (std::vector{0, 1}));
  EXPECT_EQ(bldng.by_bldid.find(2000000000), 1);
  bldng.Tr = {290.0, 291.0};
  read("7 1 2 4 100 0 0 4 0\n" + second);
  EXPECT_EQ(bldng.floor[0], 4);
  EXPECT_EQ(bldng.Tr, (std::vector{290.0, 291.0})) << "rooms keep their state";
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

}  // namespace
