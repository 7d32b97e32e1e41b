// k-epsilon and both models in whole flows, against closed forms and symmetries.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "../bench/sample_heat.hpp"
#include "flow/terms/wall_shear.hpp"

namespace {

using flow::Triple;
using flow::TurbulenceAt;
using flow::Vector;
using flow::VelocityAt;
using sample::FlowCase;

/// k and epsilon in all cells.
template <class Use>
void for_k_epsilon(const FlowCase& x, Use&& use) {
  flow::for_rows(x.run.grid.box, [&](std::size_t place, auto, auto) {
    for (std::int32_t i = 0; i < x.run.grid.box.n[0]; ++i, ++place) {
      if (x.run.openings.fluid[place] > 0) use(x.run.state.ak[0][place], x.run.state.ak[1][place]);
    }
  });
}

TEST(FlowTurbulence, TurbulenceAtRestDecays) {
  const auto error = [](double dt, std::int32_t intstp) {
    FlowCase x({sample::equal(4), sample::equal(1), sample::clustered(5)});
    x.symmetric(0);
    x.ends(2, VelocityAt::slip);
    x.set_viscosity(1e-5);
    x.set_k_epsilon(1.0, 2.0);
    x.control().intstp = intstp;
    x.control().smaller.dtmax = x.control().momentum.dtmax = x.control().scalar.dtmax = dt;
    x.start();
    while (x.run.state.time < 1.0 - 1e-9) x.steps(1);
    const double expected = std::pow(1.0 + 0.92 * 2.0, -1.0 / 0.92);
    double worst = 0.0;
    for_k_epsilon(x, [&](double k, double eps) {
      worst = std::max(worst, std::fabs(k / expected - 1.0));
      EXPECT_NEAR(eps, 2.0 * std::pow(k, 1.92), 0.2);
    });
    return worst;
  };
  for (const std::int32_t intstp : {1, -1}) {
    const double coarse = error(0.02, intstp);
    EXPECT_NEAR(coarse / error(0.01, intstp), 2.0, 0.05) << intstp;
    EXPECT_LT(coarse, 0.02) << intstp;
  }
}

/// A channel over half its height, its wall at z = 0 under the law of the wall, driven along y.
struct Channel : FlowCase {
  explicit Channel(std::int32_t cells, double viscosity)
      : FlowCase({sample::equal(1), sample::equal(4), sample::equal(cells)}, true) {
    set_viscosity(viscosity);
    set_k_epsilon(3.0, 5.0);
    run.settings.ambient.ramb = 0.0;
    control().gravity[1] = 1.0;  // the friction velocity is 1
    run.boundary.ends[2] = {flow::End::open, flow::End::symmetric};
  }
  void begin() {
    const double nu = run.settings.species.mu;
    start([nu](int axis, const Vector& p) {
      return axis == 1 ? std::log(p[2] / nu) / 0.42 + 5.5 : 0.0;
    });
  }
};

TEST(FlowTurbulence, AChannelFollowsTheLawOfTheWall) {
  for (const auto ik : {TurbulenceAt::wall, TurbulenceAt::k_free}) {
    Channel x(50, 1.0 / 5000.0);
    x.end(2, -1, VelocityAt::log_wall).ik = ik;
    x.control().intstp = -1;
    x.control().keeps_pressure = true;
    x.control().momentum.dtmax = x.control().scalar.dtmax = 0.05;
    x.begin();
    while (x.run.state.time < 60.0) x.steps(1);
    const double friction = flow::friction_velocity(x.at(1, 1, 2, 1), 0.01, 1.0 / 5000.0);
    EXPECT_NEAR(friction * friction, 1.0, 0.01);
    for (std::int32_t k = 1; k <= 10; ++k) {
      const double y = x.run.grid.axis[2].xc(k) * 5000.0;
      const double law = std::log(y) / 0.42 + 5.5;
      EXPECT_NEAR(x.at(1, 1, 2, k) / law, 1.0, 0.03) << "y+ " << y;
    }
    // Production and dissipation balance above the wall.
    EXPECT_NEAR(x.run.state.ak[0](1, 2, 3) / (1.0 / 0.3), 1.0, 0.05);
    EXPECT_NEAR(x.run.state.ak[1](1, 2, 3) * 0.42 * 0.05, 1.0, 0.2);
  }
}

/// A building in a stream with every kind of condition, under a model of turbulence; its axes a
/// are put to `to[a]`, the first one mirrored or not.
std::unique_ptr<FlowCase> around_building(flow::Turbulence model, std::int32_t intstp,
                                          const std::array<int, 3>& to, bool mirrored) {
  const auto t = [&to](int axis) {
    return static_cast<std::size_t>(to[static_cast<std::size_t>(axis)]);
  };
  sample::Nodes nodes;
  for (int a = 0; a < 3; ++a) nodes[t(a)] = sample::clustered(10 - a, 1.0 + 0.2 * a);
  auto x = std::make_unique<FlowCase>(nodes);
  x->set_viscosity(1e-4);
  if (model == flow::Turbulence::k_epsilon) x->set_k_epsilon(0.01, 0.01);
  x->control().iturb = model;
  x->control().itemp = false;
  x->control().epscg = x->control().epsbcg = 1e-13;
  x->control().intstp = intstp;
  x->control().momentum.dtmax = x->control().scalar.dtmax = 0.03;
  const int low = mirrored ? 1 : -1;
  auto& inlet = x->end(to[0], low, VelocityAt::given);
  inlet.velocity[t(0)] = -low;
  inlet.ik = TurbulenceAt::given;
  inlet.k = 0.02;
  inlet.eps = 0.01;
  x->end(to[0], -low, VelocityAt::free);
  x->end(to[1], -1, VelocityAt::no_slip).ik = TurbulenceAt::wall;
  auto& lid = x->end(to[1], 1, VelocityAt::given);
  lid.velocity[t(0)] = -0.5 * low;
  lid.ik = TurbulenceAt::given;
  lid.k = 0.03;
  lid.eps = 0.05;
  x->end(to[2], -1, VelocityAt::log_wall).ik = TurbulenceAt::wall;
  x->end(to[2], 1, VelocityAt::slip);
  flow::Group block;
  block.last = x->run.grid.box.n;
  block.iv = VelocityAt::log_wall;
  block.ik = TurbulenceAt::k_free;
  x->run.boundary.groups.push_back(block);
  x->run.urban.adrg = flow::Field(x->run.grid.box);
  for (std::int32_t i = 4; i <= 5; ++i) {
    for (std::int32_t j = 4; j <= 6; ++j) {
      for (std::int32_t k = 1; k <= 4; ++k) {
        Triple cell{};
        cell[t(0)] = mirrored ? 11 - i : i;
        cell[t(1)] = j;
        cell[t(2)] = k;
        x->run.openings.fluid(cell[0], cell[1], cell[2]) = 0;
        cell[t(0)] = mirrored ? 3 : 8;
        x->run.urban.adrg(cell[0], cell[1], cell[2]) = 0.5;
      }
    }
  }
  x->start();
  x->steps(12);
  return x;
}

TEST(FlowTurbulence, ATurnedOrMirroredFlowHasTheTurnedTurbulence) {
  for (const auto model : {flow::Turbulence::k_epsilon, flow::Turbulence::les}) {
    for (const std::int32_t intstp : {1, -1}) {
      const auto plain = around_building(model, intstp, {0, 1, 2}, false);
      const auto fields = [&](const FlowCase& x) {
        std::vector<const flow::Field*> all{&x.run.state.mut};
        for (const auto& q : x.run.state.ak) {
          if (!q.empty()) all.push_back(&q);
        }
        return all;
      };
      for (const std::array<int, 3>& to :
           {std::array{0, 1, 2}, std::array{1, 2, 0}, std::array{2, 0, 1}, std::array{1, 0, 2}}) {
        const auto other = around_building(model, intstp, to, true);
        const auto expected = fields(*plain);
        const auto found = fields(*other);
        for (std::size_t f = 0; f < found.size(); ++f) {
          double worst = 0.0;
          double largest = 0.0;
          const Triple& n = plain->run.grid.box.n;
          for (std::int32_t k = 1; k <= n[2]; ++k) {
            for (std::int32_t j = 1; j <= n[1]; ++j) {
              for (std::int32_t i = 1; i <= n[0]; ++i) {
                Triple cell{};
                cell[static_cast<std::size_t>(to[0])] = 11 - i;
                cell[static_cast<std::size_t>(to[1])] = j;
                cell[static_cast<std::size_t>(to[2])] = k;
                const double q = (*expected[f])(i, j, k);
                const double d = std::fabs((*found[f])(cell[0], cell[1], cell[2]) - q);
                worst = d <= worst ? worst : d;  // keeps a NaN
                largest = std::max(largest, q);
              }
            }
          }
          EXPECT_LT(worst, 1e-12 * std::max(1.0, largest)) << f << intstp << to[0] << to[1];
          EXPECT_GT(largest, 1e-5);
        }
      }
    }
  }
}

TEST(FlowTurbulence, ImplicitStepsReachTheSameSteadyState) {
  const auto channel = [](std::int32_t intstp) {
    auto x = std::make_unique<Channel>(10, 1.0 / 500.0);
    x->end(2, -1, VelocityAt::log_wall).ik = TurbulenceAt::k_free;
    auto& lid = x->end(2, 1, VelocityAt::log_wall);  // in the place of the mirror
    x->run.boundary.ends[2][1] = flow::End::open;
    lid.ik = TurbulenceAt::given;
    lid.k = 2.0;
    lid.eps = 3.0;
    x->control().intstp = intstp;
    x->control().keeps_pressure = true;
    x->control().momentum.dtmax = x->control().scalar.dtmax = 0.05;
    x->begin();
    while (x->run.state.time < 100.0) x->steps(1);
    return x;
  };
  const auto plain = channel(1);
  const auto implicit = channel(-1);
  for (std::int32_t k = 1; k <= 10; ++k) {
    for (std::size_t item = 0; item < 2; ++item) {
      const double q = plain->run.state.ak[item](1, 2, k);
      EXPECT_NEAR(implicit->run.state.ak[item](1, 2, k), q, 1e-6 * q) << item << ' ' << k;
    }
  }
}

TEST(FlowTurbulence, StaysPositiveFromAHarshStart) {
  for (const std::int32_t intstp : {1, -1}) {
    const double small = intstp == 1 ? 1e-9 : 10.0;  // long steps of momentum bear no more
    for (const auto& [k0, eps0] : {std::pair{50.0, small}, {1e-9, 1e5}}) {
      FlowCase x({sample::clustered(8, 2.5), sample::clustered(7, 2.5), sample::clustered(6)});
      for (int axis = 0; axis < 3; ++axis) x.ends(axis, VelocityAt::log_wall);
      for (auto& group : x.run.boundary.groups) group.ik = TurbulenceAt::wall;
      x.set_viscosity(1e-5);
      x.set_k_epsilon(k0, eps0);
      x.control().intstp = intstp;
      x.control().smaller.dtmax = x.control().momentum.dtmax = x.control().scalar.dtmax = 0.01;
      x.control().smaller.dtsafe = 1.0;
      x.control().gsfcg = 0.0;
      std::mt19937 random(3);
      std::uniform_real_distribution<double> speed(-10.0, 10.0);
      x.start([&](int, const Vector&) { return speed(random); });
      for (int step = 0; step < 60; ++step) {
        x.steps(1);
        for_k_epsilon(x, [&](double k, double eps) {
          ASSERT_GE(k, x.run.settings.ambient.aklw);
          ASSERT_GE(eps, x.run.settings.ambient.aelw);
          ASSERT_LT(k + eps, 1e9);
        });
      }
    }
  }
}

/// One step of uniform air with a single source, against the source by hand.
TEST(FlowTurbulence, LeavesFeedTurbulenceByTheirDrag) {
  FlowCase x({sample::equal(4), sample::equal(4), sample::equal(4)});
  x.end(0, -1, VelocityAt::given).velocity = {2.0, 0.0, 0.0};
  x.run.boundary.groups.back().ik = TurbulenceAt::free;
  x.end(0, 1, VelocityAt::free);
  x.ends(1, VelocityAt::slip);
  x.ends(2, VelocityAt::slip);
  x.set_viscosity(1e-6);
  x.set_k_epsilon(0.5, 0.3);
  x.run.urban.adrg = flow::Field(x.run.grid.box, 0.2);
  x.start([](int axis, const Vector&) { return axis == 0 ? 2.0 : 0.0; });
  const double speed = 2.0;
  x.steps(1);
  const double dt = x.run.state.dt;
  const double now = x.at(0, 2, 2, 2);  // the drag may have slowed the air by now
  EXPECT_NEAR(now, speed, 0.2);
  const double made = 0.2 * now * now * now;
  const double k = (0.5 + dt * made) / (1.0 + dt * 0.3 / 0.5);
  const double eps = (0.3 + dt * 1.5 * 0.3 * made / 0.5) / (1.0 + dt * 1.92 * 0.3 / 0.5);
  EXPECT_NEAR(x.run.state.ak[0](2, 2, 2), k, 1e-6);
  EXPECT_NEAR(x.run.state.ak[1](2, 2, 2), eps, 1e-6);
}

TEST(FlowTurbulence, ColdAirAboveWarmFeedsTurbulence) {
  constexpr double kGravity = 9.81;
  constexpr double kStart = 0.001;  // epsilon, at k = 1
  for (const int up : {0, 2}) {
    // The last: air of one temperature is stable, for what rises cools by g/cp.
    for (const auto& [gradient, itmpt] : {std::pair{-5.0, 1}, {5.0, 1}, {0.0, 2}}) {
      sample::Nodes nodes{sample::equal(1), sample::equal(1), sample::equal(1)};
      nodes[static_cast<std::size_t>(up)] = sample::clustered(8);
      sample::HeatCase x(nodes);
      x.ends(up, VelocityAt::no_slip);
      x.set_viscosity(1e-6);
      x.set_k_epsilon(1.0, kStart);
      x.control().gravity[static_cast<std::size_t>(up)] = -kGravity;
      x.control().prturb = 0.9;
      x.control().idift = false;
      x.control().smaller.dtmax = 1e-5;
      x.run.settings.records.itmpt = x.run.settings.records.idrdp = itmpt;
      if (itmpt == 2) x.run.settings.ambient.ramb = 0.0;
      const auto& table = x.run.grid.axis[static_cast<std::size_t>(up)];
      Triple c{1, 1, 1};
      for (std::int32_t n = 1; n <= 8; ++n) {
        c[static_cast<std::size_t>(up)] = n;
        x.run.state.t(c[0], c[1], c[2]) = 300.0 + gradient * table.xc(n);
      }
      x.start();
      x.steps(1);
      const double dt = x.run.state.dt;
      for (const std::int32_t n : {1, 4, 8}) {
        c[static_cast<std::size_t>(up)] = n;
        const std::size_t at = x.run.grid.box.at(c[0], c[1], c[2]);
        const double t = x.run.state.t[at];
        const double slope = itmpt == 2 ? kGravity / 1000.0 : gradient;
        const double made =
            x.run.state.mut[at] / 0.9 * -kGravity * slope / t / x.run.state.r[0][at];
        const double k = x.run.state.ak[0][at];
        const double sink = 1.0 + dt * kStart;
        const double found = made > 0.0 ? (k * sink - 1.0) / dt : (k * sink - 1.0) / (dt * k);
        EXPECT_NEAR(found / made, 1.0, 1e-3) << up << gradient << n;
        EXPECT_GT(std::fabs(made), 1e-3);
      }
    }
  }
}

/// Wind along x past a house of three rows from `first` on, in a street that repeats itself.
std::unique_ptr<FlowCase> past_a_house(std::int32_t first) {
  auto x = std::make_unique<FlowCase>(
      sample::Nodes{sample::equal(8), sample::equal(8), sample::equal(5)}, true);
  x->control().epscg = 1e-13;
  x->set_viscosity(1e-5);
  x->set_k_epsilon(0.1, 0.01);
  x->end(0, -1, VelocityAt::given).velocity = {3.0, 0.3, 0.0};
  x->end(0, 1, VelocityAt::free);
  x->ends(2, VelocityAt::slip);
  flow::Group house;
  house.last = x->run.grid.box.n;
  house.iv = VelocityAt::log_wall;
  house.ik = flow::TurbulenceAt::wall;
  x->run.boundary.groups.push_back(house);
  for (std::int32_t row = 0; row < 3; ++row) {
    for (const std::int32_t i : {3, 4}) {
      for (const std::int32_t k : {1, 2}) x->run.openings.fluid(i, (first + row) % 8 + 1, k) = 0;
    }
  }
  x->start([](int axis, auto&) { return axis == 0 ? 3.0 : 0.0; });
  std::ostringstream out;
  frame::Log log(out, out);
  flow::flw_prep_ckbnd1(log, x->run.boundary, x->run.openings, x->run.faces);
  x->steps(10);
  return x;
}

TEST(FlowTurbulence, KnowsNoEndWhereTheDomainRepeatsItself) {
  const auto middle = past_a_house(2);
  const auto cut = past_a_house(6);
  double most = 0.0;
  for (std::int32_t k = 1; k <= 5; ++k) {
    for (std::int32_t j = 1; j <= 8; ++j) {
      for (std::int32_t i = 1; i <= 8; ++i) {
        const std::int32_t there = (j + 3) % 8 + 1;
        EXPECT_NEAR(middle->at(0, i, j, k), cut->at(0, i, there, k), 1e-9) << i << ' ' << j;
        EXPECT_NEAR(middle->run.state.ak[0](i, j, k), cut->run.state.ak[0](i, there, k), 1e-9);
        most = std::max(most, middle->run.state.ak[0](i, j, k));
      }
    }
  }
  EXPECT_GT(most, 0.1);
}

}  // namespace
