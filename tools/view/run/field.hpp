// The values of one quantity over a run.
//
// Columns of result files are kept as single precision, which holds all the digits that the files
// print. Derived quantities are formed when they are asked for, an hour at a time, so that a large
// run holds few of them at once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "registry/quantity.hpp"

namespace townskin_view {

struct RunModel;

struct Field {
  /// Forms the values of an hour from the rest of the run.
  using Derive = void (*)(const RunModel& run, std::size_t hour, std::span<float> to);

  const Quantity* quantity = nullptr;
  std::size_t size = 0;         ///< values an hour: patches, buildings, cells, leaf cells, or 1
  std::size_t hours = 0;        ///< 1 where the quantity is steady
  std::vector<float> values{};  ///< [hour][place]; empty where the field is derived. NaN: no value
  std::vector<double> exact{};  ///< in the place of `values` where inputs give more digits (steady)
  Derive derive = nullptr;

  /// The values at `hour` (0 for all hours of a steady field) into `to`, which has `size` places.
  void take(const RunModel& run, std::size_t hour, std::span<float> to) const {
    if (hours == 1) hour = 0;
    if (derive != nullptr) return derive(run, hour, to);
    if (!exact.empty()) {
      std::ranges::transform(exact, to.begin(), [](double v) { return static_cast<float>(v); });
      return;
    }
    std::ranges::copy(std::span(values).subspan(hour * size, size), to.begin());
  }
  /// The stored values of an hour; only of fields with `values`.
  [[nodiscard]] std::span<const float> stored(std::size_t hour) const {
    return std::span(values).subspan((hours == 1 ? 0 : hour) * size, size);
  }
};

}  // namespace townskin_view
