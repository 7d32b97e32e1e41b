// Terms of the flow: bits of the plain forms, closed forms, balances.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "../bench/plain_flow.hpp"
#include "../bench/sample_flow.hpp"
#include "../bench/sample_surfaces.hpp"
#include "flow/monitors.hpp"
#include "flow/properties.hpp"
#include "flow/run.hpp"
#include "flow/terms/viscous.hpp"
#include "flow/time_limit.hpp"

namespace {

using flow::Field;
using flow::Triple;
using flow::VelocityAt;

/// A box of draws: every value of every field, the openings and the obstacles.
struct RandomBox {
  RandomBox(const Triple& cells, std::uint32_t seed) : draw(seed) {
    for (std::size_t a = 0; a < 3; ++a) {
      grid.box.n[a] = cells[a];
      std::vector<double> nodes{0.0};
      for (std::int32_t i = 0; i < cells[a]; ++i) nodes.push_back(nodes.back() + draw(0.5, 2.0));
      grid.axis[a] = flow::make_axis(nodes, false);
    }
    metrics = flow::make_metrics(grid);
    rows = flow::SweepRows(grid.box, crew.hands());
    velocities = flow::Velocities(grid.box);
    for (auto* set : {&velocities.cell, &velocities.face, &state.ru, &rim.inner}) {
      for (Field& field : *set) field = filled(-1.0, 1.0);
    }
    for (std::size_t a = 0; a < 3; ++a) {
      Field& inner = rim.inner[a];
      for (double& value : inner.all()) value = draw.chance(0.2) ? 0.0 : draw(0.1, 1.0);
      const std::size_t row = grid.box.extent(0);
      for (std::size_t place = row; place < inner.all().size(); place += row) {
        if (draw.chance(0.5)) std::copy_n(inner.data(), row, inner.data() + place);
      }
      rim.inner_rows[a] = flow::EqualRows(inner);
    }
    state.mu = filled(0.1, 1.0);
    state.mut = filled(0.0, 3.0);
  }
  Field filled(double low, double high) {
    Field field(grid.box);
    for (double& value : field.all()) value = draw.chance(0.1) ? 0.0 : draw(low, high);
    return field;
  }

