// The law of the wall for momentum: what a flow along a wall has of friction.
//
// Solved by Newton's method, whose rounds wait for one logarithm after the other. The faces of a
// loop do not depend on one another, so several go through their rounds side by side, each in its
// own order: the bits are those of one alone. Used by the shear of the momentum predictor, the wall
// functions of turbulence and the exchange of heat and vapour.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <utility>

namespace flow {

inline constexpr double kKarman = 0.42;
inline constexpr double kLogLaw = 5.5;  ///< additive constant

/// y u/nu where the logarithm and the linear profile meet.
double wall_law_crossing();

/// A flow along a wall.
struct WallLayer {
  double speed = 0.0;  ///< [m/s]
  double y = 0.0;      ///< distance from the wall [m]
  double nu = 0.0;     ///< kinematic viscosity [m2/s]
};

/// Friction velocity [m/s] of a flow with `speed` along a wall at the distance y:
/// speed/u = ln(y u/nu)/0.42 + 5.5 (von Karman 1930), and speed/u = y u/nu below their crossing.
double friction_velocity(double speed, double y, double nu);

/// Flows that are solved together.
inline constexpr std::size_t kWallsTogether = 8;
/// The same of each of at most so many flows.
void friction_velocities(std::span<const WallLayer> layers, double* friction);

/// Takes flows as a loop comes across them and calls `use(number, layer, friction velocity)` for
/// each, in their order, when some have come together, and for the rest in `finish`.
template <class Use>
class WallQueue {
 public:
  explicit WallQueue(Use use) : use_(std::move(use)) {}
  void add(std::size_t number, const WallLayer& layer) {
    numbers_[count_] = number;
    layers_[count_] = layer;
    if (++count_ == kWallsTogether) finish();
  }
  void finish() {
    std::array<double, kWallsTogether> friction{};
    friction_velocities(std::span(layers_).first(count_), friction.data());
    for (std::size_t n = 0; n < count_; ++n) use_(numbers_[n], layers_[n], friction[n]);
    count_ = 0;
  }

 private:
  Use use_;
  std::array<std::size_t, kWallsTogether> numbers_{};
  std::array<WallLayer, kWallsTogether> layers_{};
  std::size_t count_ = 0;
};

}  // namespace flow
