#include "flow/terms/velocities.hpp"

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

FLOW_CLONES void cell_row(std::size_t count, const double* lower, const double* upper,
                          const double* r, double* out) {
  for (std::size_t i = 0; i < count; ++i) out[i] = 0.5 * (lower[i] + upper[i]) / r[i];
}

/// Faces along the row: each has weights of its own.
FLOW_CLONES void face_row_x(std::size_t count, const double* ru, const double* r,
                            const double* lower, const double* upper, const double* inner,
                            double* out, double* mass) {
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = ru[i] / (lower[i] * r[i] + upper[i] * r[i + 1]);
    mass[i] = inner[i] * ru[i];
  }
}

/// Faces across: the neighbours' densities stand in another row.
FLOW_CLONES void face_row(std::size_t count, const double* ru, const double* r, const double* beyond,
                          double lower, double upper, const double* inner, double* out,
                          double* mass) {
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = ru[i] / (lower * r[i] + upper * beyond[i]);
    mass[i] = inner[i] * ru[i];
  }
}

}  // namespace

Velocities::Velocities(const Box& box) {
  for (std::size_t a = 0; a < 3; ++a) cell[a] = face[a] = mass[a] = Field(box);
}

void set_velocities(const Metrics& metrics, const Ends& ends, const Rim& rim, const State& state,
                    Velocities& velocities) {
  const Box& box = state.r[0].box();
  const double* const r = state.r[0].data();
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    const auto a = static_cast<std::size_t>(axis);
    const std::size_t stride = box.stride(axis);
    const double* const ru = state.ru[a].data();
    const double* const inner = rim.inner[a].data();
    double* const face = velocities.face[a].data();
    double* const mass = velocities.mass[a].data();
    for_face_rows(box, axis, [&](std::size_t place, std::size_t count, std::int32_t j,
                                 std::int32_t k) {
      const std::int32_t f = axis == 1 ? j : k;
      if (axis == 0) {
        face_row_x(count, ru + place, r + place, AxisMetric::from(metrics[0].lower, 0),
                   AxisMetric::from(metrics[0].upper, 0), inner + place, face + place,
                   mass + place);
      } else {
        face_row(count, ru + place, r + place, r + place + stride,
                 AxisMetric::at(metrics[a].lower, f), AxisMetric::at(metrics[a].upper, f),
                 inner + place, face + place, mass + place);
      }
    });
    for_rows(box, [&](std::size_t place, auto, auto) {
      cell_row(static_cast<std::size_t>(box.n[0]), ru + place - stride, ru + place, r + place,
               velocities.cell[a].data() + place);
    });
    fill_halos(velocities.cell[a], ends, axis);
    fill_face_halos(velocities.face[a], axis, ends);
  }
}

}  // namespace flow
