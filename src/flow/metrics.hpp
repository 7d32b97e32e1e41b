// Reciprocals and weights of the grid, as the operators multiply with them.
//
// Made once from the grid tables. All are rows that begin with entry -1, so that a kernel takes a
// pointer to the entry of its first cell or face.
#pragma once

#include <array>
#include <vector>

#include "flow/grid_tables.hpp"

namespace flow {

struct AxisMetric {
  std::vector<double> inv_width;  ///< of cell i [1/m]
  std::vector<double> inv_gap;    ///< of the distance of the centres of i and i+1 [1/m]
  std::vector<double> inv_span;   ///< of the distance of the centres of i-1 and i+1 [1/m]
  std::vector<double> narrow;     ///< the least width of cells i-1, i, i+1 [m]
  std::vector<double> lower;      ///< weight of cell i in the mean on face i
  std::vector<double> upper;      ///< weight of cell i+1

  static double at(const std::vector<double>& row, std::int32_t i) { return *from(row, i); }
  static const double* from(const std::vector<double>& row, std::int32_t i) {
    return row.data() + (i + 1);
  }
};

using Metrics = std::array<AxisMetric, 3>;

/// The mean on a face weighs each cell with the width of the other one: linear between centres.
Metrics make_metrics(const GridTables& grid);

}  // namespace flow
