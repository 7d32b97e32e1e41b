#include "flow/scalars/wall_law.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "flow/terms/wall_friction.hpp"

namespace flow {

WallLaw::WallLaw(double molecular, double turbulent)
    : molecular_(molecular),
      turbulent_(turbulent),
      crossing_(std::numeric_limits<double>::infinity()) {
  if (!(turbulent > 0.0)) return;
  const double ratio = molecular / turbulent;
  resistance_ = 9.24 * (std::pow(ratio, 0.75) - 1.0) * (1.0 + 0.28 * std::exp(-0.007 * ratio));
  // From above, so that of the two crossings it is the upper one.
  crossing_ = 1e12;
  for (int turn = 0; turn < 200; ++turn) {
    crossing_ = (std::log(crossing_) / kKarman + kLogLaw + resistance_) / ratio;
  }
}

double WallLaw::at(double y_plus) const {
  if (y_plus <= crossing_) return molecular_ * y_plus;
  return turbulent_ * (std::log(y_plus) / kKarman + kLogLaw + resistance_);
}

double WallLaw::exchange(double speed, double y, double r, double mu) const {
  return exchange_by(friction_velocity(speed, y, std::max(mu, 1e-20) / r), y, r, mu);
}

double WallLaw::exchange_by(double friction, double y, double r, double mu) const {
  const double nu = std::max(mu, 1e-20) / r;
  const double y_plus = y * friction / nu;
  if (y_plus <= crossing_) return mu / (molecular_ * y);
  return r * friction / at(y_plus);
}

}  // namespace flow
