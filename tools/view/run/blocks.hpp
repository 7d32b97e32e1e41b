// A result file as blocks of one hour each, its columns as fields.
//
// All result files have the same form: for each hour one line a place (patch, building, cell), in
// the same order. A block whose lines are not all there yet does not count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "run/lines.hpp"

namespace townskin_view {

/// Which numbers of a line are what, counted from 0.
struct Layout {
  std::size_t numbers = 0;    ///< of a line
  std::size_t hour = 0;       ///< the hour
  std::size_t first_key = 0;  ///< numbers that tell the place, and how many
  std::size_t keys = 0;
  std::size_t first_value = 0;  ///< values, one column each
  std::size_t values = 0;
  std::size_t steady = 0;    ///< how many of the last values are kept of the first block alone
  std::size_t headings = 0;  ///< lines before the first row, whatever they look like
};

/// The places of a file's rows, in their order.
using Keys = std::vector<std::int32_t>;

struct Blocks {
  std::vector<std::int32_t> hours;          ///< of the day, one a block
  std::vector<std::vector<float>> columns;  ///< [column][block][place]
  std::string remark;                       ///< what was left out; empty where all is there
};

/// Reads a file. `keys` are the places that every block must have in that order, `Layout::keys`
/// numbers a place; where it is empty the first block tells them.
[[nodiscard]] Blocks read_blocks(const std::string& path, const Layout& layout, Keys& keys);

}  // namespace townskin_view
