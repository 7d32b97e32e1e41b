// Strain, wall distance and the eddy viscosity of large eddies against closed forms and plain
// peers.
#include <gtest/gtest.h>

#include <random>

#include "../bench/sample_flow.hpp"
#include "flow/turbulence/eddy_viscosity.hpp"
#include "flow/turbulence/wall_distance.hpp"

namespace {

using flow::Triple;
using flow::Vector;
using flow::VelocityAt;
using sample::FlowCase;

double distance_to(double x, double low, double high) { return std::max({low - x, x - high, 0.0}); }

TEST(FlowEddies, LargeEddiesOfALinearShear) {
  constexpr double kShear = 3.0;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) {
      if (a == b) continue;
      for (const bool flat : {false, true}) {
        sample::Nodes nodes{sample::clustered(5), sample::clustered(6), sample::clustered(7)};
        const auto c = static_cast<std::size_t>(3 - a - b);
        if (flat) nodes[c] = sample::equal(1);
        FlowCase x(nodes);
        const auto t = static_cast<std::size_t>(b);
        x.ends(a, VelocityAt::free);
        x.end(b, -1, VelocityAt::no_slip);
        x.end(b, 1, VelocityAt::no_slip).velocity[static_cast<std::size_t>(a)] = kShear;
        if (!flat) x.ends(static_cast<int>(c), VelocityAt::slip);
        x.control().iturb = flow::Turbulence::les;
        x.start([&](int axis, const Vector& p) { return axis == a ? kShear * p[t] : 0.0; });
        const flow::Domain domain = flow::domain_of(x.run);
        flow::set_eddy_viscosity(domain, x.run.work.momentum.velocities, x.run.work.turbulence,
                                 x.run.state);
        const auto& grid = x.run.grid;
        for (const Triple& cell : {Triple{3, 2, 1}, Triple{2, 6, 3}, Triple{5, 1, 7}}) {
          Triple at = cell;
          if (flat) at[c] = 1;
          const double y = grid.axis[t].xc(at[t]);
          double volume = 1.0;
          for (std::size_t n = 0; n < 3; ++n) volume *= grid.axis[n].dx(at[n]);
          const double width = 0.1 * (flat ? std::sqrt(volume) : std::cbrt(volume));
          const double wall = 0.42 * std::min(y, 1.0 - y);
          const double expected = kShear / (1.0 / (width * width) + 1.0 / (wall * wall));
          EXPECT_NEAR(x.run.state.mut(at[0], at[1], at[2]), expected, 1e-13 * expected)
              << a << b << flat;
        }
      }
    }
  }
}

TEST(FlowEddies, StrainOfARowIsThatOfItsCells) {
  for (const auto& n : {Triple{9, 8, 7}, Triple{9, 1, 7}, Triple{1, 8, 1}}) {
    FlowCase x({sample::clustered(n[0]), sample::clustered(n[1]), sample::clustered(n[2])});
    for (int axis = 0; axis < 3; ++axis) {
      if (n[static_cast<std::size_t>(axis)] > 1) x.ends(axis, VelocityAt::no_slip);
    }
    std::mt19937 random(5);
    std::uniform_real_distribution<double> speed(-1.0, 1.0);
    x.control().iturb = flow::Turbulence::les;
    x.start([&](int, const Vector&) { return speed(random); });
    const flow::Domain domain = flow::domain_of(x.run);
    auto& velocities = x.run.work.momentum.velocities;
    auto& strain = x.run.work.turbulence.strain;
    flow::set_velocities(domain.crew, domain.metrics, domain.boundary.ends, x.run.state,
                         velocities);
    flow::for_rows(x.run.grid.box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
      flow::set_strain_row(domain, strain, velocities, place, j, k, strain.rows[0].data());
      for (std::int32_t i = 1; i <= n[0]; ++i, ++place) {
        const flow::RimCell plain{place, {i, j, k}, {{{-1, -1}, {-1, -1}, {-1, -1}}}};
        const double expected = flow::strain_at(domain, strain, velocities, plain);
        EXPECT_EQ(strain.rows[0][static_cast<std::size_t>(i) - 1], expected) << i << j << k;
        EXPECT_GT(expected, 0.0);
      }
    });
  }
}

TEST(FlowEddies, WallDistanceIsThatOfTheNearestFace) {
  std::mt19937 random(7);
  for (const bool periodic : {false, true}) {
    FlowCase x({sample::clustered(9), sample::clustered(8), sample::clustered(7)}, periodic);
    for (auto& fluid : x.run.openings.fluid.all()) fluid = random() % 40 == 0 ? 0 : 1;
    for (int axis = 0; axis < 3; ++axis) {
      if (axis != 1 || !periodic) x.ends(axis, VelocityAt::slip);
    }
    flow::Group block = x.run.boundary.groups[0];
    block.first = {0, 0, 0};
    block.last = x.run.grid.box.n;
    block.axis = -1;
    block.iv = VelocityAt::log_wall;
    x.run.boundary.groups.push_back(block);
    x.start();
    const flow::Domain domain = flow::domain_of(x.run);
    const flow::Field square = flow::wall_distance_squares(domain);
    const auto& axes = x.run.grid.axis;
    std::size_t walls = 0;
    flow::for_rows(square.box(), [&](std::size_t place, std::int32_t j, std::int32_t k) {
      for (std::int32_t i = 1; i <= square.box().n[0]; ++i, ++place) {
        const Vector p{axes[0].xc(i), axes[1].xc(j), axes[2].xc(k)};
        double least = 1e30;
        for (std::size_t a = 0; a < 3; ++a) {
          for (const auto& at : domain.rim.faces[a]) {
            if (domain.rim.groups[static_cast<std::size_t>(at.group)].iv == VelocityAt::slip) {
              continue;
            }
            ++walls;
            for (const double round : {-1.0, 0.0, 1.0}) {
              double sum = 0.0;
              for (std::size_t b = 0; b < 3; ++b) {
                const double shift = periodic && b == 1 ? round : 0.0;
                double low = axes[b].x(at.index[b]);
                double high = axes[b].x(at.index[b] + 1);
                if (b == a) (at.side < 0 ? high : low) = at.side < 0 ? low : high;
                const double d = distance_to(p[b], low + shift, high + shift);
                sum += d * d;
              }
              least = std::min(least, sum);
            }
          }
        }
        EXPECT_NEAR(square[place], least, 1e-13) << i << ' ' << j << ' ' << k;
      }
    });
    EXPECT_GT(walls, 1000U);
  }
}

}  // namespace
