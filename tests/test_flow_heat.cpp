// Temperature and species: bits of the plain form, closed forms, balances, published heat flows.
#include <gtest/gtest.h>

#include <memory>
#include <numbers>

#include "../bench/sample_heat.hpp"

namespace {

using flow::Field;
using flow::Triple;
using flow::VelocityAt;
using sample::distance;
using sample::fill;
using sample::for_cells;
using sample::HeatCase;
using sample::total;

/// Error of a sine between walls of given values along `axis`, after it has fallen to a third.
double diffusion_error(std::int32_t n, int axis, bool vapour) {
  constexpr double kPi = std::numbers::pi;
  sample::Nodes nodes{sample::equal(1), sample::equal(1), sample::equal(1)};
  nodes[static_cast<std::size_t>(axis)] = sample::clustered(n, 1.0);
  HeatCase x(nodes);
  for (const int side : {-1, 1}) x.wall(axis, side, 300.0).iy = flow::SpeciesAt::given;
  x.run.settings.species.prlmnr = x.run.settings.species.sclmnr = 0.5;
  x.add_vapour(0.5);
  x.start();
  auto& state = x.run.state;
  Field& q = vapour ? state.ys[1] : state.t;
  const double level = vapour ? 0.5 : 300.0;
  const auto sine = [axis](const flow::Vector& p) {
    return 0.4 * std::sin(kPi * p[static_cast<std::size_t>(axis)]);
  };
  fill(x, q, [&](const flow::Vector& p) { return level + sine(p); });
  for (std::int32_t step = 0; step < 5 * n * n; ++step) x.carry(1.0 / (n * n));
  const double fall = std::exp(-kPi * kPi * 0.02 * 5.0);
  double sum = 0.0;
  for_cells(q.box(), [&](std::size_t c, auto... index) {
    const Triple at{index...};
    const auto& table = x.run.grid.axis[static_cast<std::size_t>(axis)];
    flow::Vector p{};
    p[static_cast<std::size_t>(axis)] = table.xc(at[static_cast<std::size_t>(axis)]);
    const double error = q[c] - level - fall * sine(p);
    sum += error * error;
  });
  return std::sqrt(sum / n);
}

TEST(FlowHeat, DiffusionFollowsItsClosedForm) {
  for (int axis = 0; axis < 3; ++axis) {
    const bool vapour = axis == 1;
    const double coarse = diffusion_error(10, axis, vapour);
    const double fine = diffusion_error(20, axis, vapour);
    EXPECT_LT(fine, 0.0005) << axis;
    EXPECT_NEAR(std::log2(coarse / fine), 2.0, 0.1) << axis;
  }
}

/// Error of a hill that the wind carries once around, and of a front that it brings in.
TEST(FlowHeat, AdvectionCarriesWithoutNewExtremes) {
  const auto hill_error = [](std::int32_t n) {
    HeatCase x({sample::equal(1), sample::equal(n), sample::equal(1)}, true);
    x.control().idift = false;
    x.control().acrkt = 1.0 / 3.0;
    x.start([](int axis, const flow::Vector&) { return axis == 1 ? 1.0 : 0.0; });
    const auto hill = [](const flow::Vector& p) {
      return 300.0 + std::cos(2.0 * std::numbers::pi * p[1]);
    };
    fill(x, x.run.state.t, hill);
    const std::int32_t steps = 8 * n * n;
    for (std::int32_t step = 0; step < steps; ++step) x.carry(1.0 / steps);
    return distance(x.run.state.t, [&](auto, std::int32_t j, auto) {
      return hill({0.0, x.run.grid.axis[1].xc(j), 0.0});
    });
  };
  const double fine = hill_error(32);
  EXPECT_LT(fine, 0.035);
  EXPECT_GT(std::log2(hill_error(16) / fine), 1.5);  // the limiter cuts the top

  HeatCase x({sample::clustered(20), sample::equal(1), sample::equal(1)});
  x.control().idift = false;
  auto& inlet = x.wall(0, -1, 310.0);
  inlet.iv = VelocityAt::given;
  inlet.velocity[0] = 1.0;
  inlet.iy = flow::SpeciesAt::given;
  x.end(0, 1, VelocityAt::free);
  x.add_vapour(0.0);
  x.run.boundary.groups[0].ys = {0.0, 1.0};
  x.start([](int axis, const flow::Vector&) { return axis == 0 ? 1.0 : 0.0; });
  x.run.state.ru[0](0, 1, 1) = 1.0;  // the inlet's air is held as dense as the rest
  for (int step = 0; step < 150; ++step) {
    x.carry(0.002);
    EXPECT_EQ(
        distance(x.run.state.ys[0], [&](auto... at) { return 1.0 - x.run.state.ys[1](at...); }),
        0.0);
  }
  double filled = 0.0;
  for_cells(x.run.grid.box, [&](std::size_t c, auto... index) {
    filled += x.run.grid.volume(index...) * (x.run.state.t[c] - 300.0) / 10.0;
    EXPECT_GE(x.run.state.ys[1][c], 0.0);
    EXPECT_LE(x.run.state.ys[1][c], 1.0);
    EXPECT_LE(x.run.state.t[c], 310.0 * (1.0 + 1e-15));
    EXPECT_GE(x.run.state.t[c], 300.0 * (1.0 - 1e-15));
  });
  EXPECT_NEAR(filled, 150 * 0.002, 1e-9);
}

/// A street that repeats itself along y: a house and a half open cell on a floor that warms the
/// air, a source in the air of the cells; nothing leaves.
std::unique_ptr<HeatCase> street(std::int32_t intstp) {
  auto x = std::make_unique<HeatCase>(
      sample::Nodes{sample::clustered(8), sample::equal(6), sample::clustered(7)}, true);
  x->set_viscosity(2e-3);
  x->control().gravity[2] = -9.8;
  x->control().epscg = x->control().epsbcg = 1e-13;
  x->control().gsfcg = 0.0;
  x->control().intstp = intstp;
  x->control().smaller.dtmax = x->control().momentum.dtmax = x->control().scalar.dtmax = 0.004;
  x->symmetric(0);
  for (std::int32_t j : {2, 3}) x->run.openings.fluid(4, j, 1) = 0;
  x->run.openings.gmc(6, 2, 1) = x->run.openings.gm[0](6, 2, 1) = 0.5;
  flow::Group block;
  block.last = x->run.grid.box.n;
  block.iv = VelocityAt::log_wall;
  block.it = flow::TemperatureAt::flux;
  block.t = 50.0;
  x->ends(2, VelocityAt::log_wall);
  for (flow::Group& group : x->run.boundary.groups) group.it = flow::TemperatureAt::flux;
  x->run.boundary.groups[0].t = 300.0;
  x->run.boundary.groups[1].t = 0.0;
  x->run.boundary.groups.push_back(block);
  x->run.boundary.groups.back().ys = {1.0};
  x->add_vapour(0.1);
  return x;
}

TEST(FlowHeat, UniformAirStaysUniformInAnyFlow) {
  for (const std::int32_t intstp : {1, -1}) {
    const auto x = street(intstp);
    for (flow::Group& group : x->run.boundary.groups) group.it = flow::TemperatureAt::adiabatic;
    x->start(
        [](int axis, const flow::Vector& p) { return std::sin(9.0 * p[0] + 7.0 * p[1] + axis); });
    for (int step = 0; step < 100; ++step) x->carry(0.004);
    EXPECT_LT(distance(x->run.state.t, [](auto...) { return 300.0; }), 1e-10) << intstp;
    EXPECT_LT(distance(x->run.state.ys[1], [](auto...) { return 0.1; }), 1e-13) << intstp;
  }
}

TEST(FlowHeat, TheAirTakesWhatItIsGiven) {
  for (const std::int32_t intstp : {1, -1}) {
    const auto x = street(intstp);
    x->start();
    auto& sources = x->run.work.scalars.sources;
    const flow::Box& box = x->run.grid.box;
    sources.heat = sources.vapour = sources.drain = Field(box);
    sources.heat(2, 2, 3) = 4000.0;
    sources.vapour(7, 5, 6) = 0.3;
    double heat = 4000.0 * x->run.grid.volume(2, 2, 3);
    const double mass = 0.3 * x->run.grid.volume(7, 5, 6);
    for (std::size_t a = 0; a < 3; ++a) {
      for (const flow::BoundaryFace& at : x->run.work.rim.faces[a]) {
        const auto& group = x->run.work.rim.groups[static_cast<std::size_t>(at.group)];
        const double volume = x->run.grid.volume(at.index[0], at.index[1], at.index[2]);
        const double width = x->run.grid.axis[a].dx(at.index[a]);
        if (group.it == flow::TemperatureAt::flux) heat += group.t * volume / width;
      }
    }
    // What a step takes up is held by the mass that stood there before it.
    const auto held = [&](const Field& q) {
      return total(
          *x, [&](std::size_t c) { return x->run.openings.gmc[c] * x->run.state.r[1][c] * q[c]; });
    };
    x->steps(1);
    const double warm = held(x->run.state.t);
    const double vapour = held(x->run.state.ys[1]);
    double carried = 0.0;  // heat of the mass that enters
    for (int step = 0; step < 100; ++step) {
      carried += 0.004 * 1000.0 * mass * x->run.state.t(7, 5, 6);
      x->steps(1);
    }
    const double time = 100 * 0.004;
    const double gained = 1000.0 * (held(x->run.state.t) - warm) - carried;
    // The implicit form counts the mass of the change to first order in time alone.
    const double near = intstp == 1 ? 1e-10 : 0.03;
    EXPECT_NEAR(gained / (heat * time), 1.0, near) << intstp;
    EXPECT_NEAR((held(x->run.state.ys[1]) - vapour) / (mass * time), 1.0, near) << intstp;
    EXPECT_GT(std::fabs(x->at(2, 2, 2, 4)), 1e-3);  // it did move
    EXPECT_EQ(x->run.state.t(4, 2, 1), 300.0);
  }
}

/// Largest velocity of any cell.
double fastest(const HeatCase& x) {
  double most = 0.0;
  for_cells(x.run.grid.box, [&](auto, auto... index) {
    for (int axis = 0; axis < 3; ++axis) most = std::max(most, std::fabs(x.at(axis, index...)));
  });
  return most;
}

TEST(FlowHeat, StableAirStaysAtRest) {
  // Linear in the height between a cold floor and a warm lid, with either density; a warm box over
  // a cold floor, which cools from below and moves in the vertical alone.
  for (const int kind : {1, 2, 3}) {
    HeatCase x({sample::clustered(6), sample::clustered(5), sample::equal(12)});
    const double lid = kind == 3 ? 305.0 : 310.0;
    x.wall(2, -1, 300.0);
    x.wall(2, 1, lid);
    x.ends(0, VelocityAt::slip);
    x.symmetric(1);
    x.control().gravity[2] = -10.0;
    x.control().keeps_pressure = true;
    x.control().epscg = 1e-12;
    x.control().gsfcg = 0.0;
    if (kind == 2) {
      x.run.settings.records.idrdp = 2;
      x.run.settings.ambient.ramb = 0.0;
    }
    fill(x, x.run.state.t,
         [&](const flow::Vector& p) { return kind == 3 ? 305.0 : 300.0 + 10.0 * p[2]; });
    x.start();
    x.steps(200);
    if (kind < 3) {
      EXPECT_LT(distance(x.run.state.t,
                         [&](auto, auto, std::int32_t k) { return 300.0 + 10.0 * (k - 0.5) / 12; }),
                1e-8);
      EXPECT_LT(fastest(x), 1e-8);
    }
    for_cells(x.run.grid.box, [&](auto, std::int32_t i, std::int32_t j, std::int32_t k) {
      EXPECT_LT(std::fabs(x.at(0, i, j, k)) + std::fabs(x.at(1, i, j, k)), 1e-8);
      EXPECT_NEAR(x.run.state.t(i, j, k), x.run.state.t(1, 1, k), 1e-8);
    });
    EXPECT_LT(x.run.state.t(3, 3, 1), 301.5);
  }
}

TEST(FlowHeat, MixedAirKeepsItsPotentialTemperature) {
  for (const std::int32_t itmpt : {2, 1}) {
    for (const std::int32_t intstp : {1, -1}) {
      HeatCase x({sample::equal(4), sample::equal(1), sample::equal(20, 2000.0)});
      x.run.settings.records.idrdp = 2;
      x.run.settings.records.itmpt = itmpt;
      x.run.settings.ambient.ramb = 0.0;
      x.control().intstp = intstp;
      x.control().gravity[2] = -10.0;
      x.control().prturb = 1.0;
      x.ends(0, VelocityAt::slip);
      x.wall(2, -1, 300.0);
      x.end(2, 1, VelocityAt::slip);
      const double exponent = flow::kGasConstant / x.run.settings.species.wm[0] / 1000.0;
      const auto adiabatic = [&](double z) {
        return 300.0 * std::pow(1.0 - 10.0 * z / 1e5, exponent);
      };
      fill(x, x.run.state.t, [&](const flow::Vector& p) { return adiabatic(p[2]); });
      x.start();
      std::ranges::fill(x.run.state.mut.all(), 100.0);  // a storm of mixing
      for (int step = 0; step < 50; ++step) x.carry(20.0);
      const double change = distance(
          x.run.state.t, [&](auto, auto, std::int32_t k) { return adiabatic(100.0 * (k - 0.5)); });
      EXPECT_TRUE(itmpt == 2 ? change < 1e-10 : change > 1.0) << intstp << change;
    }
  }
}

TEST(FlowHeat, WallsOfTurbulentAirFollowTheirLaw) {
  constexpr double kNu = 1.5e-5;
  const flow::WallLaw same(0.9, 0.9);
  const double friction = flow::friction_velocity(3.0, 0.1, kNu);
  // Pr = Prt: the profile is that of momentum, and so is the exchange.
  EXPECT_NEAR(same.at(0.1 * friction / kNu), 0.9 * 3.0 / friction, 1e-9);
  EXPECT_NEAR(same.exchange(3.0, 0.1, 1.2, 1.2 * kNu), 1.2 * friction * friction / (0.9 * 3.0),
              1e-9);
  // The resistance of Jayatilleke at Pr 0.71, Prt 0.9.
  const double p =
      9.24 * (std::pow(0.71 / 0.9, 0.75) - 1.0) * (1.0 + 0.28 * std::exp(-0.007 * 0.71 / 0.9));
  const flow::WallLaw air(0.71, 0.9);
  EXPECT_NEAR(air.at(200.0), 0.9 * (std::log(200.0) / 0.42 + 5.5 + p), 1e-10);
  EXPECT_DOUBLE_EQ(air.at(3.0), 0.71 * 3.0);
  for (const double pr : {0.02, 0.71, 7.0, 500.0}) {  // no jump where both parts meet
    const flow::WallLaw law(pr, 0.85);
    double most = 0.0;
    for (int n = 0; n < 110000; ++n) {
      const double y = 0.05 * std::exp(1e-4 * n);
      most = std::max(most, law.at(y * 1.0001) / law.at(y));
    }
    EXPECT_LT(most, 1.00011) << pr;
  }
  EXPECT_NEAR(air.exchange(0.0, 0.1, 1.2, 1.2 * kNu), 1.2 * kNu / (0.71 * 0.1), 1e-15);
  EXPECT_NEAR(flow::WallLaw(0.71, 0.0).exchange(9.0, 0.1, 1.2, 1.2 * kNu), 1.2 * kNu / (0.71 * 0.1),
              1e-15);
}

}  // namespace
