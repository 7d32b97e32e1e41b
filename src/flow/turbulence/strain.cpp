#include "flow/turbulence/strain.hpp"

#include <algorithm>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

/// A velocity in a row of cells and its derivative along an axis, whose neighbours are `s` away.
template <class Weight>
struct Along {
  const double* q;
  std::size_t s;
  Weight lower, upper;

  FLOW_INLINE double derivative(std::size_t i) const {
    return upper[i] * (q[i + s] - q[i]) + lower[i] * (q[i] - q[i - s]);
  }
};

/// out += 2 (du/dx)^2, from the velocities on the faces.
template <class Weight>
FLOW_INLINE void add_stretching(std::size_t count, const double* face, std::size_t s, Weight width,
                                double* __restrict out) {
  const double* const before = face - s;
  for (std::size_t i = 0; i < count; ++i) {
    const double d = (face[i] - before[i]) * width[i];
    out[i] += 2.0 * (d * d);
  }
}

/// out += (du/dy + dv/dx)^2.
template <class First, class Second>
FLOW_INLINE void add_shear(std::size_t count, const Along<First>& u, const Along<Second>& v,
                           double* __restrict out) {
  for (std::size_t i = 0; i < count; ++i) {
    const double d = u.derivative(i) + v.derivative(i);
    out[i] += d * d;
  }
}

/// A row of cells in the fields.
struct Row {
  const Domain& domain;
  const Strain& strain;
  const Velocities& velocities;
  std::size_t place, count;
  Triple index;

  [[nodiscard]] Along<Same> across(std::size_t component, std::size_t axis) const {
    const CentreSlope& slope = strain.slopes[axis];
    const std::int32_t at = index[axis];
    return {velocities.cell[component].data() + place,
            domain.grid.box.stride(static_cast<int>(axis)), Same{AxisMetric::at(slope.lower, at)},
            Same{AxisMetric::at(slope.upper, at)}};
  }
  [[nodiscard]] Along<Each> along(std::size_t component) const {
    const CentreSlope& slope = strain.slopes[0];
    return {velocities.cell[component].data() + place, 1, AxisMetric::from(slope.lower, 1),
            AxisMetric::from(slope.upper, 1)};
  }
};

FLOW_CLONES void stretch(const Row& row, std::size_t a, double* out) {
  const double* const face = row.velocities.face[a].data() + row.place;
  const auto& inv_width = row.domain.metrics[a].inv_width;
  if (a == 0) {
    add_stretching(row.count, face, 1, AxisMetric::from(inv_width, 1), out);
  } else {
    add_stretching(row.count, face, row.domain.grid.box.stride(static_cast<int>(a)),
                   Same{AxisMetric::at(inv_width, row.index[a])}, out);
  }
}

/// Of the axes a < b.
FLOW_CLONES void shear(const Row& row, std::size_t a, std::size_t b, double* out) {
  if (a == 0) {
    add_shear(row.count, row.across(0, b), row.along(b), out);
  } else {
    add_shear(row.count, row.across(a, b), row.across(b, a), out);
  }
}

}  // namespace

Strain make_strain(const Domain& domain) {
  return {make_centre_slopes(domain.grid), list_rim_cells(domain.rim, domain.openings),
          make_wall_flows(domain.grid, domain.rim),
          std::vector<std::vector<double>>(
              domain.crew.hands(),
              std::vector<double>(static_cast<std::size_t>(domain.grid.box.n[0])))};
}

void set_strain_row(const Domain& domain, const Strain& strain, const Velocities& velocities,
                    std::size_t place, std::int32_t j, std::int32_t k, double* out) {
  const Box& box = domain.grid.box;
  const Row row{domain, strain, velocities, place, static_cast<std::size_t>(box.n[0]), {1, j, k}};
  std::fill_n(out, row.count, 0.0);
  for (std::size_t a = 0; a < 3; ++a) {
    if (!box.computed(static_cast<int>(a))) continue;
    stretch(row, a, out);
    for (std::size_t b = a + 1; b < 3; ++b) {
      if (box.computed(static_cast<int>(b))) shear(row, a, b, out);
    }
  }
}

}  // namespace flow
