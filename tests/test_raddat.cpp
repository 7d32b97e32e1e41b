// Groups of patches, view factors, and the correction of areas.
#include <gtest/gtest.h>

#include <map>
#include <random>

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
  frame::TextInput control("control", input.control), index("PatchIndex", input.index);
  frame::TextInput pairs("PgidPrd", input.pairs), factors("FormFactor", input.factors);
  const auto patch = patches_of(input.areas);
  out.sky.resize(input.areas.size());
  out.lines = recorded.lines_of([&] {
    inputdata(log, control, out.data);
    read_lf2fr(log, index, patch, out.data);
    read_pgidprd(log, pairs, out.data);
    read_viewfactor(log, factors, patch, out.data, out.sky);
    allocdata01(log, patch.mpatch, out.data);
    tsrf_set_rdata(log, patch, out.data, out.sky);
  });
  return out;
}

TEST(ViewFactorData, EveryFaultHasItsWords) {
  const std::string error = "### error : data error\n";
  const std::string in_index = "(tsrf_module_raddat)(read_lf2fr)\n";
  const std::string in_factors = "(tsrf_module_raddat)(read_viewfactor)\n";
  const std::string in_pairs = "(tsrf_module_raddat)(read_pgidprd)\n";
  const std::string twice = "it is specified redundantly in line no. n1 & n2\nn1,n2 = ";
  const std::string unknown = "it is not defined in PatchIndex data\n";
  const std::string with_sky = "&TSRF_RADDAT LVFSKY=1 /";
  struct Row {
    Input input;
    std::string end;
  };
  for (const Row& row : std::vector<Row>{
           {{.control = "&tsrf_raddat lopref=0 /"},
            error + "lopref = 0\nit must be > 0\n(tsrf_module_raddat)(inputdata)\n"},
           {{.index = "\n0 1 10 0\n0 2 20 0\n"},
            error + "no. of PIDs in PatchIndex data = 2\nit must be = no. of PIDs in Patch data\n" +
                in_index},
           {{.index = ""},
            error +
                "no. of PIDs in PatchIndex data = 0\n"
                "it must be = no. of PIDs in Patch data\n" +
                in_index},
           {{.index = "\n0 1 10\n0 2 0\n0 3 5\n"},
            error + "PgID in PatchIndex data = 0\nit must be != 0\n" + in_index},
           {{.index = "\n0 3 10\n0 2 4\n0 3 5\n"},
            error + "PID in PatchIndex data = 3\n" + twice + "1 3\n" + in_index},
           {{.index = "\n0 3 10\n0 4 4\n0 1 5\n"},
            error + "PID in Patch data = 2\n" + "it is not defined in PatchIndex data\n" +
                in_index},
           {{.index = "\n0 3 10\n0 2 4.5\n0 1 5\n"},
            "%%% file PatchIndex, line 3\n### read error : PatchIndex data\n" + in_index},
           {{.pairs = "\n10 20\n10 7\n"},
            error + "PgID in PgidPrd data = 7\n" + unknown + in_pairs},
           {{.pairs = "\n10 20\n10\n"},
            "%%% file PgidPrd, line 3\n### read error : PgidPrd data\n" + in_pairs},
           {{.factors = "title\n"}, error + "lack of FormFactor data\n" + in_factors},
           {{.factors = "\n0 10 0 20 x\n"},
            "%%% file FormFactor, line 2\n### read error : FormFactor data\n" + in_factors},
           {{.factors = "\n0 10 0 20 nan\n"}, "### read error : FormFactor data\n" + in_factors},
           {{.factors = "\n0 10 0 20 0.5\n0 10 0"},
            "%%% file FormFactor, line 3\n### read error : FormFactor data\n" + in_factors},
           {{.factors = "\n0 10 0 7 -1e-3\n"},
            error + "FormFct = -0.001\nit must be >= 0 and <= 1\n" + in_factors},
           {{.factors = "\n0 10 0 20 1.00011\n"},
            error + "FormFct = 1.00011\nit must be >= 0 and <= 1\n" + in_factors},
           {{.factors = "\n0 7 0 8 1\n"},
            error + "SrcPgID of FormFactor data = 7\n" + unknown + in_factors},
           {{.factors = "\n0 10 0 7 1\n"},
            error + "DstPgID of FormFactor data = 7\n" + unknown + in_factors},
           {{.factors = "\n0 20 0 0 1\n0 10 0 0 1\n0 20 0 0 1\n", .control = with_sky},
            error + "SrcPgID of FormFactor data = 20\n" + twice + "1 3\n" + in_factors},
           {{.factors = "\n0 -30 0 0 0.5\n"},
            error + "SrcPgID of FormFactor data = -30\nit has view factor of sky\n" + in_factors},
           {{.factors = "\n0 20 0 0 0.75\n0 20 0 10 0.2601\n", .control = with_sky},
            "%%% warning : data error\nSrcPgID of FormFactor data = 10\n"
            "it does not have view factor of sky\n" +
                error +
                "SrcPgID of FormFactor data = 20\nsum of view factor = 1.0101\n"
                "it must be < 1.01\n" +
                in_factors}}) {
    const std::string lines = read_all(row.input).lines;
    EXPECT_TRUE(lines.ends_with(row.end)) << lines << "instead of\n" << row.end;
  }
}

