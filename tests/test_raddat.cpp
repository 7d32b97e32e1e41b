// Groups of patches, view factors, and the correction of areas.
#include <gtest/gtest.h>

#include <random>
#include <tuple>

#include "patches_of.hpp"
#include "radiation/raddat.hpp"
#include "radiation/view_factor_table.hpp"
#include "recorded_log.hpp"

namespace {

using namespace tsrf_module_raddat;

/// The texts of a run's three files and its group, and what comes of them.
struct Input {
  std::string index = "\n0 1 10 0\n0 2 20 0\n0 3 -30 0\n";
  std::string factors = "\n0 10 0 20 0.5\n0 20 0 10 0.25\n0 -30 0 10 0.1\n";
  std::string pairs = "\n10 20\n";
  std::string control = "&TSRF_RADDAT LVFSKY=0 /";
  std::vector<double> areas{1.0, 2.0, 4.0};
};

struct Outcome {
  Data data;
  std::vector<double> sky;
  std::string lines;
};

Outcome read_all(const Input& input) {
  Outcome out;
  RecordedLog recorded;
  frame::Log& log = recorded.log;
  frame::Crew crew({3});
  frame::TextInput control("control", input.control), index("PatchIndex", input.index);
  frame::TextInput pairs("PgidPrd", input.pairs), factors("FormFactor", input.factors);
  const auto patch = patches_of(input.areas);
  out.sky.resize(input.areas.size());
  out.lines = recorded.lines_of([&] {
    inputdata(log, control, out.data);
    read_lf2fr(log, index, patch, out.data);
    read_pgidprd(log, pairs, out.data);
    read_viewfactor(log, crew, factors, patch, out.data, out.sky);
    allocdata01(log, patch.mpatch, out.data);
    tsrf_set_rdata(log, patch, out.data, out.sky);
  });
  return out;
}

TEST(ViewFactorData, SkyIsGivenOrWhatTheOthersLeave) {
  const std::string given = "&TSRF_RADDAT LVFSKY=1 /", left = "&TSRF_RADDAT LVFSKY=0 /";
  const std::tuple<std::string, std::string, std::vector<double>> rows[] = {
      {left, Input{}.factors, {0.5, 0.75, 1.0}},  // nothing sees -30: it has the whole sky
      {left, "\n0 10 0 20 1.00005\n0 10 0 -30 .01\n0 20 0 10 1\n0 -30 0 10 1\n", {0.0, 0.0, 0.0}},
      {given, "\n0 10 0 20 0.3\n0 10 0 0 0.7099\n0 20 0 10 1\n", {0.7099, 0.0, 1.0}}};
  for (const auto& [control, factors, sky] : rows) {
    EXPECT_EQ(read_all({.factors = factors, .control = control}).sky, sky);
  }
}

/// A file of several pieces; `odd` stands in its middle.
std::string long_file(const std::string& first_rank, const std::string& odd) {
  std::mt19937 random(3);
  std::string text = "title\n";
  constexpr int kLines = 70000;
  for (int n = 0; n < kLines; ++n) {
    if (n == kLines / 2) text += odd;
    text += (n == 0 ? first_rank : "0") + " " + std::to_string(10 * (1 + random() % 2)) +
            " 0 -30 " + std::to_string(1e-6 * static_cast<double>(random() % 13)) + " surplus\n";
  }
  return text;
}

TEST(ViewFactorData, PiecesOfTheFileHoldWhatItsRecordsHold) {
  for (const std::string odd :
       {"", "\n\n", "0 10 0 20 0.25\n, , , 10\n", "0\n20 0 10\n.125\n", "0 10 0 20 0.5 /\n",
        "0 10 0 99 0.1\n", "0 10 0 20 x\n", "0 10 0 20 1.1\n", "0 10 0 0 0.1\n"}) {
    const Outcome pieces = read_all({.factors = long_file("0", odd)});
    const Outcome records = read_all({.factors = long_file("1*0", odd)});  // no plain line to begin
    EXPECT_EQ(pieces.lines, records.lines);
    EXPECT_EQ(pieces.sky, records.sky);
    const auto& [first, entries] = pieces.data.view_factors;
    EXPECT_EQ(first, records.data.view_factors.first);
    EXPECT_TRUE(std::ranges::equal(
        entries, records.data.view_factors.entries,
        [](const auto& a, const auto& b) { return a.source == b.source && a.factor == b.factor; }));
    EXPECT_GE(entries.size(), pieces.lines.empty() ? 70000U : 0U);
  }
}

TEST(ViewFactorTable, KeepsTheOrderOfTheFileForEachDestination) {
  for (const std::int32_t groups : {1, 31, 33, 1000, 70000, 2200000}) {
    std::mt19937 random(7);
    ViewFactorGatherer gatherer(groups);
    std::vector<std::int32_t> destination(100000);
    for (std::int32_t k = 0; k < 100000; ++k) {
      auto& d = destination[static_cast<std::size_t>(k)];
      d = static_cast<std::int32_t>(random() % static_cast<unsigned>(groups));
      gatherer.add(k, d, static_cast<float>(k));
    }
    frame::Crew crew({3});
    const ViewFactors table = gatherer.take_table(crew);
    ASSERT_EQ(table.entries.size(), destination.size());
    for (std::int32_t g = 0; g < groups; ++g) {
      std::int32_t last = -1;
      for (const auto& entry : table.of(static_cast<std::size_t>(g))) {
        ASSERT_GT(entry.source, last);
        last = entry.source;
        ASSERT_EQ(destination[static_cast<std::size_t>(last)], g);
        ASSERT_EQ(entry.factor, static_cast<float>(last));
      }
    }
  }
}

}  // namespace
