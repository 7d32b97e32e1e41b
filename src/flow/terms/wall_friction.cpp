#include "flow/terms/wall_friction.hpp"

#include <cmath>

namespace flow {

namespace {

double crossing() {
  double y = 11.0;
  for (int turn = 0; turn < 60; ++turn) y = std::log(y) / kKarman + kLogLaw;
  return y;
}

/// One round for s = y u/nu in s (ln(s)/kappa + B) = reynolds; the left side is convex and the
/// start lies below the root. True when what is left is of the square of 1e-8.
bool improve(double reynolds, double& s) {
  const double law = std::log(s) / kKarman + kLogLaw;
  const double step = (reynolds - s * law) / (law + 1.0 / kKarman);
  s += step;
  return std::fabs(step) <= 1e-8 * s;
}

}  // namespace

double wall_law_crossing() {
  static const double kCrossing = crossing();
  return kCrossing;
}

double friction_velocity(double speed, double y, double nu) {
  const WallLayer layer{speed, y, nu};
  double friction = 0.0;
  friction_velocities(std::span(&layer, 1), &friction);
  return friction;
}

void friction_velocities(std::span<const WallLayer> layers, double* friction) {
  const double meeting = wall_law_crossing();
  std::array<double, kWallsTogether> reynolds{};
  std::array<double, kWallsTogether> root{};
  std::array<std::size_t, kWallsTogether> open{};
  std::size_t count = 0;
  for (std::size_t n = 0; n < layers.size(); ++n) {
    const WallLayer& at = layers[n];
    reynolds[n] = at.speed * at.y / at.nu;
    root[n] = meeting;
    if (reynolds[n] <= meeting * meeting) {
      friction[n] = std::sqrt(at.speed * at.nu / at.y);
    } else {
      open[count++] = n;
    }
  }
  const auto logarithmic = std::span(open).first(count);
  std::array<std::size_t, kWallsTogether> going = open;
  for (int turn = 0; turn < 50 && count > 0; ++turn) {
    std::size_t left = 0;
    for (std::size_t m = 0; m < count; ++m) {
      const std::size_t n = going[m];
      going[left] = n;
      left += improve(reynolds[n], root[n]) ? 0 : 1;
    }
    count = left;
  }
  for (const std::size_t n : logarithmic) friction[n] = root[n] * layers[n].nu / layers[n].y;
}

}  // namespace flow