  sample::Draws draw;
  frame::Crew crew{{3, 1000}};  // tiles are shared, however small
  flow::GridTables grid;
  flow::Metrics metrics;
  flow::SweepRows rows;
  flow::Velocities velocities;
  flow::Rim rim;
  flow::State state;
};

TEST(FlowTerms, HaveTheBitsOfThePlainForms) {
  std::uint32_t seed = 0;
  for (const Triple& cells :
       {Triple{13, 7, 5}, Triple{34, 6, 1}, Triple{1, 9, 8}, Triple{2, 1, 3}}) {
    for (const double acrk : {1.0 / 3.0, -1.0, 1.0, 1.005, 1.01, 2.0}) {
      RandomBox x(cells, ++seed);
      std::ostringstream out;
      frame::Log log(out, out);
      std::array<Field, 3> fast{x.filled(-1, 1), x.filled(-1, 1), x.filled(-1, 1)};
      std::array<Field, 3> plain = fast;
      std::array<flow::Advected, 3> all{};
      for (std::size_t b = 0; b < 3; ++b) {
        all[b] = {&x.velocities.cell[b], &fast[b], b};
        plain::advect(x.metrics, x.rim, x.state.ru, x.velocities.cell[b], acrk, plain[b]);
      }
      flow::flw_cladv0(log, x.crew, x.metrics, x.rim, x.state.ru, flow::Variable::momentum, all,
                       acrk, x.rows);
      flow::flw_cldifv(x.crew, x.metrics, x.rim, x.state, x.velocities, {}, x.rows, fast);
      for (int b = 0; b < 3; ++b) {
        if (!x.grid.box.computed(b)) continue;
        auto& expected = plain[static_cast<std::size_t>(b)];
        plain::diffuse(x.metrics, x.rim, x.state, x.velocities, b, expected);
        EXPECT_TRUE(std::ranges::equal(expected.all(), fast[static_cast<std::size_t>(b)].all()))
            << "acrk " << acrk << ", component " << b << ", cells in x " << cells[0];
      }
    }
  }
}

TEST(FlowTerms, ScalarsHaveTheBitsOfThePlainForm) {
  std::uint32_t seed = 50;
  for (const Triple& cells : {Triple{13, 7, 5}, Triple{34, 6, 1}, Triple{1, 9, 8}}) {
    for (const double acrk : {1.0 / 3.0, 2.0}) {
      RandomBox x(cells, ++seed);
      std::ostringstream out;
      frame::Log log(out, out);
      flow::Run rest;
      const flow::Domain domain{rest.settings, x.grid,        x.metrics,  rest.boundary,
                                x.rim,         rest.openings, rest.urban, x.crew};
      const Field q = x.filled(-1.0, 1.0);
      Field capacity(x.grid.box);
      for (double& value : capacity.all()) value = x.draw(1.0, 2.0);
      std::array<Field, 3> fast{x.filled(-1, 1), x.filled(-1, 1), Field(x.grid.box)};
      std::array<Field, 3> plain = fast;
      flow::for_rows(x.grid.box,
                     [&](std::size_t c, auto...) { fast[2][c] = 9.0; });  // is forgotten
      const std::array<flow::Transported, 3> all{
          {{{&q, &fast[0]}, {&x.state.mu, 2.0, 0.7, &capacity}, flow::Variable::species, acrk},
           {{&x.velocities.cell[0], &fast[1]},
            {&x.state.mut, 0.5, 0.9},
            flow::Variable::turbulence,
            0.2},
           {{&q, &fast[2]}, {}, flow::Variable::temperature, acrk}}};
      flow::transport(log, domain, x.state, std::span(all).first(2), flow::Tendency::adds, x.rows);
      flow::transport(log, domain, x.state, std::span(all).last(1), flow::Tendency::begins, x.rows);
      for (std::size_t v = 0; v < 3; ++v) {
        plain::transport(x.metrics, x.rim, x.state, all[v], plain[v]);
        EXPECT_TRUE(std::ranges::equal(plain[v].all(), fast[v].all())) << v << cells[0];
      }
    }
  }
}

TEST(FlowTerms, LawOfTheWallJoinsItsTwoParts) {
  constexpr double kNu = 1.5e-5;
  constexpr double kHeight = 0.1;
  for (const double speed : {0.5, 3.0, 40.0}) {
    const double u = flow::friction_velocity(speed, kHeight, kNu);
    EXPECT_NEAR(speed / u, std::log(kHeight * u / kNu) / 0.42 + 5.5, 1e-10);
  }
  const double slow = flow::friction_velocity(0.01, kHeight, kNu);
  EXPECT_NEAR(slow * slow, kNu * 0.01 / kHeight, 1e-18);
  double y = 11.0;  // where both parts meet
  for (int turn = 0; turn < 100; ++turn) y = std::log(y) / 0.42 + 5.5;
  const double crossing = y * y * kNu / kHeight;
  EXPECT_NEAR(flow::friction_velocity(crossing * (1 + 1e-9), kHeight, kNu),
              flow::friction_velocity(crossing * (1 - 1e-9), kHeight, kNu), 1e-9 * crossing);

  // Air without viscosity has the friction of the least one that a divisor takes.
  sample::FlowCase x({sample::equal(2), sample::equal(1), sample::equal(2)});
  x.set_viscosity(0.0);
  x.ends(0, VelocityAt::free);
  x.ends(2, VelocityAt::log_wall);
  x.start([](int axis, const flow::Vector&) { return axis == 0 ? 3.0 : 0.0; });
  const flow::Run& run = x.run;
  auto& work = x.run.work.momentum;
  flow::set_velocities(x.run.crew, run.work.metrics, run.boundary.ends, run.state, work.velocities);
  auto shear = flow::make_shear(run.work.rim);
  for (std::size_t row = 0; row < 2; ++row) {
    flow::add_wall_shear(run.grid, run.work.metrics, run.work.rim, run.state, work.velocities, row,
                         shear, work.dqdt);
  }
  const double least = flow::friction_velocity(3.0, 0.25, 1e-20);
  EXPECT_DOUBLE_EQ(shear[2][0].along, least * least / 3.0);
}

/// Momentum that the terms give to the air of a box, beside what its rim gives.
TEST(FlowTerms, AdvectionCarriesWhatTheRimCarries) {
  sample::FlowCase x({sample::clustered(9), sample::clustered(7), sample::clustered(5)});
  x.end(0, -1, VelocityAt::given).velocity = {0.7, 0.4, 0.0};
  x.end(0, 1, VelocityAt::free);
  x.ends(1, VelocityAt::no_slip);
  x.symmetric(2);
  auto& plate = x.end(1, 1);
  plate.first[1] = plate.last[1] = 3;
  plate.first[0] = 4;
  plate.idir = 0;
  x.start([](int axis, const flow::Vector& p) { return std::sin(3.0 * p[0] + 5.0 * p[1] + axis); });
  flow::Run& run = x.run;
  auto& work = run.work.momentum;
  flow::set_velocities(x.run.crew, run.work.metrics, run.boundary.ends, run.state, work.velocities);
  std::array<flow::Advected, 3> all{};
  for (std::size_t b = 0; b < 3; ++b) all[b] = {&work.velocities.cell[b], &work.dqdt[b], b};
  flow::flw_cladv0(x.log, x.run.crew, run.work.metrics, run.work.rim, run.state.ru,
                   flow::Variable::momentum, all, 1.0 / 3.0, work.rows);
  for (std::size_t b = 0; b < 2; ++b) {
    double gained = 0.0;
    double carried = 0.0;
    for (std::int32_t k = 1; k <= 5; ++k) {
      for (std::int32_t j = 1; j <= 7; ++j) {
        for (std::int32_t i = 1; i <= 9; ++i) {
          gained += work.dqdt[b](i, j, k) * run.grid.volume(i, j, k);
        }
        const double area = run.grid.axis[1].dx(j) * run.grid.axis[2].dx(k);
        const double in = b == 0 ? 0.7 : 0.4;
        carried += area * (0.7 * in - run.state.ru[0](9, j, k) * work.velocities.cell[b](9, j, k));
      }
    }
    EXPECT_NEAR(gained, carried, 1e-13);
  }
}

TEST(FlowTerms, UnknownClassOfAVariableStops) {
  RandomBox x({3, 3, 1}, 7);
  std::ostringstream out;
  frame::Log log(out, out);
  Field dqdt(x.grid.box);
  const flow::Advected one{&x.velocities.cell[0], &dqdt, 0};
  EXPECT_THROW(flow::flw_cladv0(log, x.crew, x.metrics, x.rim, x.state.ru,
                                static_cast<flow::Variable>(6), std::span(&one, 1), 2.0, x.rows),
               frame::Stop);
  EXPECT_EQ(out.str(), "### program error -1- (flw_cladv0)\n");
}

TEST(FlowTerms, StepAndMonitorsOfAKnownFlow) {
  sample::FlowCase x({sample::equal(4, 2.0), sample::equal(70, 7.0), sample::equal(1)});
  x.set_viscosity(0.01);
  x.ends(0, VelocityAt::slip);
  x.ends(1, VelocityAt::free);
  x.start([](int axis, const flow::Vector& p) { return axis == 1 ? 1.0 + p[0] : 0.0; });
  const flow::Run& run = x.run;
  // Fastest column: 2.75 m/s through cells of 0.1 m; diffusion over 0.5 m and 0.1 m.
  const double rate = 2.75 / 0.1 + 4.0 * 0.01 * (1.0 / 0.25 + 1.0 / 0.01);
  x.run.state.mut(2, 69, 1) = 0.25;
  const double thick = 1.75 / 0.1 + 4.0 * 0.26 * (1.0 / 0.25 + 1.0 / 0.01);
  const auto dt = [&] {
    return flow::flw_cldelt(x.run.crew, x.control(), run.work.metrics, run.openings, run.state,
                            x.run.work.scratch);
  };
  EXPECT_NEAR(dt(), 0.5 / thick, 1e-12);
  const auto found = flow::take_monitors(x.run.crew, run.openings.fluid, run.state, true);
  EXPECT_NEAR(found.velocity.value, 2.75, 1e-12);
  EXPECT_EQ(found.velocity.cell, (Triple{4, 1, 1}));
  EXPECT_EQ(found.mut.cell, (Triple{2, 69, 1}));
  x.run.openings.fluid(2, 69, 1) = 0;
  x.run.openings.note_equal_rows();
  EXPECT_NEAR(dt(), 0.5 / rate, 1e-12);
  x.run.state.p(3, 33, 1) = NAN;
  EXPECT_FALSE(flow::take_monitors(x.run.crew, run.openings.fluid, run.state, false).finite);
  x.control().ivisc = false;
  EXPECT_NEAR(dt(), 0.5 / 27.5, 1e-12);
  x.control().smaller.dtmax = 1e-3;
  EXPECT_EQ(dt(), 1e-3);
}

// A uniform start leaves no flow in and on what is solid, nor along an axis with one cell.
TEST(FlowTerms, AStartFlowsWhereThereIsAir) {
  sample::FlowCase x({sample::equal(1), sample::equal(5), sample::equal(4)});
  x.ends(1, VelocityAt::free);
  x.ends(2, VelocityAt::slip);
  auto& block = x.end(1, 1);
  block.axis = -1;
  block.first = {};
  const auto solid = [](std::int32_t j, std::int32_t k) { return j >= 2 && j <= 3 && k <= 2; };
  for (std::int32_t j = 1; j <= 5; ++j) {
    for (std::int32_t k = 1; k <= 4; ++k) x.run.openings.fluid(1, j, k) = solid(j, k) ? 0 : 1;
  }
  x.start([](int, const flow::Vector&) { return 1.0; });
  for (std::int32_t k = 1; k <= 4; ++k) {
    for (std::int32_t j = 0; j <= 5; ++j) {
      EXPECT_EQ(x.run.state.ru[0](1, j, k), 0.0);
      EXPECT_EQ(x.run.state.ru[1](1, j, k), solid(j, k) || solid(j + 1, k) ? 0.0 : 1.0);
    }
  }
  for (std::int32_t j = 1; j <= 5; ++j) {
    for (std::int32_t k = 0; k <= 4; ++k) {
      const bool wall = k == 0 || k == 4 || solid(j, k) || solid(j, k + 1);
      EXPECT_EQ(x.run.state.ru[2](1, j, k), wall ? 0.0 : 1.0);
    }
  }
}

TEST(FlowTerms, PropertiesAndDensityOfAMixture) {
  flow::Species species;
  species.sutherland = true;
  species.mu = 1.8e-5;
  species.T = 291.15;
  species.C = 120.0;
  EXPECT_DOUBLE_EQ(flow::viscosity(species, 291.15), 1.8e-5);
  EXPECT_NEAR(flow::viscosity(species, 400.0),
              1.8e-5 * 411.15 / 520.0 * std::pow(400 / 291.15, 1.5), 1e-18);
  species.wm = {0.028, 0.018};
  species.acpk = {{1.0, 2.0, 3.0, 4.0, 5.0}, {}};
  species.sclmnr = 0.5;
  EXPECT_DOUBLE_EQ(flow::specific_heat(species, 0, 2.0), 1.0 + 4.0 + 12.0 + 32.0 + 80.0);
  // Of two species each diffuses into the other: mu/sclmnr S (1 - y)/(S - y/wm).
  const double moles = 0.9 / 0.028 + 0.1 / 0.018;
  EXPECT_NEAR(flow::diffusivity(species, 1, 0.1, moles, 1e-5), 2e-5 * moles * 0.9 / (0.9 / 0.028),
              1e-18);

  sample::FlowCase x({sample::equal(1), sample::equal(1), sample::equal(4, 40.0)});
  x.run.settings.records.idrdp = 2;
  x.control().gravity[2] = -10.0;
  x.ends(2, VelocityAt::no_slip);
  x.start();
  for (std::int32_t k = 1; k <= 4; ++k) {  // 1e5 Pa at the first node, 10 Pa less a metre above it
    EXPECT_NEAR(x.run.state.r[0](1, 1, k), (1e5 - 10.0 * (10.0 * k - 5.0)) / 1e5, 1e-14);
  }
}

}  // namespace
