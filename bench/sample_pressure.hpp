// A pressure equation as a district gives it: boxes as obstacles on the ground, one side held.
#pragma once

#include <cstdint>
#include <random>

#include "flow/box.hpp"
#include "flow/linear/amg_grid.hpp"
#include "flow/linear/iccg_pre.hpp"

namespace sample {

struct PressureEquation {
  flow::Flags fluid;
  flow::FiveBlocks blocks;
  flow::Field right;
};

/// `n` cells a side, every eighth of the plan a box of an eighth to a half of the height; the
/// cells grow a little from the ground on.
inline PressureEquation pressure_equation(std::int32_t n) {
  const flow::Box box{{n, n, n}};
  PressureEquation e{flow::Flags(box, 0), flow::FiveBlocks(box), flow::Field(box)};
  std::mt19937 random(7);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  const std::int32_t block = n / 8;
  std::vector<std::int32_t> height;
  for (int b = 0; b < 64; ++b) {
    height.push_back(n / 8 + static_cast<std::int32_t>((value(random) + 1.0) * n / 8));
  }
  for (std::int32_t k = 1; k <= n; ++k) {
    for (std::int32_t j = 1; j <= n; ++j) {
      for (std::int32_t i = 1; i <= n; ++i) {
        const std::int32_t bi = (i - 1) / block;
        const std::int32_t bj = (j - 1) / block;
        const bool street = (i - 1) % block < block / 2 || (j - 1) % block < block / 4;
        const std::int32_t top = height[static_cast<std::size_t>(bi % 8 + 8 * (bj % 8))];
        e.fluid(i, j, k) = street || k > top ? 1 : 0;
      }
    }
  }
  const auto dz = [](std::int32_t k) { return 1.0 + 0.01 * k; };
  const auto couple = [&](std::size_t axis, std::int32_t i, std::int32_t j, std::int32_t k,
                          double c) {
    const std::size_t here = box.at(i, j, k);
    const std::size_t below = here - box.stride(static_cast<int>(axis));
    if (e.fluid[below] <= 0) return;
    e.blocks.lower[axis][here] = -c;
    e.blocks.diagonal[here] += c;
    e.blocks.diagonal[below] += c;
  };
  for (std::int32_t k = 1; k <= n; ++k) {
    for (std::int32_t j = 1; j <= n; ++j) {
      for (std::int32_t i = 1; i <= n; ++i) {
        if (e.fluid(i, j, k) <= 0) continue;
        couple(0, i, j, k, dz(k));
        couple(1, i, j, k, dz(k));
        couple(2, i, j, k, 2.0 / (dz(k) + dz(k - 1)));
        if (i == n) e.blocks.diagonal(i, j, k) += 2.0 * dz(k);
        e.right(i, j, k) = value(random);
      }
    }
  }
  return e;
}

/// What the multigrid wants to know of its grid.
inline flow::AmgGeometry geometry_of(const PressureEquation& e) {
  const flow::Box& box = e.fluid.box();
  flow::AmgGeometry geometry;
  for (auto& width : geometry.width) width.assign(static_cast<std::size_t>(box.n[0]), 1.0);
  for (std::int32_t k = 1; k <= box.n[2]; ++k) {
    const double dz = geometry.width[2][static_cast<std::size_t>(k - 1)] = 1.0 + 0.01 * k;
    for (std::int32_t j = 1; j <= box.n[1]; ++j) {
      if (e.fluid(box.n[0], j, k) > 0)
        geometry.held.push_back({box.at(box.n[0], j, k), 0, 2.0 * dz});
    }
  }
  return geometry;
}

}  // namespace sample
