#include "flow/turbulence/eddy_viscosity.hpp"

#include <algorithm>
#include <cmath>

#include "flow/halo.hpp"
#include "flow/row_kernel.hpp"
#include "flow/share.hpp"
#include "flow/terms/wall_shear.hpp"
#include "flow/turbulence/wall_distance.hpp"

namespace flow {

namespace {

constexpr double kTiny = 1e-20;  ///< no divisor is below it

FLOW_CLONES void k_epsilon_row(std::size_t count, const double* r, const double* k,
                               const double* eps, double* mut) {
  for (std::size_t i = 0; i < count; ++i) {
    const double divisor = eps[i] < kTiny ? kTiny : eps[i];
    mut[i] = kCmu * (k[i] * k[i]) * r[i] / divisor;
  }
}

FLOW_CLONES void les_row(std::size_t count, const double* r, const double* length2,
                         const double* strain, double* mut) {
  for (std::size_t i = 0; i < count; ++i) mut[i] = r[i] * length2[i] * std::sqrt(strain[i]);
}

void settle(const Domain& domain, Field& mut) {
  for (const std::size_t cell : domain.rim.closed_cells) mut[cell] = 0.0;
  fill_halos(domain.crew, mut, domain.boundary.ends);
}

/// The filter's width squared.
double filter_square(const Domain& domain, const Triple& index) {
  double product = 1.0;
  int axes = 0;
  for (std::size_t a = 0; a < 3; ++a) {
    if (!domain.grid.box.computed(static_cast<int>(a))) continue;
    product *= domain.grid.axis[a].dx(index[a]);
    ++axes;
  }
  return std::pow(product, 2.0 / std::max(axes, 1));
}

}  // namespace

void set_k_epsilon_viscosity(const Domain& domain, State& state) {
  const Box& box = state.mut.box();
  share_rows(domain.crew, box, [&](std::size_t place, std::int32_t, std::int32_t) {
    k_epsilon_row(static_cast<std::size_t>(box.n[0]), state.r[0].data() + place,
                  state.ak[0].data() + place, state.ak[1].data() + place, state.mut.data() + place);
  });
  settle(domain, state.mut);
}

Field mixing_length_squares(const Domain& domain) {
  const Box& box = domain.grid.box;
  Field length2 = wall_distance_squares(domain);
  for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= box.n[0]; ++i, ++place) {
      const double own = kSmagorinsky * kSmagorinsky * filter_square(domain, {i, j, k});
      const double wall = kKarman * kKarman * length2[place];
      length2[place] = 1.0 / (1.0 / own + 1.0 / wall);
    }
  });
  return length2;
}

void set_les_viscosity(const Domain& domain, const Field& length2, Velocities& velocities,
                       Strain& strain, State& state) {
  set_velocities(domain.crew, domain.metrics, domain.boundary.ends, state, velocities);
  for_strain(domain, state, velocities, strain,
             [&](const double* row, std::size_t place, auto, auto, auto) {
               les_row(strain.rows[0].size(), state.r[0].data() + place, length2.data() + place,
                       row, state.mut.data() + place);
             });
  settle(domain, state.mut);
}

}  // namespace flow