TEST(ViewFactorData, SkyIsGivenOrWhatTheOthersLeave) {
  struct Row {
    Input input;
    std::vector<double> sky;
  };
  for (const Row& row : std::vector<Row>{
           {{}, {0.5, 0.75, 1.0}},  // nothing sees -30: it has the whole sky
           {{.factors = "\n0 10 0 20 1.00005\n0 10 0 -30 0.01\n0 20 0 10 1\n0 -30 0 10 1\n"},
            {0.0, 0.0, 0.0}},  // a sum above 1 leaves none
           {{.factors = "\n0 10 0 20 0.3\n0 10 0 0 0.7099\n0 20 0 10 1\n",
           .control = "&TSRF_RADDAT LVFSKY=1 /"},
            {0.7099, 0.0, 1.0}}}) {
    const Outcome out = read_all(row.input);
    EXPECT_EQ(out.sky, row.sky) << out.lines;
  }
}

TEST(ViewFactorData, CorrectionClosesEveryGroupThatIsSeen) {
  const Outcome out = read_all({});
  // Group 10 receives 0.25 x 2 and 0.1 x 4 of the areas, and needs half of its own.
  ASSERT_EQ(out.data.PgID, (std::vector<std::int32_t>{10, 20, -30}));
  EXPECT_NEAR(out.data.c[0], 0.5 / 0.9, 1e-7);
  EXPECT_NEAR(out.data.c[1], (2.0 - 2.0 * 0.75) / 0.5, 1e-7);
  EXPECT_EQ(out.data.c[2], 0.0);
  EXPECT_NE(out.lines.find("%%% correction factor for view area = 0.5555"), std::string::npos);
  EXPECT_TRUE(out.lines.ends_with("%%% sum of area (set_rdat) 1 1 1 1\n")) << out.lines;
}

TEST(ViewFactorData, ReverseSenseIsTheSameTableByReciprocity) {
  // The columns exchanged and each factor turned round by hand: A1 F12 = A2 F21.
  const Outcome plain =
      read_all({.factors = "\n0 10 0 20 0.5\n0 20 0 10 0.25\n0 -30 0 10 0.125\n0 10 0 -30 0.25\n"});
  const Outcome turned =
      read_all({.factors = "\n0 20 0 10 0.25\n0 10 0 20 0.5\n0 10 0 -30 0.5\n0 -30 0 10 0.0625\n",
                .control = "&TSRF_RADDAT LVFSWP=1 /"});
  ASSERT_EQ(turned.data.view_factors.first, plain.data.view_factors.first);
  for (std::size_t k = 0; k < plain.data.view_factors.entries.size(); ++k) {
    EXPECT_EQ(turned.data.view_factors.entries[k].source,
              plain.data.view_factors.entries[k].source);
    EXPECT_EQ(turned.data.view_factors.entries[k].factor,
              plain.data.view_factors.entries[k].factor);
  }
}

TEST(ViewFactorData, GroupsMayHaveAnyIdentifiers) {
  const Outcome out =
      read_all({.index = "\n9 3 -2147483648 x\n\n0,2,2147483647\n0 1 -2147483648 /\n",
                .factors = "\n2*-2147483648 0 2147483647 1D-1\n0 2147483647 0 -2147483648 .5",
                .pairs = ""});
  EXPECT_EQ(out.data.pgx, (std::vector<std::int32_t>{0, 1, 0})) << out.lines;
  EXPECT_TRUE(out.data.prd.empty());
  EXPECT_EQ(out.data.view_factors.first, (std::vector<std::int64_t>{0, 1, 2}));
}

TEST(ViewFactorTable, KeepsTheOrderOfTheFileForEachDestination) {
  for (const std::int32_t groups : {1, 31, 33, 1000, 70000}) {
    std::mt19937 random(7);
    ViewFactorGatherer gatherer(groups);
    std::map<std::int32_t, std::vector<std::int32_t>> expected;
    for (std::int32_t k = 0; k < 100000; ++k) {
      const auto destination = static_cast<std::int32_t>(random() % static_cast<unsigned>(groups));
      gatherer.add(k, destination, static_cast<float>(k));
      expected[destination].push_back(k);
    }
    const ViewFactors table = gatherer.take_table();
    for (std::int32_t g = 0; g < groups; ++g) {
      std::vector<std::int32_t> sources;
      for (const auto& entry : table.of(static_cast<std::size_t>(g))) {
        ASSERT_EQ(entry.factor, static_cast<float>(entry.source));
        sources.push_back(entry.source);
      }
      ASSERT_EQ(sources, expected[g]);
    }
  }
}

}  // namespace
