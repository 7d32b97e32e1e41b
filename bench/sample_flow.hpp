// A flow without files for tests and benchmarks: one gas of density 1 in a box, conditions side by
// side, velocities by a function.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <vector>

#include "flow/density.hpp"
#include "flow/step.hpp"

namespace sample {

using Nodes = std::array<std::vector<double>, 3>;

/// `cells` equal cells over 0..length.
inline std::vector<double> equal(std::int32_t cells, double length = 1.0) {
  std::vector<double> nodes;
  for (std::int32_t i = 0; i <= cells; ++i) nodes.push_back(length * i / cells);
  return nodes;
}

/// Cells that widen from both ends to the middle.
inline std::vector<double> clustered(std::int32_t cells, double strength = 1.5) {
  std::vector<double> nodes;
  for (std::int32_t i = 0; i <= cells; ++i) {
    nodes.push_back(0.5 +
                    0.5 * std::tanh(strength * (2.0 * i / cells - 1.0)) / std::tanh(strength));
  }
  return nodes;
}

/// One thread, unless the environment asks for more.
inline frame::Hands hands(frame::Log& log) {
  return std::getenv("TOWNSKIN_THREADS") == nullptr ? frame::Hands{} : frame::hands_wanted(log);
}

struct FlowCase {
  explicit FlowCase(const Nodes& nodes, bool periodic_y = false) {
    flow::Box& box = run.grid.box;
    for (std::size_t a = 0; a < 3; ++a) {
      box.n[a] = static_cast<std::int32_t>(nodes[a].size()) - 1;
      run.grid.axis[a] = flow::make_axis(nodes[a], a == 1 && periodic_y);
    }
    if (periodic_y) run.boundary.ends[1] = {flow::End::periodic, flow::End::periodic};
    run.openings = flow::Openings(box);
    set_defaults();
    set_fields();
  }

  flow::Control& control() { return run.settings.control; }
  void set_viscosity(double mu) { run.settings.species.mu = mu; }

  /// Condition of a whole end; to be changed before start.
  flow::Group& end(int axis, int side, flow::VelocityAt iv = flow::VelocityAt::no_slip) {
    flow::Group group;
    group.last = run.grid.box.n;
    const auto a = static_cast<std::size_t>(axis);
    (side < 0 ? group.last : group.first)[a] = side < 0 ? 0 : run.grid.box.n[a];
    group.axis = axis;
    group.idir = -side;
    group.iv = iv;
    group.t = 300.0;
    group.ys = {1.0};
    group.gas = flow::kGasConstant / run.settings.species.wm[0];
    if (iv == flow::VelocityAt::free) group.ip = flow::PressureAt::held;
    return run.boundary.groups.emplace_back(group);
  }
  /// The same condition at both ends of an axis.
  void ends(int axis, flow::VelocityAt iv) {
    end(axis, -1, iv);
    end(axis, 1, iv);
  }
  void symmetric(int axis) {
    run.boundary.ends[static_cast<std::size_t>(axis)] = {flow::End::symmetric,
                                                         flow::End::symmetric};
  }

  /// k-epsilon from a uniform start.
  void set_k_epsilon(double k, double eps) {
    control().iturb = flow::Turbulence::k_epsilon;
    control().idifk = true;
    control().acrke = 1.0 / 3.0;
    run.state.ak = {flow::Field(run.grid.box, k), flow::Field(run.grid.box, eps)};
    const double least = run.settings.species.mu / 0.09 / 30.0;
    run.settings.ambient.aklw = run.settings.ambient.aelw = least;
  }

  /// Velocity on all faces by `velocity(axis, x)`, then all that stands before the first step.
  template <class Velocity>
  void start(Velocity&& velocity) {
    const flow::Box& box = run.grid.box;
    run.faces = flow::list_faces(run.boundary, run.openings);
    flow::close_faces(run.openings, run.boundary, run.faces);
    for (int axis = 0; axis < 3; ++axis) {
      const auto a = static_cast<std::size_t>(axis);
      const flow::Triple from{axis == 0 ? 0 : 1, axis == 1 ? 0 : 1, axis == 2 ? 0 : 1};
      for (std::int32_t k = from[2]; k <= box.n[2]; ++k) {
        for (std::int32_t j = from[1]; j <= box.n[1]; ++j) {
          for (std::int32_t i = from[0]; i <= box.n[0]; ++i) {
            flow::Vector x{run.grid.axis[0].xc(i), run.grid.axis[1].xc(j), run.grid.axis[2].xc(k)};
            x[a] = run.grid.axis[a].x((axis == 0 ? i : axis == 1 ? j : k) + 1);
            run.state.ru[a](i, j, k) = velocity(axis, x);
          }
        }
      }
    }
    flow::prepare(log, run);
    flow::put_normal_fluxes(run);
  }
  void start() {
    start([](int, const flow::Vector&) { return 0.0; });
  }
  void steps(std::int32_t count) {
    for (std::int32_t n = 0; n < count; ++n) {
      flow::advance(log, accounts, run);
      screen.str("");
    }
  }

  /// Velocity component at a centre.
  double at(int axis, std::int32_t i, std::int32_t j, std::int32_t k) const {
    const auto a = static_cast<std::size_t>(axis);
    const std::size_t c = run.grid.box.at(i, j, k);
    const std::size_t s = run.grid.box.stride(axis);
    return 0.5 * (run.state.ru[a][c - s] + run.state.ru[a][c]) / run.state.r[0][c];
  }

  std::ostringstream screen, errors;
  frame::Log log{screen, errors};
  frame::Accounts accounts;
  flow::Run run{hands(log)};

 private:
  void set_defaults() {
    auto& c = control();
    c.momentum = c.scalar = c.smaller = {0.5, 1e10};
    c.ivisc = true;
    c.acrkv = 1.0 / 3.0;
    c.itercg = c.itrbcg = 10000;
    c.epscg = c.epsbcg = 1e-8;
    c.gsfcg = 0.9;
    c.pp0 = 1e5;
    run.settings.species.wm = {flow::kGasConstant * 300.0 / c.pp0};
    run.settings.species.acpk = {{1000.0, 0.0, 0.0, 0.0, 0.0}};
    run.settings.species.mu = 0.01;
    run.settings.ambient.density = run.settings.ambient.ramb = 1.0;
  }
  void set_fields() {
    const flow::Box& box = run.grid.box;
    flow::State& s = run.state;
    for (std::size_t a = 0; a < 3; ++a) {
      if (a < 2) s.r[a] = flow::Field(box, 1.0);
      s.ru[a] = flow::Field(box);
    }
    s.p = s.mu = s.mut = flow::Field(box);
    s.t = flow::Field(box, 300.0);
    s.ys = {flow::Field(box, 1.0)};
    s.pt = control().pp0;
  }
};

}  // namespace sample
