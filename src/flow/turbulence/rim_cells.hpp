// The cells of air beside the rim, with the faces that end them.
//
// What an operator forms at the centre of a cell from its neighbours it forms row by row as if air
// were everywhere, and then anew for these cells, of which there are few. Listed once, in the order
// of the rows.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "flow/rim.hpp"

namespace flow {

struct RimCell {
  static constexpr std::int32_t kAir = -1;     ///< air goes on beyond the face
  static constexpr std::int32_t kClosed = -2;  ///< closed, without a condition

  std::size_t cell = 0;
  Triple index{};
  /// [axis][lower, upper side]: number in the rim's list of that axis, or one of the above.
  std::array<std::array<std::int32_t, 2>, 3> face{};
};

std::vector<RimCell> list_rim_cells(const Rim& rim, const Openings& openings);
/// Those of the row whose first cell stands at `place`.
std::span<const RimCell> cells_of_row(const std::vector<RimCell>& cells, std::size_t place,
                                      const Box& box);

/// Coefficients of the derivative at the centre of the cells of an axis: it is upper (q(i+1) -
/// q(i))
/// + lower (q(i) - q(i-1)), of second order also where widths change. Rows begin with entry -1, as
/// those of AxisMetric do; entries 0..n+1 are set.
struct CentreSlope {
  std::vector<double> lower, upper;
};

std::array<CentreSlope, 3> make_centre_slopes(const GridTables& grid);

}  // namespace flow
