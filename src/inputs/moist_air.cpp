#include "inputs/moist_air.hpp"

#include <cmath>

namespace moist_air {

Saturation satvap(double T) {
  const double es = 611.0 * std::exp(19.850675545287046 * (1.0 - 273.0 / T));
  return {es, 5419.234423863364 * es / (T * T)};
}

}  // namespace moist_air
