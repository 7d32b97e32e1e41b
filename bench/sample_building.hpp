// A building of 1:1:2 in a boundary layer, one side of its plane of symmetry: lengths in widths of
// the building, speeds in that of the undisturbed wind at the height of its roof.
//
// After the wind tunnel's case A of the Architectural Institute of Japan (Meng and Hibi 1998;
// Tominaga et al. 2008): U = (z/2)^0.27.
#pragma once

#include "sample_flow.hpp"

namespace sample {

/// Nodes from `from` to `to`, the first cell `width` wide, each wider than the one before by a
/// common factor of about `factor`.
inline std::vector<double> widening(double from, double to, double width, double factor) {
  const double length = std::fabs(to - from);
  std::vector<double> nodes{0.0};
  for (double w = width; nodes.back() < length - 0.5 * w; w *= factor) {
    nodes.push_back(nodes.back() + w);
  }
  const double scale = (to - from) / nodes.back();
  for (double& x : nodes) x = from + scale * x;
  return nodes;
}

struct Building : FlowCase {
  /// `cells` a width of the building.
  explicit Building(std::int32_t cells) : FlowCase(nodes_of(cells)), per_width(cells) {
    set_viscosity(1.0 / 12000.0);
    set_k_epsilon(0.02, 0.01);
    control().acrke = 1.0 / 3.0;
    control().keeps_pressure = true;
    auto& box = run.grid.box;
    run.boundary.ends[1][0] = flow::End::symmetric;
    end(1, 1, flow::VelocityAt::slip);
    end(2, 1, flow::VelocityAt::slip);
    end(2, -1, flow::VelocityAt::log_wall).ik = flow::TurbulenceAt::wall;
    end(0, 1, flow::VelocityAt::free);
    for (std::int32_t k = 0; k < box.n[2]; ++k) add_inlet(k);
    flow::Group block;
    block.last = box.n;
    block.iv = flow::VelocityAt::log_wall;
    block.ik = flow::TurbulenceAt::wall;
    run.boundary.groups.push_back(block);
    flow::for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
      for (std::int32_t i = 1; i <= box.n[0]; ++i, ++place) {
        const bool within =
            std::fabs(centre(0, i)) < 0.5 && centre(1, j) < 0.5 && centre(2, k) < 2.0;
        if (within) run.openings.fluid[place] = 0;
      }
    });
  }
  void begin() {
    start([](int axis, const flow::Vector& x) { return axis == 0 ? wind(x[2]) : 0.0; });
  }

  static double wind(double z) { return std::pow(0.5 * z, 0.27); }
  /// Turbulence of a boundary layer over open country (Tominaga et al. 2008): intensity
  /// 0.1 (z/zG)^(-0.27 - 0.05) with zG of 22 widths; epsilon balances the production.
  static double wind_k(double z) {
    const double intensity = 0.1 * std::pow(z / 22.0, -0.32);
    return std::pow(intensity * wind(z), 2);
  }
  static double wind_eps(double z) { return 0.3 * wind_k(z) * 0.27 * wind(z) / z; }

  [[nodiscard]] double centre(int axis, std::int32_t i) const {
    return run.grid.axis[static_cast<std::size_t>(axis)].xc(i);
  }
  /// Where the wind next to the plane of symmetry turns from against the stream to along it, in
  /// the layer of cells above the height z, from x = `from` on; 0 where it never blows against it,
  /// a negative number where it does not turn before x = `to`.
  [[nodiscard]] double reattachment(double z, double from, double to) const {
    std::int32_t k = 1;
    while (centre(2, k) < z) ++k;
    bool against = false;
    for (std::int32_t i = 1; i < run.grid.box.n[0]; ++i) {
      const double x = centre(0, i);
      const double next = centre(0, i + 1);
      if (x < from || x > to) continue;
      const double u = at(0, i, 1, k);
      const double ahead = next > to ? u : at(0, i + 1, 1, k);
      against = against || u < 0.0;
      if (u < 0.0 && ahead >= 0.0) return x + (next - x) * u / (u - ahead) - from;
    }
    return against ? -1.0 : 0.0;
  }

  std::int32_t per_width;

 private:
  static Nodes nodes_of(std::int32_t cells) {
    const double width = 1.0 / cells;
    constexpr double kFactor = 1.15;
    std::vector<double> x = widening(-0.5, -5.0, width, kFactor);
    std::reverse(x.begin(), x.end());
    append(x, widening(-0.5, 0.0, width, 1.0));
    append(x, widening(0.0, 0.5, width, 1.0));
    append(x, widening(0.5, 3.5, width, 1.03));
    append(x, widening(3.5, 14.0, 2.2 * width, kFactor));
    std::vector<double> y = widening(0.0, 0.5, width, 1.0);
    append(y, widening(0.5, 6.0, width, kFactor));
    std::vector<double> z = widening(0.0, 1.0, width, 1.0);
    append(z, widening(1.0, 2.0, width, 1.0));
    append(z, widening(2.0, 10.0, width, kFactor));
    return {x, y, z};
  }
  static void append(std::vector<double>& nodes, const std::vector<double>& more) {
    nodes.insert(nodes.end(), more.begin() + 1, more.end());
  }
  void add_inlet(std::int32_t k) {
    flow::Group& inlet = end(0, -1, flow::VelocityAt::given);
    const double z = centre(2, k + 1);
    inlet.first[2] = k;
    inlet.last[2] = k + 1;
    inlet.velocity[0] = wind(z);
    inlet.ik = flow::TurbulenceAt::given;
    inlet.k = wind_k(z);
    inlet.eps = wind_eps(z);
  }
};

}  // namespace sample
