// The grid of the flow: nodes, centres and widths of the cells along each axis.
//
// Read once at the start (flw_read_grid); every operator takes its distances from here.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "flow/box.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// One axis. Cell i lies between the nodes i and i+1; two cells stand beyond each end, by mirror
/// or, on a periodic axis, by repetition.
struct AxisTable {
  std::int32_t cells = 0;
  std::vector<double> node;    ///< nodes -1 .. cells+3 at positions 0 .. cells+4 [m]
  std::vector<double> centre;  ///< cells -1 .. cells+2 at positions 0 .. cells+3 [m]
  std::vector<double> width;   ///< the same for the widths [m]

  /// Coordinate of node i, centre and width of cell i.
  [[nodiscard]] double x(std::int32_t i) const {
    return node[static_cast<std::size_t>(std::ptrdiff_t{i} + 1)];
  }
  [[nodiscard]] double xc(std::int32_t i) const {
    return centre[static_cast<std::size_t>(std::ptrdiff_t{i} + 1)];
  }
  [[nodiscard]] double dx(std::int32_t i) const {
    return width[static_cast<std::size_t>(std::ptrdiff_t{i} + 1)];
  }
  /// Distance of the centres on both sides of face i (between the cells i and i+1).
  [[nodiscard]] double dxc(std::int32_t i) const { return xc(i + 1) - xc(i); }
};

struct GridTables {
  Box box;
  std::array<AxisTable, 3> axis;  ///< x, y, z

  [[nodiscard]] double volume(std::int32_t i, std::int32_t j, std::int32_t k) const {
    return axis[0].dx(i) * axis[1].dx(j) * axis[2].dx(k);
  }
};

/// The table of one axis from its nodes (cells + 1 of them, increasing).
AxisTable make_axis(const std::vector<double>& nodes, bool periodic);

/// Reads the grid file for a domain of `cells`; y repeats itself when `periodic_y`.
/// Errors: "### data error (flw_read_grid)" for counts and for nodes that do not increase.
GridTables flw_read_grid(frame::Log& log, frame::TextInput& file, const Triple& cells,
                         bool periodic_y);

}  // namespace flow
