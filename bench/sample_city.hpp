// A district for whole steps of the flow: k-epsilon, heat and blocks on the floor, explicit, the
// pressure by multigrid to 1e-8.
#pragma once

#include "sample_flow.hpp"

namespace sample {

/// A wind over blocks of a quarter of the height, one of nine places built upon; the floor and the
/// blocks are warmer than the air.
struct City : FlowCase {
  explicit City(std::int32_t n)
      : FlowCase({equal(n, 2.0 * n), equal(n, 2.0 * n), equal(n, 2.0 * n)}, true) {
    flow::Control& c = control();
    c.gsfcg = 0.95;
    run.settings.records.iamg = 1;
    c.itemp = c.idift = true;
    c.acrkt = c.acrke = 1.0 / 3.0;
    c.prturb = c.scturb = 0.9;
    c.gravity = {0.0, 0.0, -9.8};
    c.keeps_pressure = true;
    set_viscosity(1.8e-5);
    set_k_epsilon(0.1, 0.01);
    end(0, -1, flow::VelocityAt::given).velocity = {3.0, 0.0, 0.0};
    end(0, 1, flow::VelocityAt::free);
    warm(end(2, -1, flow::VelocityAt::log_wall));
    end(2, 1, flow::VelocityAt::slip);
    flow::Group block;
    block.last = run.grid.box.n;
    block.iv = flow::VelocityAt::log_wall;
    warm(run.boundary.groups.emplace_back(block));
    build(n);
    start([](int axis, const flow::Vector& x) {
      return (axis == 0 ? 3.0 : 0.0) + 0.3 * std::sin(0.1 * x[2] + 0.05 * x[0]);
    });
  }

 private:
  static void warm(flow::Group& group) {
    group.it = flow::TemperatureAt::log_wall;
    group.ik = flow::TurbulenceAt::wall;
    group.t = 310.0;
  }
  void build(std::int32_t n) {
    const auto built = [n](std::int32_t i) { return (i - 1) / (n / 16) % 3 == 1; };
    flow::Openings& open = run.openings;
    for (std::int32_t k = 1; k <= n / 4; ++k) {
      for (std::int32_t j = 1; j <= n; ++j) {
        for (std::int32_t i = 1; i <= n; ++i) {
          if (built(i) && built(j)) open.fluid(i, j, k) = 0;
        }
      }
    }
  }
};

}  // namespace sample
