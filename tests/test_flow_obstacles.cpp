// Obstacles, porous cells, leaves and what the city's files bring into the cells.
#include <gtest/gtest.h>

#include <memory>

#include "../bench/sample_flow.hpp"
#include "../bench/sample_surfaces.hpp"
#include "flow/monitors.hpp"
#include "flow/pressure/cldiv.hpp"
#include "flow/urban/chkdat.hpp"
#include "flow/urban/porous.hpp"
#include "flow/urban/set_flux.hpp"
#include "recorded_log.hpp"

namespace {

using flow::Field;
using flow::Triple;
using flow::VelocityAt;
using sample::FlowCase;

/// Largest difference of two flows' fluxes and pressures.
double difference(const FlowCase& x, const FlowCase& y) {
  double worst = 0.0;
  const auto compare = [&](const Field& a, const Field& b, int axis) {
    const Triple& n = a.box().n;
    for (std::int32_t k = axis == 2 ? 0 : 1; k <= n[2]; ++k) {
      for (std::int32_t j = axis == 1 ? 0 : 1; j <= n[1]; ++j) {
        for (std::int32_t i = axis == 0 ? 0 : 1; i <= n[0]; ++i) {
          const double error = std::fabs(a(i, j, k) - b(i, j, k));
          worst = error <= worst ? worst : error;  // keeps a NaN
        }
      }
    }
  };
  for (std::size_t a = 0; a < 3; ++a) {
    compare(x.run.state.ru[a], y.run.state.ru[a], static_cast<int>(a));
  }
  compare(x.run.state.p, y.run.state.p, -1);
  return worst;
}

/// What a cell's fluxes lack, over its volume, the largest of all.
double divergence(FlowCase& x) {
  Field div(x.run.grid.box);
  flow::flw_cldiv(x.run.crew, x.run.grid, x.run.openings, x.run.state, 1.0, nullptr, div);
  double worst = 0.0;
  for (const double value : div.all()) worst = std::max(worst, std::fabs(value));
  return worst;
}

void set_all(flow::Openings& openings, double fraction) {
  const auto fill = [fraction](Field& field) { std::ranges::fill(field.all(), fraction); };
  fill(openings.gmc);
  for (Field& gm : openings.gm) fill(gm);
}

/// Conditions of every kind around air whose cells and faces are all open to `fraction`.
std::unique_ptr<FlowCase> everywhere(double fraction, std::int32_t intstp, bool keeps) {
  auto x = std::make_unique<FlowCase>(
      sample::Nodes{sample::clustered(8), sample::clustered(7), sample::clustered(6)});
  x->control().epscg = x->control().epsbcg = 1e-13;
  x->control().intstp = intstp;
  x->control().keeps_pressure = keeps;
  x->control().momentum.dtmax = x->control().scalar.dtmax = 0.05;
  x->control().smaller.dtmax = 0.002;  // the limit of the step counts faces, not volumes
  x->end(0, -1, VelocityAt::given).velocity = {0.7, 0.3, 0.0};
  x->end(0, 1, VelocityAt::free);
  x->end(1, -1, VelocityAt::no_slip);
  x->end(1, 1, VelocityAt::given).velocity = {1.0, 0.0, 0.5};
  x->end(2, -1, VelocityAt::log_wall);
  x->end(2, 1, VelocityAt::slip);
  set_all(x->run.openings, fraction);
  x->start();
  x->steps(20);
  return x;
}

// A flux is that of the open part and every balance divides by the open volume: where all is open
// to the same part, nothing of the flow tells it, in no operator.
TEST(FlowObstacles, TheSameOpenPartEverywhereChangesNothing) {
  for (const std::int32_t intstp : {1, -1}) {
    for (const bool keeps : {false, true}) {
      const auto whole = everywhere(1.0, intstp, keeps);
      EXPECT_LT(difference(*whole, *everywhere(0.35, intstp, keeps)), 1e-10) << intstp << keeps;
    }
  }
}

// Wind that is led through a porous block goes through it faster by the open part, no mass is lost
// on the way, and its pressure falls by what it gains in speed (upwind, within some per cent).
TEST(FlowObstacles, WindPassesAPorousBlock) {
  FlowCase x({sample::equal(40, 4.0), sample::equal(1), sample::equal(1)});
  x.control().keeps_pressure = true;
  x.set_viscosity(0.0);
  x.end(0, -1, VelocityAt::given).velocity = {1.0, 0.0, 0.0};
  x.end(0, 1, VelocityAt::free);
  flow::Openings& openings = x.run.openings;
  for (std::int32_t i = 16; i <= 25; ++i) {
    openings.gmc(i, 1, 1) = 0.5;
    openings.gm[0](i - 1, 1, 1) = openings.gm[0](i, 1, 1) = 0.5;
  }
  x.start([](int axis, const flow::Vector&) { return axis == 0 ? 1.0 : 0.0; });
  x.steps(3000);
  EXPECT_LT(divergence(x), 1e-9);
  EXPECT_NEAR(x.run.state.ru[0](20, 1, 1), 2.0, 1e-6);
  EXPECT_NEAR(x.run.state.ru[0](40, 1, 1), 1.0, 1e-6);
  const double fall = x.run.state.p(8, 1, 1) - x.run.state.p(22, 1, 1);
  EXPECT_NEAR(fall, 0.5 * (4.0 - 1.0), 0.4);
}

/// Faces open by chance, cells as their faces are in the mean, some filled.
void open_by_chance(std::uint32_t seed, const flow::Boundary& boundary, flow::Openings& openings) {
  sample::Draws draw(seed);
  const flow::Box& box = openings.gmc.box();
  for (Field& gm : openings.gm) {
    for (double& part : gm.all()) part = draw.chance(0.1) ? 0.0 : draw(0.05, 1.0);
  }
  flow::for_rows(box, [&](std::size_t place, std::int32_t, std::int32_t) {
    for (std::size_t c = place; c < place + static_cast<std::size_t>(box.n[0]); ++c) {
      double sum = 0.0;
      for (int a = 0; a < 3; ++a) {
        const Field& gm = openings.gm[static_cast<std::size_t>(a)];
        sum += gm[c] + gm[c - box.stride(a)];
      }
      openings.gmc[c] = draw.chance(0.1) ? 0.0 : sum / 6.0;
    }
  });
  flow::flw_prep_stiobs(boundary, openings);
}

// Whatever is open, no divergence stays in any cell, and the flow goes on.
TEST(FlowObstacles, RandomFractionsKeepTheMass) {
  for (const std::int32_t intstp : {1, -1}) {
    FlowCase x({sample::clustered(9), sample::equal(8), sample::clustered(7)}, true);
    x.control().epscg = 1e-12;
    x.control().gsfcg = 0.5;
    x.control().intstp = intstp;
    x.control().keeps_pressure = true;
    x.control().momentum.dtmax = x.control().scalar.dtmax = 0.02;
    x.end(0, -1, VelocityAt::given).velocity = {1.0, 0.5, 0.0};
    x.end(0, 1, VelocityAt::free);
    x.ends(2, VelocityAt::no_slip);
    flow::Group& block = x.end(0, 1);  // one for all obstacles
    block.first = {0, 0, 0};
    block.axis = -1;
    open_by_chance(3, x.run.boundary, x.run.openings);
    x.start();
    x.steps(300);
    EXPECT_LT(divergence(x), 1e-9);
    const auto found = flow::take_monitors(x.run.crew, x.run.openings.fluid, x.run.state, false);
    EXPECT_TRUE(found.finite);
    EXPECT_LT(found.velocity.value, 20.0);
  }
}

/// Uniform wind through leaves in a slippery channel, along an axis.
std::unique_ptr<FlowCase> wind_through_leaves(int axis, std::int32_t intstp, bool keeps) {
  const auto a = static_cast<std::size_t>(axis);
  sample::Nodes nodes{sample::equal(1), sample::equal(1), sample::equal(1)};
  nodes[a] = {0.0, 0.5, 0.8, 1.4, 2.0, 2.3, 3.1, 4.0, 4.2, 5.0};
  auto x = std::make_unique<FlowCase>(nodes);
  x->control().intstp = intstp;
  x->control().keeps_pressure = keeps;
  x->control().epscg = 1e-12;
  x->control().momentum.dtmax = x->control().scalar.dtmax = 0.2;
  x->end(axis, -1, VelocityAt::given).velocity[a] = 3.0;
  x->end(axis, 1, VelocityAt::free);
  x->run.urban.adrg = Field(x->run.grid.box);
  for (const auto& [i, adrg] : {std::pair{3, 0.4}, {4, 0.1}, {5, 0.7}, {9, 0.3}}) {
    Triple cell{1, 1, 1};
    cell[a] = i;
    x->run.urban.adrg(cell[0], cell[1], cell[2]) = adrg;
  }
  x->start();
  x->steps(200);
  return x;
}

// The wind of 3 m/s, density 1, loses adrg * width * u^2 in each cell with leaves.
TEST(FlowObstacles, LeavesTakeTheirPressureFromTheWind) {
  for (const int axis : {0, 1, 2}) {
    for (const std::int32_t intstp : {1, -1}) {
      for (const bool keeps : {true, false}) {
        if (intstp == -1 && !keeps) continue;  // such steps want the kept pressure
        const auto x = wind_through_leaves(axis, intstp, keeps);
        const double lost = 9.0 * (0.4 * 0.6 + 0.1 * 0.6 + 0.7 * 0.3 + 0.3 * 0.8);
        EXPECT_NEAR(x->run.state.p(1, 1, 1), lost, 1e-8) << axis << intstp << keeps;
        EXPECT_NEAR(x->at(axis, 1, 1, 1), 3.0, 1e-10);
      }
    }
  }
}

// Air that nothing drives comes to rest in leaves, however dense, and never turns: with leaves
// everywhere u = u0/(1 + adrg u0 t), of first order in the step.
TEST(FlowObstacles, DenseLeavesNeverTurnTheFlow) {
  for (const double adrg : {0.1, 1e4}) {
    for (const std::int32_t intstp : {1, -1}) {
      FlowCase x({sample::equal(1), sample::equal(6, 6.0), sample::equal(1)}, true);
      x.control().intstp = intstp;
      x.control().smaller = {0.5, 0.05};
      x.control().momentum.dtmax = x.control().scalar.dtmax = 0.05;
      x.run.urban.adrg = Field(x.run.grid.box, adrg);
      x.start([](int, const flow::Vector&) { return 2.0; });
      for (double before = 2.0; x.run.state.time < 1.0 && x.run.state.iter < 100;) {
        x.steps(1);
        const double now = x.run.state.ru[1](1, 3, 1);
        ASSERT_GE(now, 0.0);
        ASSERT_TRUE(now < before || before == 0.0);
        before = now;
      }
      const double exact = 2.0 / (1.0 + adrg * 2.0 * x.run.state.time);
      EXPECT_NEAR(x.at(1, 1, 3, 1), exact, adrg < 1.0 ? 0.01 : 0.1);
    }
  }
}

/// Files in memory, put onto a grid of 4 x 3 x 2 cells of 2 m x 1 m x 5 m.
struct CityOf {
  CityOf() {
    grid.box.n = {4, 3, 2};
    grid.axis = {flow::make_axis({0, 2, 4, 6, 8}, false), flow::make_axis({0, 1, 2, 3}, false),
                 flow::make_axis({0, 5, 10}, false)};
    openings = flow::Openings(grid.box);
  }
  void porous(const std::string& text, double clim = 0.0, double xlim = 0.0) {
    frame::TextInput file("Porous", text);
    flow::ShortRecords limits;
    limits.clim = clim;
    limits.xlim = xlim;
    flow::kpc_read_porous(out.log, file, limits, boundary, openings);
  }
  flow::HourTable buildings(const std::string& text) {
    frame::TextInput file("BldLoad", text);
    const auto rows = flow::kpc_read_heat(out.log, file, grid.box);
    return flow::kpc_chkdat(out.log, grid, boundary, openings, {"BldLoad data", true, true}, rows);
  }

