// Heat in a box without files: the square cavity with a warm and a cold side, and its published
// Nusselt numbers: de Vahl Davis (1983), Int. J. Numer. Methods Fluids 3, 249, table of the bench
// mark solution.
#pragma once

#include "flow/halo.hpp"
#include "flow/properties.hpp"
#include "sample_flow.hpp"

namespace sample {

struct Convection {
  double rayleigh, nusselt;
};
inline constexpr std::array<Convection, 3> kConvection{{{1e4, 2.243}, {1e5, 4.519}, {1e6, 8.800}}};

/// A case with temperature; more species than one are to be set by hand.
struct HeatCase : FlowCase {
  explicit HeatCase(const Nodes& nodes, bool periodic_y = false) : FlowCase(nodes, periodic_y) {
    control().itemp = control().idift = true;
    control().acrkt = control().acrky = 1.0 / 3.0;
    control().ambient = control().start = {{1.0}, 300.0};
  }
  /// A second gas with the properties of the first, of which everything holds `y`. Behind all ends.
  void add_vapour(double y) {
    auto& species = run.settings.species;
    species.wm.push_back(species.wm[0]);
    species.acpk.push_back(species.acpk[0]);
    run.state.ys = {flow::Field(run.grid.box, 1.0 - y), flow::Field(run.grid.box, y)};
    control().ambient.ys = control().start.ys = {1.0 - y, y};
    for (flow::Group& group : run.boundary.groups) group.ys = {1.0 - y, y};
  }
  /// Temperature and species alone, the flow held as it is.
  void carry(double dt) {
    flow::flw_clprop(run.crew, run.settings.species, run.state);
    flow::flw_cldtdt(log, flow::domain_of(run), dt, run.work.scalars, run.work.system, run.state);
  }
  flow::Group& wall(int axis, int side, double t) {
    flow::Group& group = end(axis, side);
    group.it = flow::TemperatureAt::given;
    group.t = t;
    return group;
  }
};

/// Calls `visit(place, i, j, k)` for all cells.
template <class Visit>
void for_cells(const flow::Box& box, Visit&& visit) {
  for (std::int32_t k = 1; k <= box.n[2]; ++k) {
    for (std::int32_t j = 1; j <= box.n[1]; ++j) {
      for (std::int32_t i = 1; i <= box.n[0]; ++i) visit(box.at(i, j, k), i, j, k);
    }
  }
}

/// Sum over the open volume of the fluid cells.
template <class Value>
double total(const HeatCase& x, Value&& value) {
  double sum = 0.0;
  for_cells(x.run.grid.box, [&](std::size_t c, auto... index) {
    if (x.run.openings.fluid[c] > 0) sum += value(c) * x.run.grid.volume(index...);
  });
  return sum;
}

/// Largest distance of a field's cells from `expected(i, j, k)`.
template <class Expected>
double distance(const flow::Field& field, Expected&& expected) {
  double worst = 0.0;
  for_cells(field.box(), [&](std::size_t c, auto... index) {
    const double error = std::fabs(field[c] - expected(index...));
    worst = error <= worst ? worst : error;  // keeps a NaN
  });
  return worst;
}

/// Fills t (or a field of its kind) by the place of the centres, halos included.
template <class Value>
void fill(HeatCase& x, flow::Field& field, Value&& value) {
  for_cells(field.box(), [&](std::size_t c, std::int32_t i, std::int32_t j, std::int32_t k) {
    field[c] = value(
        flow::Vector{x.run.grid.axis[0].xc(i), x.run.grid.axis[1].xc(j), x.run.grid.axis[2].xc(k)});
  });
  flow::fill_halos(field, x.run.boundary.ends);
}

/// The cavity in the plane of the axes a (from the warm to the cold side) and b (upwards), walls of
/// 301.5 and 298.5 K one unit apart. In units of the velocity that buoyancy gives.
struct WarmCavity : HeatCase {
  WarmCavity(const std::vector<double>& nodes, double rayleigh, int warm_axis, int up)
      : HeatCase(nodes_of(nodes, warm_axis, up)), a(warm_axis), b(up) {
    constexpr double kPrandtl = 0.71;
    set_viscosity(std::sqrt(kPrandtl / rayleigh));
    run.settings.species.prlmnr = kPrandtl;
    control().gravity[static_cast<std::size_t>(b)] = -100.0;
    control().keeps_pressure = true;
    wall(a, -1, 301.5);
    wall(a, 1, 298.5);
    ends(b, flow::VelocityAt::no_slip);
  }

  /// Implicit steps; loose tolerances do, of changes that vanish themselves.
  void take_long_steps() {
    control().intstp = -1;
    control().momentum.dtmax = control().scalar.dtmax = 0.1;
    control().epscg = control().epsbcg = 1e-2;
  }

  /// Steps until the heat that enters and the heat that leaves differ by less than `part`.
  void settle(double part, std::int32_t at_once = 50) {
    do {
      steps(at_once);
    } while (run.state.time < 20.0 || !(std::fabs(nusselt(-1) - nusselt(1)) < part * nusselt(1)));
  }

  /// Mean heat through a side, over that of air at rest.
  double nusselt(int side) const {
    const flow::AxisTable& across = run.grid.axis[static_cast<std::size_t>(a)];
    const flow::AxisTable& along = run.grid.axis[static_cast<std::size_t>(b)];
    const std::int32_t wall_cell = side < 0 ? 1 : across.cells;
    double sum = 0.0;
    for (std::int32_t j = 1; j <= along.cells; ++j) {
      flow::Triple c{1, 1, 1};
      c[static_cast<std::size_t>(a)] = wall_cell;
      c[static_cast<std::size_t>(b)] = j;
      const double t = run.state.t(c[0], c[1], c[2]);
      sum += (1.5 + side * (t - 300.0)) / (0.5 * across.dx(wall_cell)) * along.dx(j);
    }
    return sum / 3.0;
  }

  int a, b;

 private:
  static Nodes nodes_of(const std::vector<double>& nodes, int a, int b) {
    Nodes all{equal(1), equal(1), equal(1)};
    all[static_cast<std::size_t>(a)] = all[static_cast<std::size_t>(b)] = nodes;
    return all;
  }
};

}  // namespace sample
