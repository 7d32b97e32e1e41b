// Rows of a field that have the same values, found once and then read in one place.
//
// What a step reads of openings and couplings never changes, and most of it is the same row again:
// above the roofs, along a street. A kernel that takes such a row always from where it stood first
// finds it in a near cache, and memory is left to what changes. The fields stay as they are; an
// index tells where else a row stands. Filled by those who own the fields, once these are final.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "flow/box.hpp"

namespace flow {

using Bytes = std::span<const std::byte>;

/// How many rows before each of `rows` rows, in places of `stride`, the first one stands that has
/// the same bytes in all `fields`; each of these is so many rows of one length.
std::vector<std::ptrdiff_t> ways_to_equal_rows(std::span<const Bytes> fields, std::size_t rows,
                                               std::size_t stride);

class EqualRows {
 public:
  /// Each row stands for itself.
  EqualRows() = default;
  /// The rows along i of a field, halos included.
  template <class T>
  explicit EqualRows(const FieldOf<T>& field) : extent_(field.box().extent(0)) {
    const Bytes bytes = std::as_bytes(field.all());
    way_ = ways_to_equal_rows(std::span(&bytes, 1), field.all().size() / extent_, extent_);
  }
  /// Values of the field from `place` on to the end of its row.
  template <class T>
  [[nodiscard]] const T* from(const FieldOf<T>& field, std::size_t place) const {
    return field.data() + place - (way_.empty() ? 0 : way_[place / extent_]);
  }

 private:
  std::size_t extent_ = 1;
  std::vector<std::ptrdiff_t> way_;  ///< back to the place in the equal row
};

}  // namespace flow
