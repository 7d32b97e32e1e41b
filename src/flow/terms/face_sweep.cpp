#include "flow/terms/face_sweep.hpp"

#include "flow/row_kernel.hpp"

namespace flow {

SweepRows::SweepRows(const Box& box, std::size_t hands) : of(hands) {
  const auto n = static_cast<std::size_t>(box.n[0]);
  for (TileRows& rows : of) {
    for (std::size_t v = 0; v < kSweepWidth; ++v) {
      rows.fresh[v].assign(n + 1, 0.0);
      rows.below[v].assign(n, 0.0);
      rows.under[v].assign(n * static_cast<std::size_t>(tile_rows(box)), 0.0);
    }
    rows.scratch.assign(n + 1, 0.0);
  }
}

FLOW_CLONES void subtract_along(std::size_t count, const double* flux, const double* inv_width,
                                double* dqdt) {
  for (std::size_t i = 0; i < count; ++i) dqdt[i] -= (flux[i + 1] - flux[i]) * inv_width[i];
}

FLOW_CLONES void subtract_across(std::size_t count, const double* flux, double inv_width,
                                 double* before, double* dqdt) {
  for (std::size_t i = 0; i < count; ++i) {
    dqdt[i] -= (flux[i] - before[i]) * inv_width;
    before[i] = flux[i];
  }
}

}  // namespace flow
