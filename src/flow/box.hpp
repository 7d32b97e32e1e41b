// The box of cells that a process computes, and the fields that live on it.
//
// Cells are numbered from 1; two further cells stand at each end of every direction, also of one
// that has a single cell and is not computed, so that no loop needs a case of its own. i runs
// fastest. A quantity on the faces of a direction uses the same box: entry i is the face between
// the cells i and i+1, so that the faces of a direction with n cells are 0..n. Every module of the
// flow solver works on these.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace flow {

/// Cells beyond each end: what a face flux of second order with a limiter looks at.
inline constexpr std::int32_t kHalo = 2;

using Triple = std::array<std::int32_t, 3>;

/// Sizes of a box and the place of each of its cells in a field.
struct Box {
  Triple n{};  ///< cells in x, y, z

  [[nodiscard]] std::size_t extent(int axis) const {
    return static_cast<std::size_t>(n[static_cast<std::size_t>(axis)]) +
           2 * static_cast<std::size_t>(kHalo);
  }
  /// Distance of neighbours along an axis.
  [[nodiscard]] std::size_t stride(int axis) const {
    return axis == 0 ? 1 : axis == 1 ? extent(0) : extent(0) * extent(1);
  }
  [[nodiscard]] std::size_t size() const { return extent(0) * extent(1) * extent(2); }
  /// Place of cell (i, j, k), each from -1 to n+2.
  [[nodiscard]] std::size_t at(std::int32_t i, std::int32_t j, std::int32_t k) const {
    const auto u = [](std::int32_t index) { return static_cast<std::size_t>(index + kHalo - 1); };
    return u(i) + extent(0) * (u(j) + extent(1) * u(k));
  }
  /// True where an axis has more than one cell: one with a single cell is not computed.
  [[nodiscard]] bool computed(int axis) const { return n[static_cast<std::size_t>(axis)] > 1; }
  [[nodiscard]] std::int64_t cells() const { return static_cast<std::int64_t>(n[0]) * n[1] * n[2]; }
};

/// Values on a box, halos included.
template <class T>
class FieldOf {
 public:
  FieldOf() = default;
  explicit FieldOf(const Box& box, T value = T{}) : box_(box), values_(box.size(), value) {}

  T& operator()(std::int32_t i, std::int32_t j, std::int32_t k) {
    return values_[box_.at(i, j, k)];
  }
  const T& operator()(std::int32_t i, std::int32_t j, std::int32_t k) const {
    return values_[box_.at(i, j, k)];
  }
  T& operator[](std::size_t place) { return values_[place]; }
  const T& operator[](std::size_t place) const { return values_[place]; }
  [[nodiscard]] T* data() { return values_.data(); }
  [[nodiscard]] const T* data() const { return values_.data(); }
  [[nodiscard]] const Box& box() const { return box_; }
  [[nodiscard]] bool empty() const { return values_.empty(); }
  [[nodiscard]] std::span<T> all() { return values_; }
  [[nodiscard]] std::span<const T> all() const { return values_; }

 private:
  Box box_;
  std::vector<T> values_;
};
using Field = FieldOf<double>;
using Flags = FieldOf<std::int32_t>;

/// Calls `row(place, j, k)` for each row of cells of the box, k outer: `place` is that of i = 1.
template <class Row>
void for_rows(const Box& box, Row&& row) {
  for (std::int32_t k = 1; k <= box.n[2]; ++k) {
    for (std::int32_t j = 1; j <= box.n[1]; ++j) row(box.at(1, j, k), j, k);
  }
}

/// The same for the rows with the halos of the computed axes: calls `row(place, count, j, k)`,
/// where `place` and `count` are those of the whole row with its halos.
template <class Row>
void for_wide_rows(const Box& box, Row&& row) {
  const auto beyond = [&box](int axis) { return box.computed(axis) ? kHalo : 0; };
  const auto count = static_cast<std::size_t>(box.n[0]) + 2 * static_cast<std::size_t>(beyond(0));
  for (std::int32_t k = 1 - beyond(2); k <= box.n[2] + beyond(2); ++k) {
    for (std::int32_t j = 1 - beyond(1); j <= box.n[1] + beyond(1); ++j) {
      row(box.at(1 - beyond(0), j, k), count, j, k);
    }
  }
}

/// The faces 0..n of one axis, row by row: `row(place, count, j, k)`.
template <class Row>
void for_face_rows(const Box& box, int axis, Row&& row) {
  const auto count = static_cast<std::size_t>(box.n[0]) + (axis == 0 ? 1 : 0);
  for (std::int32_t k = axis == 2 ? 0 : 1; k <= box.n[2]; ++k) {
    for (std::int32_t j = axis == 1 ? 0 : 1; j <= box.n[1]; ++j) {
      row(box.at(axis == 0 ? 0 : 1, j, k), count, j, k);
    }
  }
}

}  // namespace flow
