// Warm flows against solutions that are known: the published cavity, symmetries, steady states.
#include <gtest/gtest.h>

#include <memory>

#include "../bench/sample_heat.hpp"

namespace {

using flow::Field;
using flow::Triple;
using flow::VelocityAt;
using sample::distance;
using sample::HeatCase;

TEST(FlowHeatRuns, TheCavityFollowsThePublishedNusseltNumbers) {
  const std::array within{0.01, 0.015, 0.03};
  for (std::size_t n = 0; n < sample::kConvection.size(); ++n) {
    std::vector<double> found;
    for (const auto& [across, up] : {std::pair{0, 2}, {0, 1}, {1, 2}}) {
      sample::WarmCavity x(sample::clustered(20, 1.8), sample::kConvection[n].rayleigh, across, up);
      x.take_long_steps();
      x.start();
      x.settle(1e-3);
      found.push_back(x.nusselt(-1));
      EXPECT_NEAR(found.back() / sample::kConvection[n].nusselt, 1.0, within[n]);
      EXPECT_NEAR(found.back(), found[0], 1e-6);
    }
  }
}

TEST(FlowHeatRuns, ImplicitStepsReachTheSameSteadyState) {
  sample::WarmCavity plain(sample::clustered(12), 1e4, 0, 2);
  sample::WarmCavity implicit(sample::clustered(12), 1e4, 0, 2);
  implicit.control().intstp = -1;
  implicit.control().momentum.dtmax = 0.2;
  implicit.control().scalar.dtmax = 0.3;
  for (auto* x : {&plain, &implicit}) {
    x->start();
    x->settle(1e-9);
  }
  EXPECT_LT(distance(plain.run.state.t, [&](auto... at) { return implicit.run.state.t(at...); }),
            1e-6);
}

/// Warm air, damp air and walls of every kind, its axes a put to `to[a]`, the first mirrored or
/// not.
std::unique_ptr<HeatCase> turned(const std::array<int, 3>& to, bool mirrored, std::int32_t intstp) {
  const auto t = [&to](int axis) {
    return static_cast<std::size_t>(to[static_cast<std::size_t>(axis)]);
  };
  sample::Nodes nodes;
  for (int a = 0; a < 3; ++a) nodes[t(a)] = sample::clustered(8 - a, 1.0 + 0.2 * a);
  auto x = std::make_unique<HeatCase>(nodes);
  x->control().epscg = x->control().epsbcg = 1e-13;
  x->control().intstp = intstp;
  x->control().prturb = x->control().scturb = 0.9;
  x->control().momentum.dtmax = x->control().scalar.dtmax = 0.05;
  x->control().gravity[t(2)] = -10.0;
  x->run.settings.species.prlmnr = x->run.settings.species.sclmnr = 0.7;
  const double sign = mirrored ? -1.0 : 1.0;
  const int low = mirrored ? 1 : -1;
  auto& inlet = x->wall(to[0], low, 302.0);
  inlet.iv = VelocityAt::given;
  inlet.velocity[t(0)] = 0.3 * sign;
  inlet.iy = flow::SpeciesAt::given;
  x->end(to[0], -low, VelocityAt::free);
  x->wall(to[1], -1, 305.0);
  x->end(to[1], 1, VelocityAt::log_wall).it = flow::TemperatureAt::log_wall;
  x->end(to[2], -1, VelocityAt::slip).it = flow::TemperatureAt::flux;
  x->end(to[2], 1, VelocityAt::log_wall).iy = flow::SpeciesAt::given;
  x->add_vapour(0.1);
  auto& groups = x->run.boundary.groups;
  groups[0].ys = {0.8, 0.2};
  groups[3].t = 295.0;
  groups[4].t = 20.0;
  groups[5].ys = {0.95, 0.05};
  x->start();
  x->steps(20);
  return x;
}

TEST(FlowHeatRuns, TurnedOrMirroredItIsTheTurnedField) {
  for (const std::int32_t intstp : {1, -1}) {
    const auto plain = turned({0, 1, 2}, false, intstp);
    for (const std::array<int, 3>& to :
         {std::array{1, 2, 0}, std::array{2, 0, 1}, std::array{1, 0, 2}}) {
      for (const bool mirrored : {false, true}) {
        const auto other = turned(to, mirrored, intstp);
        const auto worst = [&](const Field& field, const Field& turned_field) {
          return distance(field, [&](std::int32_t i, std::int32_t j, std::int32_t k) {
            Triple cell{};
            cell[static_cast<std::size_t>(to[0])] = mirrored ? 9 - i : i;
            cell[static_cast<std::size_t>(to[1])] = j;
            cell[static_cast<std::size_t>(to[2])] = k;
            return turned_field(cell[0], cell[1], cell[2]);
          });
        };
        EXPECT_LT(worst(plain->run.state.t, other->run.state.t), 300.0 * 1e-12);
        EXPECT_LT(worst(plain->run.state.ys[1], other->run.state.ys[1]), 1e-12);
      }
    }
    EXPECT_GT(plain->run.state.t(4, 1, 3), 301.0);
  }
}
}  // namespace
