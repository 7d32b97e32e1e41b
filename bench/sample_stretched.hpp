// Pressure equations of all sorts for the multigrid: cells that widen, obstacles in a third of
// them.
#pragma once

#include <cmath>
#include <random>

#include "flow/linear/amgcg_pre.hpp"

namespace sample {

struct Stretched {
  enum class Solid { none, towers, draws };
  const char* name;
  double x, y, z;  ///< the widest cell over the thinnest one, by axis
  Solid solid;
};

inline constexpr std::array kStretched{
    Stretched{"open", 1.0, 1.0, 1.0, Stretched::Solid::none},
    Stretched{"towers", 1.0, 1.0, 1.0, Stretched::Solid::towers},
    Stretched{"draws", 1.0, 1.0, 1.0, Stretched::Solid::draws},
    Stretched{"open, stretched", 20.0, 20.0, 20.0, Stretched::Solid::none},
    Stretched{"towers, flat cells", 1.0, 1.0, -20.0, Stretched::Solid::towers},
    Stretched{"towers, stretched upwards", 1.0, 1.0, 20.0, Stretched::Solid::towers},
    Stretched{"towers, stretched", 20.0, 20.0, 20.0, Stretched::Solid::towers}};

struct StretchedEquation {
  flow::Flags fluid;
  flow::FiveBlocks blocks;
  flow::Field right;
  flow::AmgGeometry geometry;
};

/// Widths of an axis, the thinnest in the middle, or at the start of z; all the same for a negative
/// stretch, thinner than 1 by it.
inline std::vector<double> stretched_widths(std::int32_t n, double stretch, bool from_start) {
  std::vector<double> width;
  for (std::int32_t i = 0; i < n; ++i) {
    const double t = (n > 1 ? i / (n - 1.0) : 0.0);
    const double way = from_start ? t : std::abs(2.0 * t - 1.0);
    width.push_back(stretch < 0.0 ? -1.0 / stretch : std::pow(stretch, way));
  }
  return width;
}

/// `n` cells a side. Air that is cut off from the side that holds the pressure counts as solid.
inline StretchedEquation stretched_equation(std::int32_t n, const Stretched& of) {
  const flow::Box box{{n, n, n}};
  StretchedEquation e{flow::Flags(box, 0), flow::FiveBlocks(box), flow::Field(box), {}};
  e.geometry.width = {stretched_widths(n, of.x, false), stretched_widths(n, of.y, false),
                      stretched_widths(n, of.z, true)};
  std::mt19937 random(11);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  const std::int32_t period = std::max(4, n / 8);
  const std::int32_t side = period * 2 / 3 + 1;
  flow::Flags open(box, 0);
  std::vector<flow::Triple> waiting;
  flow::for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= n; ++i, ++place) {
      const bool tower = (i - 1) % period < side && (j - 1) % period < side && k <= 3 * n / 4;
      const bool solid = of.solid == Stretched::Solid::towers  ? tower
                         : of.solid == Stretched::Solid::draws ? value(random) < -1.0 / 3.0
                                                               : false;
      open[place] = solid ? 0 : 1;
      if (!solid && i == n) waiting.push_back({i, j, k});
    }
  });
  while (!waiting.empty()) {
    const auto [i, j, k] = waiting.back();
    waiting.pop_back();
    const std::size_t place = box.at(i, j, k);
    if (open[place] == 0 || e.fluid[place] > 0) continue;
    e.fluid[place] = 1;
    for (std::size_t a = 0; a < 3; ++a) {
      for (const std::int32_t way : {-1, 1}) {
        flow::Triple next{i, j, k};
        next[a] += way;
        if (next[a] >= 1 && next[a] <= n) waiting.push_back(next);
      }
    }
  }
  flow::for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= n; ++i, ++place) {
      if (e.fluid[place] == 0) continue;
      e.right[place] = value(random);
      const flow::Triple cell{i, j, k};
      const auto width = [&](std::size_t a, std::int32_t index) {
        return e.geometry.width[a][static_cast<std::size_t>(index - 1)];
      };
      for (std::size_t a = 0; a < 3; ++a) {
        const double area =
            width((a + 1) % 3, cell[(a + 1) % 3]) * width((a + 2) % 3, cell[(a + 2) % 3]);
        if (a == 0 && i == n) {
          e.blocks.diagonal[place] += 2.0 * area / width(0, n);
          e.geometry.held.push_back({place, 0, 2.0 * area / width(0, n)});
        }
        const std::size_t below = place - box.stride(static_cast<int>(a));
        if (cell[a] == 1 || e.fluid[below] == 0) continue;
        const double c = 2.0 * area / (width(a, cell[a]) + width(a, cell[a] - 1));
        e.blocks.lower[a][place] = -c;
        e.blocks.diagonal[place] += c;
        e.blocks.diagonal[below] += c;
      }
    }
  });
  return e;
}

}  // namespace sample
