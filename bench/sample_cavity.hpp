// The lid-driven square cavity and its published centre lines: Ghia, Ghia and Shin (1982), J.
// Comput. Phys. 48, 387, tables I and II.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "sample_flow.hpp"

namespace sample {

struct Published {
  double at;                    ///< y on x = 0.5, or x on y = 0.5; a multiple of 1/128, rounded
  std::array<double, 3> value;  ///< at Reynolds numbers 100, 400 and 1000, of the lid's speed
};
inline constexpr std::array kReynolds{100.0, 400.0, 1000.0};
inline constexpr std::array<Published, 15> kPublishedU{{{0.9766, {0.84123, 0.75837, 0.65928}},
                                                        {0.9688, {0.78871, 0.68439, 0.57492}},
                                                        {0.9609, {0.73722, 0.61756, 0.51117}},
                                                        {0.9531, {0.68717, 0.55892, 0.46604}},
                                                        {0.8516, {0.23151, 0.29093, 0.33304}},
                                                        {0.7344, {0.00332, 0.16256, 0.18719}},
                                                        {0.6172, {-0.13641, 0.02135, 0.05702}},
                                                        {0.5000, {-0.20581, -0.11477, -0.06080}},
                                                        {0.4531, {-0.21090, -0.17119, -0.10648}},
                                                        {0.2813, {-0.15662, -0.32726, -0.27805}},
                                                        {0.1719, {-0.10150, -0.24299, -0.38289}},
                                                        {0.1016, {-0.06434, -0.14612, -0.29730}},
                                                        {0.0703, {-0.04775, -0.10338, -0.22220}},
                                                        {0.0625, {-0.04192, -0.09266, -0.20196}},
                                                        {0.0547, {-0.03717, -0.08186, -0.18109}}}};
/// The value at x = 0.9063 and Re 400 is left out (NaN): it breaks the curve between its
/// neighbours, which speaks for a misprint.
inline constexpr std::array<Published, 15> kPublishedV{{{0.9688, {-0.05906, -0.12146, -0.21388}},
                                                        {0.9609, {-0.07391, -0.15663, -0.27669}},
                                                        {0.9531, {-0.08864, -0.19254, -0.33714}},
                                                        {0.9453, {-0.10313, -0.22847, -0.39188}},
                                                        {0.9063, {-0.16914, NAN, -0.51550}},
                                                        {0.8594, {-0.22445, -0.44993, -0.42665}},
                                                        {0.8047, {-0.24533, -0.38598, -0.31966}},
                                                        {0.5000, {0.05454, 0.05186, 0.02526}},
                                                        {0.2344, {0.17527, 0.30174, 0.32235}},
                                                        {0.2266, {0.17507, 0.30203, 0.33075}},
                                                        {0.1563, {0.16077, 0.28124, 0.37095}},
                                                        {0.0938, {0.12317, 0.22965, 0.32627}},
                                                        {0.0781, {0.10890, 0.20920, 0.30353}},
                                                        {0.0703, {0.10091, 0.19713, 0.29012}},
                                                        {0.0625, {0.09233, 0.18360, 0.27485}}}};

/// A cavity of n x n equal cells (n even) with the lid at y = 1.
struct Cavity : FlowCase {
  Cavity(std::int32_t n, double reynolds) : FlowCase({equal(n), equal(n), equal(1)}), cells(n) {
    set_viscosity(1.0 / reynolds);
    control().keeps_pressure = true;
    control().epscg = 1e-4;
    control().smaller.dtsafe = 0.8;
    ends(0, flow::VelocityAt::no_slip);
    end(1, -1);
    end(1, 1).velocity[0] = 1.0;
  }

  /// Steps until no velocity changes by more than `rate` in a unit of time.
  void settle(double rate, std::int32_t at_once = 100) {
    std::vector<double> before;
    for (double change = 2.0 * rate; change > rate;) {
      const double begun = run.state.time;
      before.assign(run.state.ru[0].all().begin(), run.state.ru[0].all().end());
      steps(at_once);
      change = 0.0;
      for (std::size_t c = 0; c < before.size(); ++c) {
        change = std::max(change, std::fabs(run.state.ru[0][c] - before[c]));
      }
      change /= run.state.time - begun;
    }
  }

  /// How far a line lies from the published one, parts of the lid's speed.
  struct Deviation {
    double largest = 0.0, root_mean_square = 0.0;
  };
  /// Deviations of u and v.
  std::array<Deviation, 2> deviation(std::size_t reynolds) const {
    std::vector<double> u{0.0}, v{0.0};
    for (std::int32_t i = 1; i <= cells; ++i) {
      u.push_back(run.state.ru[0](cells / 2, i, 1));
      v.push_back(run.state.ru[1](i, cells / 2, 1));
    }
    u.push_back(1.0);
    v.push_back(0.0);
    return {compare(kPublishedU, reynolds, u), compare(kPublishedV, reynolds, v)};
  }

  std::int32_t cells;

 private:
  template <class Table>
  Deviation compare(const Table& table, std::size_t reynolds,
                    const std::vector<double>& line) const {
    Deviation all;
    double count = 0.0;
    for (const Published& one : table) {
      const double value = one.value[reynolds];
      if (std::isnan(value)) continue;
      const double off = between(line, std::round(one.at * 128.0) / 128.0) - value;
      all.largest = std::max(all.largest, std::fabs(off));
      all.root_mean_square += off * off;
      count += 1.0;
    }
    all.root_mean_square = std::sqrt(all.root_mean_square / count);
    return all;
  }
  /// Place of a value of a line: both walls and the centres between them.
  double place(std::size_t i) const {
    return std::clamp((static_cast<double>(i) - 0.5) / cells, 0.0, 1.0);
  }
  /// Lagrange's cubic through the four values around a place.
  double between(const std::vector<double>& line, double at) const {
    std::size_t first = 0;
    while (first + 4 < line.size() && place(first + 2) < at) ++first;
    double sum = 0.0;
    for (std::size_t i = first; i < first + 4; ++i) {
      double weight = line[i];
      for (std::size_t j = first; j < first + 4; ++j) {
        if (j != i) weight *= (at - place(j)) / (place(i) - place(j));
      }
      sum += weight;
    }
    return sum;
  }
};

}  // namespace sample
