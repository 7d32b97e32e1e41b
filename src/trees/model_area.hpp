// The model's area in the grid, as tree data count it.
//
// The files of trees, like those of patches, number their cells from the corner of the model's
// area; the grid of the run may have a margin round it (group DUMMYGRID). Used by the readers of
// the tree data.
#pragma once

#include <algorithm>
#include <cstdint>

#include "inputs/grid_index.hpp"

namespace jmk {

class ModelArea {
 public:
  /// `mx`, `my` are the cells of the grid, `NDIV` how often the tree data divide each (1 where they
  /// count whole cells).
  ModelArea(std::int32_t mx, std::int32_t my, const tsrf_module_grdindx::Data& index,
            std::int32_t NDIV)
      : limit_x_((std::int64_t{mx} - index.NXF - index.NXB) * NDIV),
        limit_y_((std::int64_t{my} - index.NYF - index.NYB) * NDIV),
        offset_x_(std::int64_t{index.ox} * NDIV),
        offset_y_(std::int64_t{index.oy} * NDIV) {}

  [[nodiscard]] bool holds(std::int32_t i, std::int32_t j) const {
    return i >= 1 && i <= limit_x_ && j >= 1 && j <= limit_y_ &&
           std::max(i + offset_x_, j + offset_y_) <= INT32_MAX;
  }
  /// Index on the whole grid of an index that the area holds.
  [[nodiscard]] std::int32_t grid_i(std::int32_t i) const {
    return static_cast<std::int32_t>(i + offset_x_);
  }
  [[nodiscard]] std::int32_t grid_j(std::int32_t j) const {
    return static_cast<std::int32_t>(j + offset_y_);
  }

 private:
  std::int64_t limit_x_, limit_y_, offset_x_, offset_y_;
};

}  // namespace jmk