  RecordedLog out;
  flow::GridTables grid;
  flow::Boundary boundary;
  flow::Openings openings;
};

TEST(CityFiles, FractionsOfCellsAndFaces) {
  CityOf x;
  x.porous(
      "2 2 1 .5 .4 .3 1 1 1 1\n3 2 1 .7 .6 1 .05 1 1 1\n2 2 1 .6 .4 .5 1 1 1 .09\n"
      "4 3 2 0 1 1 1 1 1 1\n1 1 1 .01 1 1 1 1 1 1\n",
      0.02, 0.06);
  EXPECT_EQ(x.openings.gmc(2, 2, 1), 0.6);   // the later row of a cell
  EXPECT_EQ(x.openings.gmc(1, 1, 1), 0.02);  // clim
  EXPECT_EQ(x.openings.gm[0](1, 2, 1), 0.4);
  EXPECT_EQ(x.openings.gm[0](2, 2, 1), 0.5);  // the smaller of both cells
  EXPECT_EQ(x.openings.gm[1](3, 1, 1), 0.0);  // xlim
  EXPECT_EQ(x.openings.gm[2](2, 2, 1), 0.09);
  EXPECT_EQ(x.openings.fluid(4, 3, 2), 1);
  flow::flw_prep_stiobs(x.boundary, x.openings);
  EXPECT_EQ(x.openings.fluid(4, 3, 2), 0);
  EXPECT_EQ(x.openings.gm[0](3, 3, 2), 0.0);  // nothing passes a filled cell's faces
  EXPECT_EQ(x.openings.gm[2](4, 3, 1), 0.0);
  EXPECT_EQ(x.openings.fluid(1, 1, 1), 1);

  x.boundary.ends[1] = {flow::End::periodic, flow::End::periodic};
  x.porous("1 3 1 1 1 1 1 .25 1 1\n");
  EXPECT_EQ(x.openings.gm[1](1, 0, 1), 0.25);
}

TEST(CityFiles, HeatOfFilledCellsGoesToTheAirBeside) {
  CityOf x;
  for (const Triple& filled : {Triple{2, 2, 1}, Triple{3, 2, 1}, Triple{2, 2, 2}}) {
    x.openings.gmc(filled[0], filled[1], filled[2]) = 0.0;
  }
  std::string lines;
  flow::HourTable table;
  lines = x.out.lines_of([&] {
    table = x.buildings(
        "heading\n# another\n2 2 1 6 1 2 3 4\n2 2 1 7 0 0 30 0\n1 2 1 6 0 0 5 0\n"
        "1 2 1 6 .5 0 0 0\n");
  });
  EXPECT_EQ(lines,
            "%%% warning : BldLoad data names a cell and hour again, the rows are added ; rows = "
            "1\n%%% warning : BldLoad data gives heat to cells that are not fluid, it goes to "
            "those at their faces ; cells = 1\n");
  EXPECT_EQ(table.hours, (std::vector<std::int32_t>{6, 7}));
  // The three fluid neighbours of cell (2, 2, 1) are (1, 2, 1), (2, 1, 1), (2, 3, 1).
  ASSERT_EQ(table.cells.size(), 3U);
  double sum = 0.0;
  for (std::size_t c = 0; c < 3; ++c) {
    sum += 10.0 * table.at_hour(0)[c][0];
    EXPECT_DOUBLE_EQ(table.at_hour(0)[c][1], 6.0 / 3.0);
    EXPECT_DOUBLE_EQ(table.at_hour(1)[c][0], 30.0 / 3.0);
    const bool own = table.cells[c] == x.grid.box.at(1, 2, 1);
    EXPECT_DOUBLE_EQ(table.at_hour(0)[c][0], 4.0 / 3.0 + (own ? 5.5 : 0.0));
  }
  EXPECT_DOUBLE_EQ(sum, 10.0 * (4.0 + 5.5));
}

TEST(CityFiles, HoursAreJoinedByLines) {
  std::vector<std::int32_t> day(24);
  for (std::int32_t h = 0; h < 24; ++h) day[static_cast<std::size_t>(h)] = h + 1;
  struct Row {
    std::vector<std::int32_t> hours;
    double hour;
    std::size_t before, after;
    double part;
  };
  for (const Row& row :
       {Row{{12}, 3.0, 0, 0, 0.0}, Row{{6, 9}, 7.5, 0, 1, 0.5}, Row{{6, 9}, 2.0, 0, 0, 0.0},
        Row{{6, 9}, 30.0, 1, 1, 0.0}, Row{day, 1.25, 0, 1, 0.25}, Row{day, 24.5, 23, 0, 0.5},
        Row{day, 0.5, 23, 0, 0.5}, Row{day, 49.25, 0, 1, 0.25}}) {
    const flow::Moment at = flow::moment_of(row.hours, 3600.0 * row.hour);
    EXPECT_EQ(at.before, row.before) << row.hour;
    EXPECT_EQ(at.after, row.after) << row.hour;
    EXPECT_NEAR(at.part, row.part, 1e-12) << row.hour;
  }
}

TEST(CityFiles, SurfacesGiveHeatByTheTemperatureOfTheAir) {
  CityOf x;
  frame::TextInput file("SurfTemp", "heading\n2 1 1 12 40. 12400. 8. 1 1 1\n");
  flow::Urban urban;
  urban.TIME0 = 43200.0;
  const auto rows = flow::kpc_read_surftemp(x.out.log, file, x.grid.box, {1, 2});
  urban.tdrg = flow::kpc_chkdat(x.out.log, x.grid, x.boundary, x.openings, {"SurfTemp data"}, rows);
  flow::State state;
  state.t = Field(x.grid.box, 300.0);
  state.ys = {Field(x.grid.box, 0.99), Field(x.grid.box, 0.01)};
  state.pt = 101325.0;
  Field heat(x.grid.box);
  Field vapour(x.grid.box);
  flow::kpc_set_flux(urban, state, heat, &vapour);
  // Surfaces of 310 K, 40 W/K, in a cell of 10 m3 at the offset 1, 2.
  EXPECT_DOUBLE_EQ(heat(3, 3, 1), 40.0 * (310.0 - 300.0) / 10.0);
  const double es = 611.0 * std::exp(19.850675545287046 * (1.0 - 273.0 / 310.0));
  const double q = 0.6219790084242508 * es / (101325.0 - 0.3780209915757492 * es);
  EXPECT_NEAR(vapour(3, 3, 1), 8.0 / 10.0 / 1005.0 * (q - 0.01), 1e-15);
  Field exchange(x.grid.box);
  state.cp = Field(x.grid.box, 1000.0);
  flow::kpc_set_exchange(urban, state, exchange);
  EXPECT_DOUBLE_EQ(exchange(3, 3, 1), 4.0 / 1000.0);
  double total = 0.0;
  for (const double value : heat.all()) total += value;
  EXPECT_EQ(total, heat(3, 3, 1));
}

}  // namespace
