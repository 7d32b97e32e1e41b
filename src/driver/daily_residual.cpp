#include "driver/daily_residual.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace tsrf_main01 {

namespace {

/// Patches that go through the nodes together, with their sums in the nearest cache.
constexpr std::size_t kPatchesAtOnce = 256;

/// Largest ratio of the `count` patches from `first` on.
double largest_ratio(tsrf_module_data::Data& state, std::size_t first, std::size_t count) {
  std::array<double, kPatchesAtOnce> change{};
  std::array<double, kPatchesAtOnce> size{};
  for (std::int32_t k = 0; k <= state.mzg; ++k) {
    const auto now = state.tlyr.row(k).subspan(first, count);
    const auto before = state.tprev.row(k).subspan(first, count);
    for (std::size_t i = 0; i < count; ++i) {
      const bool counts = k <= state.nlyr[first + i];
      const double difference = now[i] - before[i];
      change[i] += counts ? difference * difference : 0.0;
      size[i] += counts ? now[i] * now[i] : 0.0;
      before[i] = now[i];
    }
  }
  double largest = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (state.lcal[first + i] >= 1 && size[i] > 0.0) {
      largest = std::max(largest, change[i] / size[i]);
    }
  }
  return largest;
}

}  // namespace

double daily_residual(tsrf_module_data::Data& state) {
  double largest = 0.0;
  const std::size_t patches = state.lcal.size();
  for (std::size_t first = 0; first < patches; first += kPatchesAtOnce) {
    largest =
        std::max(largest, largest_ratio(state, first, std::min(kPatchesAtOnce, patches - first)));
  }
  return std::sqrt(largest);
}

}  // namespace tsrf_main01
