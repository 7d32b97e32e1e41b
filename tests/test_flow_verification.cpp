// The flow against solutions that are known: developed and decaying flows, the cavity, symmetries.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <numbers>

#include "../bench/sample_cavity.hpp"
#include "flow/urban/porous.hpp"

namespace {

using flow::Field;
using flow::Triple;
using flow::Vector;
using flow::VelocityAt;
using sample::FlowCase;

/// Observed order between two errors on grids that differ by a factor of two.
double order(double coarse, double fine) { return std::log2(coarse / fine); }

/// Largest error of a channel flow between walls in y, driven by the pressure at its ends.
double poiseuille_error(std::int32_t n, bool implicit) {
  FlowCase x({sample::equal(4), sample::equal(n), sample::equal(1)});
  x.set_viscosity(0.1);
  x.end(0, -1, VelocityAt::free).pb = 0.8;
  x.end(0, 1, VelocityAt::free);
  x.ends(1, VelocityAt::no_slip);
  if (implicit) {
    x.control().intstp = -1;
    x.control().keeps_pressure = true;
    x.control().momentum.dtmax = x.control().scalar.dtmax = 0.1;
  }
  x.start();
  while (x.run.state.time < (implicit ? 60.0 : 20.0)) x.steps(1);
  double error = 0.0;
  for (std::int32_t j = 1; j <= n; ++j) {
    const double y = (j - 0.5) / n;
    for (std::int32_t i = 1; i <= 4; ++i) {
      error = std::max(error, std::fabs(x.at(0, i, j, 1) - 4.0 * y * (1.0 - y)));
      EXPECT_LT(std::fabs(x.at(1, i, j, 1)), 1e-6);
    }
  }
  return error;
}

TEST(FlowVerification, ChannelFlowIsOfSecondOrder) {
  const std::array errors{poiseuille_error(8, false), poiseuille_error(16, false),
                          poiseuille_error(32, false)};
  EXPECT_NEAR(order(errors[0], errors[1]), 2.0, 0.01);
  EXPECT_NEAR(order(errors[1], errors[2]), 2.0, 0.01);
  EXPECT_NEAR(poiseuille_error(8, true), errors[0], 1e-6);
}

/// Root mean square error of a decaying vortex in the plane of two axes; y repeats itself when it
/// is one of them, all other ends mirror.
double vortex_error(std::int32_t n, int a, int b) {
  constexpr double kNu = 0.02;
  constexpr double kTurn = 2.0 * std::numbers::pi;
  const bool periodic = a == 1 || b == 1;
  sample::Nodes nodes{sample::equal(1), sample::equal(1), sample::equal(1)};
  nodes[static_cast<std::size_t>(a)] = nodes[static_cast<std::size_t>(b)] = sample::equal(n);
  FlowCase x(nodes, periodic);
  for (const int axis : {a, b}) {
    if (axis != 1) x.symmetric(axis);
  }
  x.set_viscosity(kNu);
  x.control().smaller.dtmax = 0.4 / (n * n);
  const auto at = [](const Vector& p, int axis) {
    return kTurn * p[static_cast<std::size_t>(axis)];
  };
  x.start([&](int axis, const Vector& p) {
    if (axis == a) return std::sin(at(p, a)) * std::cos(at(p, b));
    return axis == b ? -std::cos(at(p, a)) * std::sin(at(p, b)) : 0.0;
  });
  while (x.run.state.time < 0.25) x.steps(1);
  const double decay = std::exp(-2.0 * kNu * kTurn * kTurn * x.run.state.time);
  double sum = 0.0;
  for (std::int32_t q = 1; q <= n; ++q) {
    for (std::int32_t p = 1; p <= n; ++p) {
      Triple c{1, 1, 1};
      c[static_cast<std::size_t>(a)] = p;
      c[static_cast<std::size_t>(b)] = q;
      const double exact =
          decay * std::sin(kTurn * (p - 0.5) / n) * std::cos(kTurn * (q - 0.5) / n);
      const double error = x.at(a, c[0], c[1], c[2]) - exact;
      sum += error * error;
    }
  }
  return std::sqrt(sum) / n;
}

TEST(FlowVerification, VorticesDecayWithSecondOrder) {
  for (const auto& [a, b] : {std::pair{0, 1}, {1, 2}, {2, 0}}) {
    const std::array errors{vortex_error(16, a, b), vortex_error(32, a, b)};
    EXPECT_LT(errors[1], 5e-4) << a << b;
    EXPECT_GT(order(errors[0], errors[1]), 2.0) << a << b;
  }
}

TEST(FlowVerification, CavityFollowsThePublishedLines) {
  sample::Cavity x(32, sample::kReynolds[0]);
  x.start();
  x.settle(1e-4);
  const auto [u, v] = x.deviation(0);
  EXPECT_LT(u.largest, 0.005);
  EXPECT_LT(v.largest, 0.006);
}

/// Largest deviation of a flow's velocities from `expected(axis, i, j, k)`.
template <class Expected>
double deviation(const FlowCase& x, Expected&& expected) {
  double worst = 0.0;
  const Triple& n = x.run.grid.box.n;
  for (std::int32_t k = 1; k <= n[2]; ++k) {
    for (std::int32_t j = 1; j <= n[1]; ++j) {
      for (std::int32_t i = 1; i <= n[0]; ++i) {
        for (int axis = 0; axis < 3; ++axis) {
          const double error = std::fabs(x.at(axis, i, j, k) - expected(axis, i, j, k));
          worst = error <= worst ? worst : error;  // keeps a NaN
        }
      }
    }
  }
  return worst;
}

TEST(FlowVerification, ImplicitStepsReachTheSameSteadyState) {
  sample::Cavity plain(12, 100.0);
  plain.control().epscg = 1e-8;
  plain.start();
  plain.settle(1e-8);
  sample::Cavity implicit(12, 100.0);
  implicit.control().epscg = 1e-8;
  implicit.control().intstp = -1;
  implicit.control().momentum.dtmax = implicit.control().scalar.dtmax = 0.2;
  implicit.start();
  implicit.settle(1e-8);
  EXPECT_LT(deviation(plain, [&](int a, auto... cell) { return implicit.at(a, cell...); }), 1e-6);
}

TEST(FlowVerification, UniformFlowStaysUniform) {
  for (const Vector& u : {Vector{2.0, 0.0, 0.0}, Vector{1.0, 2.0, 0.5}}) {
    FlowCase x({sample::clustered(10), sample::clustered(8), sample::clustered(6)});
    for (int axis = 0; axis < 3; ++axis) {
      if (u[static_cast<std::size_t>(axis)] == 0.0) {
        x.ends(axis, VelocityAt::slip);
      } else {
        x.end(axis, -1, VelocityAt::given).velocity = u;
        x.end(axis, 1, VelocityAt::free);
      }
    }
    x.start([&](int axis, const Vector&) { return u[static_cast<std::size_t>(axis)]; });
    x.steps(50);
    EXPECT_LT(deviation(x, [&](int a, auto...) { return u[static_cast<std::size_t>(a)]; }), 1e-12);
  }
}

/// Obstacles, a partly open cell and leaves; `t` turns the axes, the first is mirrored or not.
template <class Turn>
void build_up(Turn&& t, bool mirrored, FlowCase& x) {
  flow::Openings& openings = x.run.openings;
  const auto at = [&](Field& field, Triple cell, bool face = false) -> double& {
    if (mirrored) cell[0] = (face ? 8 : 9) - cell[0];
    Triple to{};
    for (int a = 0; a < 3; ++a) to[t(a)] = cell[static_cast<std::size_t>(a)];
    return field(to[0], to[1], to[2]);
  };
  auto& walls = x.end(static_cast<int>(t(1)), -1);
  walls.first = {};
  walls.last = x.run.grid.box.n;
  walls.axis = -1;
  for (const Triple& filled : {Triple{3, 1, 1}, Triple{4, 1, 1}, Triple{3, 2, 1}}) {
    at(openings.gmc, filled) = 0.0;
  }
  at(openings.gmc, {5, 3, 4}) = 0.4;
  at(openings.gm[t(0)], {4, 3, 4}, true) = 0.7;
  at(openings.gm[t(1)], {5, 3, 4}) = 0.2;
  at(openings.gm[t(0)], {6, 4, 3}, true) = 0.0;  // a thin wall
  flow::flw_prep_stiobs(x.run.boundary, openings);
  x.run.urban.adrg = Field(x.run.grid.box);
  at(x.run.urban.adrg, {5, 3, 4}) = 2.0;
  at(x.run.urban.adrg, {6, 3, 3}) = 1.0;
}

/// The velocities of the cells do not hold a chessboard of fluxes; it must die out all the same.
TEST(FlowVerification, WavesOfTwoCellsDieOut) {
  constexpr std::int32_t kCells = 16;
  // By viscosity, and by their own advection.
  for (const auto& [a, b, mu, size] :
       {std::tuple{0, 1, 0.01, 1e-3}, {1, 2, 0.01, 1e-3}, {2, 0, 0.01, 1e-3}, {1, 2, 0.0, 1.0}}) {
    sample::Nodes nodes{sample::equal(1), sample::equal(1), sample::equal(1)};
    for (const int axis : {a, b}) nodes[static_cast<std::size_t>(axis)] = sample::equal(kCells);
    FlowCase x(nodes, a == 1 || b == 1);
    for (const int axis : {a, b}) {
      if (axis != 1) x.symmetric(axis);
    }
    x.set_viscosity(mu);
    const auto place = [](double at) { return static_cast<int>(std::lround(2.0 * kCells * at)); };
    x.start([&](int axis, const Vector& p) {
      if (axis != a && axis != b) return 0.0;
      // Nodes have even places, centres odd ones.
      const int sum = place(p[static_cast<std::size_t>(a)]) + place(p[static_cast<std::size_t>(b)]);
      return (axis == a ? size : -size) * (sum / 2 % 2 == 0 ? 1.0 : -1.0);
    });
    const auto largest = [&] {
      double most = 0.0;
      for (std::int32_t n = 3; n < kCells - 3; ++n) {
        Triple cell{1, 1, 1};
        cell[static_cast<std::size_t>(a)] = n;
        cell[static_cast<std::size_t>(b)] = kCells / 2;
        const auto& ru = x.run.state.ru[static_cast<std::size_t>(a)];
        most = std::max(most, std::fabs(ru(cell[0], cell[1], cell[2])));
      }
      return most;
    };
    EXPECT_GT(largest(), 0.5 * size);
    while (x.run.state.time < 1.0) x.steps(1);
    EXPECT_LT(largest(), 0.2 * size) << a << b;
  }
}

/// A flow with every kind of condition, its axes a put to `to[a]`, the first one mirrored or not.
std::unique_ptr<FlowCase> turned(const std::array<int, 3>& to, bool mirrored, std::int32_t intstp) {
  const auto t = [&to](int axis) {
    return static_cast<std::size_t>(to[static_cast<std::size_t>(axis)]);
  };
  sample::Nodes nodes;
  for (int a = 0; a < 3; ++a) nodes[t(a)] = sample::clustered(8 - a, 1.0 + 0.2 * a);
  auto x = std::make_unique<FlowCase>(nodes);
  x->set_viscosity(0.01);
  x->control().epscg = 1e-13;
  x->control().epsbcg = 1e-13;
  x->control().intstp = intstp;
  x->control().momentum.dtmax = x->control().scalar.dtmax = 0.05;
  const double sign = mirrored ? -1.0 : 1.0;
  const int low = mirrored ? 1 : -1;
  x->end(to[0], low, VelocityAt::given).velocity[t(0)] = 0.3 * sign;
  x->end(to[0], -low, VelocityAt::free);
  x->end(to[1], -1, VelocityAt::no_slip);
  auto& lid = x->end(to[1], 1, VelocityAt::given);
  lid.velocity[t(0)] = sign;
  lid.velocity[t(2)] = 0.5;
  x->end(to[2], -1, VelocityAt::slip);
  x->end(to[2], 1, VelocityAt::log_wall);
  build_up(t, mirrored, *x);
  // Each cell has a density and a viscosity of its own.
  auto& species = x->run.settings.species;
  species.sutherland = true;
  species.T = 200.0;
  species.C = 110.0;
  for (std::int32_t i = 1; i <= 8; ++i) {
    for (std::int32_t j = 1; j <= 7; ++j) {
      for (std::int32_t k = 1; k <= 6; ++k) {
        Triple cell{};
        cell[t(0)] = mirrored ? 9 - i : i;
        cell[t(1)] = j;
        cell[t(2)] = k;
        x->run.state.t(cell[0], cell[1], cell[2]) = 150.0 + (7 * i + 5 * j + 3 * k) % 40;
      }
    }
  }
  x->start();
  x->steps(30);
  return x;
}

TEST(FlowVerification, ATurnedOrMirroredFlowIsTheTurnedField) {
  for (const std::int32_t intstp : {1, -1}) {
    const auto plain = turned({0, 1, 2}, false, intstp);
    for (const std::array<int, 3>& to :
         {std::array{1, 2, 0}, std::array{2, 0, 1}, std::array{1, 0, 2}}) {
      for (const bool mirrored : {false, true}) {
        const auto other = turned(to, mirrored, intstp);
        const double worst =
            deviation(*plain, [&](int a, std::int32_t i, std::int32_t j, std::int32_t k) {
              Triple cell{};
              cell[static_cast<std::size_t>(to[0])] = mirrored ? 9 - i : i;
              cell[static_cast<std::size_t>(to[1])] = j;
              cell[static_cast<std::size_t>(to[2])] = k;
              const double u =
                  other->at(to[static_cast<std::size_t>(a)], cell[0], cell[1], cell[2]);
              return mirrored && a == 0 ? -u : u;
            });
        EXPECT_LT(worst, 1e-12) << intstp << to[0] << to[1] << mirrored;
      }
    }
  }
}

TEST(FlowVerification, AMirrorIsASlipWallAndAPlateParts) {
  const auto channel = [](std::int32_t n, int kind) {  // 0: slip, 1: mirror, 2: plate, 3: walls
    auto x = std::make_unique<FlowCase>(
        sample::Nodes{sample::equal(6), sample::equal(n, n / 6.0), sample::equal(1)});
    x->control().epscg = 1e-13;
    x->end(0, -1, VelocityAt::given).velocity = {1.0, 0.0, 0.0};
    x->end(0, 1, VelocityAt::free);
    if (kind == 1) {
      x->run.boundary.ends[1] = {flow::End::open, flow::End::symmetric};
    } else {
      x->end(1, 1, kind == 0 ? VelocityAt::slip : VelocityAt::no_slip);
    }
    x->end(1, -1, VelocityAt::no_slip);
    if (kind == 2) {
      auto& plate = x->end(1, 1);
      plate.first[1] = plate.last[1] = n / 2;
      plate.idir = 0;
    }
    x->start();
    x->steps(60);
    return x;
  };
  const auto slip = channel(6, 0);
  const auto same = [](const FlowCase& other, std::int32_t shift) {
    return [&other, shift](int a, std::int32_t i, std::int32_t j, std::int32_t k) {
      return other.at(a, i, j + shift, k);
    };
  };
  EXPECT_LT(deviation(*slip, same(*channel(6, 1), 0)), 1e-12);
  const auto walls = channel(6, 3);
  const auto plate = channel(12, 2);
  EXPECT_LT(deviation(*walls, same(*plate, 0)), 1e-12);
  EXPECT_LT(deviation(*walls, same(*plate, 6)), 1e-12);
}

TEST(FlowVerification, AStepNeedsNoMoreThanARestartHolds) {
  sample::Cavity whole(10, 100.0);
  whole.control().intstp = 2;
  whole.start();
  whole.steps(6);
  sample::Cavity first(10, 100.0);
  first.start();
  first.steps(3);
  sample::Cavity second(10, 100.0);
  second.run.state.p = first.run.state.p;
  second.run.state.pt = first.run.state.pt;
  second.run.state.reference_mass = first.run.state.reference_mass;
  second.start();
  second.run.state.ru = first.run.state.ru;
  second.steps(3);
  for (std::size_t a = 0; a < 2; ++a) {
    EXPECT_TRUE(std::ranges::equal(whole.run.state.ru[a].all(), second.run.state.ru[a].all()));
  }
}

}  // namespace
