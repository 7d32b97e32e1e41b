// Terms of the flow: bits of the plain forms, closed forms, balances.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "../bench/plain_flow.hpp"
#include "../bench/sample_flow.hpp"
#include "../bench/sample_surfaces.hpp"
#include "flow/monitors.hpp"
#include "flow/properties.hpp"
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
    rows = flow::SweepRows(grid.box);
    velocities = flow::Velocities(grid.box);
    for (auto* set : {&velocities.cell, &velocities.face, &state.ru, &rim.inner}) {
      for (Field& field : *set) field = filled(-1.0, 1.0);
    }
    for (Field& inner : rim.inner) {
      for (double& value : inner.all()) value = draw.chance(0.2) ? 0.0 : draw(0.1, 1.0);
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
      flow::flw_cladv0(log, x.metrics, x.rim, x.state.ru, flow::Variable::momentum, all, acrk,
                       x.rows);
      flow::flw_cldifv(x.metrics, x.rim, x.state, x.velocities, {}, x.rows, fast);
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

}  // namespace
