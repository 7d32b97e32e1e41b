// A street between two long rows of houses, in strips: view factors by crossed strings (Hottel
// 1954), exact in the plane across, the exchange of the program over them, and its direct solution.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "../tests/dense_solve.hpp"
#include "radiation/radref.hpp"
#include "radiation/view_factor_table.hpp"

namespace sample {

/// Road of width 1 from left to right, then both walls of height h, each from below; per strip.
class StreetCanyon {
 public:
  enum Face : std::size_t { road, left, right };
  using Reals = std::vector<double>;
  using Faces = std::array<double, 3>;

  StreetCanyon(double h, double albedo, int strips_of_road = 20) : height(h) {
    const auto of_wall = static_cast<int>(std::lround(h * strips_of_road));
    lay(road, strips_of_road, {0, 0}, {1, 0});
    lay(left, of_wall, {0, 0}, {0, h});
    lay(right, of_wall, {1, 0}, {1, h});
    const std::size_t n = strips.size();
    absorptivity_.assign(1, 1.0 - albedo);
    sky.assign(n, 1.0);
    factors_.assign(n * n, 0.0);
    tsrf_module_raddat::ViewFactorGatherer gatherer(static_cast<std::int32_t>(n));
    for (std::size_t s = 0; s < n; ++s) {
      for (std::size_t d = 0; d < n; ++d) {
        if (strips[s].face == strips[d].face) continue;
        factors_[s * n + d] = crossed_strings(strips[s], strips[d]);
        sky[s] -= factors_[s * n + d];
        gatherer.add(static_cast<std::int32_t>(s), static_cast<std::int32_t>(d),
                     static_cast<float>(factors_[s * n + d]));
      }
      raddat_.pgx.push_back(static_cast<std::int32_t>(s));
      area.push_back(length(strips[s].from, strips[s].to));
    }
    raddat_.NPGID = static_cast<std::int32_t>(n);
    raddat_.c.assign(n, 1.0);
    raddat_.view_factors = gatherer.take_table(crew_);
    work_.prepare(raddat_, 1);
    rows_.assign(n, 0);
    nothing_.assign(n, 0.0);
    J.assign(n, 0.0);
  }

  /// Light on each strip [W/m2]: `scattered` of the sky, and a beam of the flux `direct` across its
  /// way, `elevation` above the horizon in the plane across the street, from the right.
  [[nodiscard]] Reals light(double scattered, double direct, double elevation) const {
    Reals E(strips.size());
    const double a = elevation * std::numbers::pi / 180.0;
    const double shadow = height * std::abs(std::cos(a)) / std::max(std::sin(a), 1e-9);
    const bool from_right = std::cos(a) > 0.0;
    const Face sunny = from_right ? left : right;
    for (std::size_t s = 0; s < E.size(); ++s) {
      E[s] = sky[s] * scattered;
      double lit = 0.0;
      if (strips[s].face == road) {
        const auto from_sunny = [&](double x) { return from_right ? x : 1.0 - x; };
        const double near = std::min(from_sunny(strips[s].from[0]), from_sunny(strips[s].to[0]));
        lit = std::clamp((1.0 - shadow - near) / area[s], 0.0, 1.0) * std::sin(a);
      } else if (strips[s].face == sunny) {
        const double dark = shadow > 0.0 ? height * std::max(0.0, 1.0 - 1.0 / shadow) : 0.0;
        lit = std::clamp((strips[s].to[1] - dark) / area[s], 0.0, 1.0) * std::abs(std::cos(a));
      }
      E[s] += direct * lit;
    }
    return E;
  }

  /// What the faces absorb of the light E after `sweeps` from the radiosities J, which go on.
  [[nodiscard]] Faces swept(const Reals& E, std::int32_t sweeps) {
    raddat_.settings.LOPREF = sweeps;
    Reals G = E;
    const tsrf_module_radref::Band band{absorptivity_, nothing_, J, G};
    tsrf_cal_radref(crew_, raddat_, rows_, area, std::span(&band, 1), work_);
    return absorbed(G);
  }

  /// The same where all reflections are through.
  [[nodiscard]] Faces direct(const Reals& E) const {
    const std::size_t n = E.size();
    DenseSystem system(n);
    for (std::size_t d = 0; d < n; ++d) {
      for (std::size_t s = 0; s < n; ++s) {
        system.at(d, s) = (d == s ? 1.0 : 0.0) -
                          (1.0 - absorptivity_[0]) * factors_[s * n + d] * area[s] / area[d];
      }
      system.b[d] = E[d];
    }
    return absorbed(system.solve());
  }

  double height;
  Reals sky;  ///< sky factor of each strip
  Reals J;    ///< radiosities [W/m2], 0 at first
  Reals area;

 private:
  using Point = std::array<double, 2>;
  struct Strip {
    Face face;
    Point from, to;
  };

  static double length(const Point& a, const Point& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1]);
  }

  /// Strips of two faces that see all of each other. Ends lie along the street's bottom or upwards,
  /// so which strings cross follows from the lengths: crossed ones are the longer.
  static double crossed_strings(const Strip& a, const Strip& b) {
    const double one = length(a.from, b.to) + length(a.to, b.from);
    const double other = length(a.from, b.from) + length(a.to, b.to);
    return std::abs(one - other) / (2.0 * length(a.from, a.to));
  }

  void lay(Face face, int count, const Point& from, const Point& to) {
    const auto at = [&](int n) -> Point {
      const double share = static_cast<double>(n) / count;
      return {from[0] + share * (to[0] - from[0]), from[1] + share * (to[1] - from[1])};
    };
    for (int n = 0; n < count; ++n) strips.push_back({face, at(n), at(n + 1)});
  }

  [[nodiscard]] Faces absorbed(const Reals& G) const {
    Faces sum{};
    for (std::size_t s = 0; s < G.size(); ++s) {
      sum[strips[s].face] += absorptivity_[0] * G[s] * area[s];
    }
    return sum;
  }

  std::vector<Strip> strips;
  frame::Crew crew_;
  tsrf_module_raddat::Data raddat_;
  tsrf_module_radref::Work work_;
  std::vector<std::int32_t> rows_;
  Reals factors_, absorptivity_, nothing_;
};

inline void add(StreetCanyon::Faces& sum, const StreetCanyon::Faces& faces) {
  for (std::size_t f = 0; f < sum.size(); ++f) sum[f] += faces[f];
}

/// The largest difference of a face from the truth, per cent of the truth.
inline double worst_error(const StreetCanyon::Faces& found, const StreetCanyon::Faces& truth) {
  double worst = 0.0;
  for (std::size_t f = 0; f < truth.size(); ++f) {
    worst = std::max(worst, 100.0 * std::abs(found[f] / truth[f] - 1.0));
  }
  return worst;
}

}  // namespace sample
