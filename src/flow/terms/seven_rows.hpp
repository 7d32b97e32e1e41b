// Rows of an implicit equation, assembled face by face.
//
// A face between two cells adds to the row of each: to its diagonal, and to its coupling with the
// cell on the other side. What it adds is the equation's own; where it goes is the same for
// momentum and scalars.
#pragma once

#include <algorithm>

#include "flow/linear/bcgstb_pre.hpp"
#include "flow/terms/domain.hpp"

namespace flow {

/// A face between two cells; beyond a periodic end a cell stands at its place in the halo.
struct InnerFace {
  int axis;
  std::size_t lower, upper;  ///< cells
  std::int32_t index;        ///< of the face along its axis
  double open;               ///< fraction
  double mass;               ///< through the face [kg/m2 s]
};

/// What a face adds to the rows of its cells: to the diagonal, and to the coupling with the other.
struct FaceRates {
  double lower_own, lower_other;
  double upper_own, upper_other;
};

/// Volume fraction that balances divide by: that of the cell, which mkofrac holds above `clim`, and
/// at least this.
inline double held_fraction(const Domain& /*domain*/) { return kClosedFace; }

/// dt/(open volume * width) of a cell.
inline double row_scale(const Domain& domain, double dt, int axis, std::size_t cell,
                        std::int32_t index) {
  const auto& inv_width = domain.metrics[static_cast<std::size_t>(axis)].inv_width;
  return dt / std::max(domain.openings.gmc[cell], held_fraction(domain)) *
         AxisMetric::at(inv_width, index);
}

inline void add_to_rows(const Domain& domain, double dt, const InnerFace& face,
                        const FaceRates& rates, SevenPoint& rows) {
  const auto a = static_cast<std::size_t>(face.axis);
  if (face.index >= 1) {
    const double scale = row_scale(domain, dt, face.axis, face.lower, face.index);
    rows.diagonal[face.lower] += scale * rates.lower_own;
    rows.upper[a][face.lower] = scale * rates.lower_other;
  }
  if (face.index + 1 <= domain.grid.box.n[a]) {
    const double scale = row_scale(domain, dt, face.axis, face.upper, face.index + 1);
    rows.diagonal[face.upper] += scale * rates.upper_own;
    rows.lower[a][face.upper] = scale * rates.upper_other;
  }
}

/// Sets all couplings, and adds dt times the part of the inner faces to the diagonals;
/// `rates(InnerFace)` gives the FaceRates.
template <class Rates>
void add_inner_faces(const Domain& domain, const std::array<Field, 3>& ru, double dt,
                     SevenPoint& rows, Rates&& rates) {
  const Box& box = domain.grid.box;
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    const auto a = static_cast<std::size_t>(axis);
    std::ranges::fill(rows.lower[a].all(), 0.0);
    std::ranges::fill(rows.upper[a].all(), 0.0);
    for_face_rows(box, axis,
                  [&](std::size_t place, std::size_t count, std::int32_t j, std::int32_t k) {
                    for (std::size_t c = place; c < place + count; ++c) {
                      const double open = domain.rim.inner[a][c];
                      if (open <= 0.0) continue;
                      const auto along = static_cast<std::int32_t>(c - place);
                      const std::int32_t f = axis == 0 ? along : axis == 1 ? j : k;
                      const InnerFace face{axis, c, c + box.stride(axis), f, open, open * ru[a][c]};
                      add_to_rows(domain, dt, face, rates(face), rows);
                    }
                  });
  }
}

/// The mean on a face, linear between the centres, of `value(cell)`.
template <class Value>
double face_mean(const Domain& domain, const InnerFace& face, Value&& value) {
  const AxisMetric& metric = domain.metrics[static_cast<std::size_t>(face.axis)];
  return AxisMetric::at(metric.lower, face.index) * value(face.lower) +
         AxisMetric::at(metric.upper, face.index) * value(face.upper);
}

}  // namespace flow
