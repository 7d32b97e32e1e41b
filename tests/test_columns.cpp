// Columns: cells, conductances and transmission against sums over whole layers and figures of an
// independent model.
#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include "recorded_log.hpp"
#include "surface/columns.hpp"

namespace {

using tsrf_module_lyrstrct::Kind;
using tsrf_module_lyrstrct::Part;

constexpr const char* kProperties =
    "title\n"
    "10 0.12 0.95 0 2110 920 3.8120750E-07 1000\n"
    "11 0.3 0.92 0 2300 880 7.4110672E-07 1000\n"
    "12 0.2 0.97 0.3 1500 1200 3.8888889E-07 1000\n"
    "14 0.4 0.92 0 1900 840 5.6390977E-07 1000\n"
    "15 0.18 0.93 0 1800 900 4.9382716E-07 1000\n"
    "30 0.1 0.88 0 2500 750 5.3333333E-07 20\n"
    "31 0.1 0.88 0 2500 750 5.3333333E-07 120\n"
    "32 0.1 0.88 0 1.2 1005 5.8043118E-05 0\n"
    "40 0.1 0.88 0 1.2 1005 0 0\n";

/// Columns of patches given by the parts of their structures; a patch without parts has none.
struct Columns {
  explicit Columns(const std::vector<std::vector<Part>>& stacks, std::vector<double> hin = {}) {
    frame::TextInput file("SurfProp.txt", kProperties);
    read_srfprp(log, file, srfprp);
    for (const std::vector<Part>& parts : stacks) {
      lyrstrct.structure.push_back(
          parts.empty() ? -1 : static_cast<std::int32_t>(lyrstrct.structures.size()));
      if (!parts.empty()) lyrstrct.structures.push_back({Kind::land, parts});
    }
    data.mpatch = static_cast<std::int32_t>(stacks.size());
    data.mzg = column_size(lyrstrct);
    patch.type.assign(stacks.size(), tsrf_module_patch::kLand);
    allocdata01(log, data);
    allocdata02(log, data);
    std::copy(hin.begin(), hin.end(), data.hin.begin());
  }
  void set() {
    tsrf_main01::tsrf_set_gdata(log, patch, srfprp, lyrstrct, data);
    tsrf_main01::set_conductances(data);
    tsrf_main01::set_transmission(data);
  }

