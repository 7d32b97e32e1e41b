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

using Entries = std::vector<std::tuple<std::size_t, std::size_t, float>>;
Entries entries_of(ViewFactors table) {
  Entries entries;
  table.each([&](std::size_t destination, std::size_t source, float factor) {
    entries.emplace_back(destination, source, factor);
  });
  return entries;
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
    const Entries entries = entries_of(pieces.data.view_factors);
    EXPECT_EQ(entries, entries_of(records.data.view_factors));
    EXPECT_GE(entries.size(), pieces.lines.empty() ? 60000U : 0U);
  }
}

// By source, as files mostly stand, and shuffled, which no order of panels keeps. Factors tell the
// place in the file.
TEST(ViewFactorTable, KeepsTheOrderOfTheFileForEachDestination) {
  for (const auto& [groups, count, shuffled, panels] :
       std::vector<std::tuple<int, int, bool, std::size_t>>{{1, 9, false, 1},
                                                            {31, 4000, true, 1},
                                                            {33, 4000, false, 1},
                                                            {1000, 100000, true, 1},
                                                            {70000, 1300000, false, 2},
                                                            {70000, 1000000, false, 0},
                                                            {70000, 1300000, true, 0},
                                                            {2200000, 100000, false, 0}}) {
    std::mt19937 random(7);
    const auto any = [&] { return static_cast<int>(random() % static_cast<unsigned>(groups)); };
    ViewFactorGatherer gatherer(groups);
    std::vector<std::pair<int, int>> lines;  // source, destination
    for (int k = 0; k < count; ++k) {
      const auto by_source = static_cast<int>(static_cast<std::int64_t>(k) * groups / count);
      lines.emplace_back(shuffled ? any() : by_source, any());
      gatherer.add(lines.back().first, lines.back().second, static_cast<float>(k + 1));
    }
    frame::Crew crew({3});
    ViewFactors table = gatherer.take_table(crew);
    EXPECT_EQ(table.narrow.size(), panels);
    EXPECT_EQ(table.wide.size(), panels == 0 ? 1U : 0U);
    int count_left = count;
    std::vector<float> last(static_cast<std::size_t>(groups), 0.0F);
    table.each([&](std::size_t destination, std::size_t source, float factor) {
      ASSERT_GT(factor, last[destination]);
      last[destination] = factor;
      const auto& line = lines[static_cast<std::size_t>(factor) - 1];
      ASSERT_EQ(static_cast<std::size_t>(line.first), source);
      ASSERT_EQ(static_cast<std::size_t>(line.second), destination);
      --count_left;
    });
    EXPECT_EQ(count_left, 0);
  }
}

}  // namespace
