// A table of patches by rows (layers, terms, columns), the patch number running fastest: one row
// of all patches stands together, which is what the loops over patches need.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace frame {

template <class T>
class PatchTable {
 public:
  PatchTable() = default;
  PatchTable(std::int32_t patches, std::int32_t rows, T value = T{})
      : patches_(static_cast<std::size_t>(patches)),
        values_(static_cast<std::size_t>(patches) * static_cast<std::size_t>(rows), value) {}

  [[nodiscard]] std::span<T> row(std::int32_t k) {
    return {values_.data() + static_cast<std::size_t>(k) * patches_, patches_};
  }
  [[nodiscard]] std::span<const T> row(std::int32_t k) const {
    return {values_.data() + static_cast<std::size_t>(k) * patches_, patches_};
  }
  [[nodiscard]] T& operator()(std::size_t p, std::int32_t k) {
    return values_[static_cast<std::size_t>(k) * patches_ + p];
  }
  [[nodiscard]] const T& operator()(std::size_t p, std::int32_t k) const {
    return values_[static_cast<std::size_t>(k) * patches_ + p];
  }
  [[nodiscard]] std::span<T> all() { return values_; }
  [[nodiscard]] std::span<const T> all() const { return values_; }
  [[nodiscard]] std::size_t patches() const { return patches_; }

 private:
  std::size_t patches_ = 0;
  std::vector<T> values_;
};

}  // namespace frame