  RecordedLog recorded;
  frame::Log& log = recorded.log;
  tsrf_module_patch::Data patch;
  tsrf_module_srfprp::Data srfprp;
  tsrf_module_lyrstrct::Data lyrstrct;
  tsrf_module_data::Data data;
};

Part ground(std::int32_t SurfCD, double dz, double zl) {
  RecordedLog recorded;
  const auto [n, ratio] = tsrf_module_lyrstrct::cal_gemtrc(recorded.log, 20, dz, zl);
  return {SurfCD, zl, n, dz, ratio};
}
Part layer(std::int32_t SurfCD, double thick, std::int32_t cells) {
  return {SurfCD, thick, cells, -1.0, 1.0};
}

TEST(Columns, SmallestStepIsThatOfAnIndependentModel) {
  struct Case {
    std::vector<std::vector<Part>> stacks;
    double hin;
    double step;
  };
  const std::vector<Part> pane{layer(31, 0.004, 1), layer(32, 0.012, 1), layer(30, 0.004, 1)};
  const std::vector<Case> cases{
      {{{ground(10, 0.04, 0.4)},
        {ground(11, 0.04, 0.4)},
        {ground(14, 0.04, 0.4)},
        {ground(15, 0.04, 0.4)}},
       0.0,
       719.6444438303478},
      {{{ground(10, 0.05, 0.5)}}, 0.0, 2186.036038990139},
      {{{}, {ground(12, 0.05, 0.75)}, {ground(10, 0.05, 0.75)}}, 0.0, 2142.857136734694},
      {{{ground(10, 0.02, 0.5)}, pane}, 8.0, 0.6347005687900157},
      {{{}}, 0.0, 1e20},
      {{{layer(40, 0.1, 3)}}, 0.0, 1e20},
  };
  for (const Case& it : cases) {
    Columns columns(it.stacks, std::vector<double>(it.stacks.size(), it.hin));
    columns.set();
    EXPECT_EQ(columns.recorded.lines_of(
                  [&] { tsrf_main01::report_smallest_step(columns.log, columns.data); }),
              frame::items("%%% delta-t in ground =", it.step) + "\n");
  }
}

TEST(Columns, CellsAndConductancesAddUpToTheLayers) {
  const std::vector<std::vector<Part>> stacks{
      {ground(12, 0.03, 1.7)},
      {layer(10, 0.2, 3), layer(30, 0.01, 1), layer(12, 0.1, 4)},
      {},
      {layer(32, 0.01, 1)}};
  const std::vector<double> hin{0.0, 8.0, 8.0, 5.0};
  Columns columns(stacks, hin);
  columns.set();
  const tsrf_module_data::Data& data = columns.data;
  for (std::size_t p = 0; p < stacks.size(); ++p) {
    double thickness = 0.0, resistance = 0.0, capacity = 0.0;
    for (const Part& part : stacks[p]) {
      const auto row = static_cast<std::size_t>(columns.srfprp.by_code.find(part.SurfCD));
      thickness += part.thickness;
      resistance += part.thickness / columns.srfprp.conductivity[row];
      capacity += part.thickness * columns.srfprp.heat_capacity[row];
    }
    double depth = 0.0, path = 0.0;
    for (std::int32_t k = 0; k < data.nlyr[p]; ++k) {
      depth += data.dzl(p, k);
      path += 1.0 / data.gcond(p, k);
    }
    const std::int32_t n = data.nlyr[p];
    if (hin[p] > 0.0 && n > 0) {
      EXPECT_NEAR((path + 1.0 / data.gcond(p, n)) / (resistance + 1.0 / hin[p]), 1.0, 1e-13);
      EXPECT_NEAR(data.uval(p, 0) * (path + 1.0 / data.gcond(p, n) + 1.0 / data.hc[p]), 1.0, 1e-13);
    } else {
      EXPECT_EQ(data.gcond(p, n), 0.0);
      EXPECT_EQ(data.uval(p, 0), 0.0);
    }
    EXPECT_NEAR(depth, thickness, 1e-12);
    EXPECT_NEAR(data.uval(p, 1), capacity, 1e-12 * capacity);
    for (std::int32_t k = n + 1; k <= data.mzg; ++k) EXPECT_EQ(data.gcond(p, k), 0.0);
    for (std::int32_t k = n; k < data.mzg; ++k) {
      EXPECT_EQ(data.dzl(p, k), 1e10);
      EXPECT_EQ(data.extc(p, k), 1e20);
    }
  }
}

TEST(Columns, InsulationAndMissingFilmsStopTransmissionOnly) {
  for (const double htrns : {11.6, 0.0}) {
    const std::vector<Part> wall{layer(10, 0.1, 2), layer(40, 0.05, 2)};
    Columns columns({wall, {layer(10, 0.1, 2)}}, {8.0, 8.0});
    columns.data.settings.HTRNS = htrns;
    columns.set();
    EXPECT_EQ(columns.data.uval(0, 0), 0.0);
    EXPECT_EQ(columns.data.uval(1, 0) > 0.0, htrns > 0.0);
    EXPECT_EQ(columns.data.gcond(0, 2), 0.0);  // to the insulation
    EXPECT_EQ(columns.data.gcond(0, 3), 0.0);  // within it
    EXPECT_EQ(columns.data.gcond(0, 4), 0.0);  // to the film
    EXPECT_EQ(columns.data.hm[0] * 1005.0, htrns);
  }
}

TEST(Columns, PatchesWithoutStructureTakeTheirRowByType) {
  Columns columns({{}, {}, {}, {layer(12, 1.0, 1), layer(10, 1.0, 1)}});
  columns.patch.type = {2, 6, 4, 3};
  columns.set();
  EXPECT_EQ(columns.data.isrf, (std::vector{9, 10, 0, 2}));
  EXPECT_EQ(columns.data.lcal, (std::vector{0, 0, 0, 1}));
}

TEST(Columns, FirstPatchWithAnUnknownCodeIsReported) {
  Columns columns(
      {{layer(10, 1.0, 1)}, {layer(10, 1.0, 1), layer(2000000000, 1.0, 1)}, {layer(99, 1.0, 1)}});
  columns.lyrstrct.structure = {0, 2, 1};
  EXPECT_EQ(columns.recorded.lines_of([&] { columns.set(); }),
            "### error : data error\nSurfCD in MatEleProp data = 99\n"
            "it is not defined in SurfProp data\n(tsrf_set_gdata)\n");
}

TEST(State, TellsWhichArrayFindsNoMemory) {
  RecordedLog recorded;
  tsrf_module_data::Data data;
  data.mpatch = 1 << 14;
  data.mzg = std::numeric_limits<std::int32_t>::max() - 1;  // beyond any address space
  EXPECT_EQ(recorded.lines_of([&] { allocdata02(recorded.log, data); }),
            "### error : allocation failed\narray,bytes = dzl 281474976448512\n"
            "(tsrf_module_data)(allocdata02)\n");
}

}  // namespace
