#include "flow/terms/velocities.hpp"

#include "flow/row_kernel.hpp"
#include "flow/share.hpp"

namespace flow {

namespace {

FLOW_CLONES void cell_row(std::size_t count, const double* lower, const double* upper,
                          const double* r, double* out) {
  for (std::size_t i = 0; i < count; ++i) out[i] = 0.5 * (lower[i] + upper[i]) / r[i];
}

/// Flux over the mean density; the upper cells of the faces are `s` further.
template <class Weight>
FLOW_INLINE void face_row(std::size_t count, const double* ru, const double* r, std::size_t s,
                          Weight lower, Weight upper, double* __restrict out) {
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = ru[i] / (lower[i] * r[i] + upper[i] * r[i + s]);
  }
}

FLOW_CLONES void faces_along(std::size_t count, const double* ru, const double* r,
                             const AxisMetric& x, double* out) {
  face_row(count, ru, r, 1, AxisMetric::from(x.lower, 0), AxisMetric::from(x.upper, 0), out);
}

FLOW_CLONES void faces_across(std::size_t count, const double* ru, const double* r, std::size_t s,
                              const AxisMetric& metric, std::int32_t f, double* out) {
  face_row(count, ru, r, s, Same{AxisMetric::at(metric.lower, f)},
           Same{AxisMetric::at(metric.upper, f)}, out);
}

}  // namespace

Velocities::Velocities(const Box& box) {
  for (std::size_t a = 0; a < 3; ++a) cell[a] = face[a] = Field(box);
}

void set_velocities(frame::Crew& crew, const Metrics& metrics, const Ends& ends, const State& state,
                    Velocities& velocities) {
  const Box& box = state.r[0].box();
  const auto n = static_cast<std::size_t>(box.n[0]);
  std::array<LayerCopies, 3> of_cells;
  std::array<LayerCopies, 3> of_faces;
  for (int axis = 0; axis < 3; ++axis) {
    of_cells[static_cast<std::size_t>(axis)] = row_ends(box, ends, axis == 0);
    of_faces[static_cast<std::size_t>(axis)] = face_row_ends(box, ends, axis);
  }
  share_rows(crew, box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    const double* const r = state.r[0].data() + place;
    for (int axis = 0; axis < 3; ++axis) {
      if (!box.computed(axis)) continue;
      const auto a = static_cast<std::size_t>(axis);
      const std::size_t s = box.stride(axis);
      const double* const ru = state.ru[a].data() + place;
      double* const face = velocities.face[a].data() + place;
      const std::int32_t index = axis == 1 ? j : k;
      if (axis == 0) {
        faces_along(n + 1, ru - 1, r - 1, metrics[0], face - 1);
      } else {
        faces_across(n, ru, r, s, metrics[a], index, face);
        if (index == 1) {
          faces_across(n, ru - s, r - s, s, metrics[a], 0, face - s);
          fill_row_ends(of_faces[a], face - s);
        }
      }
      fill_row_ends(of_faces[a], face);
      cell_row(n, ru - s, ru, r, velocities.cell[a].data() + place);
      fill_row_ends(of_cells[a], velocities.cell[a].data() + place);
    }
  });
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    fill_halos(crew, velocities.cell[static_cast<std::size_t>(axis)], ends, axis, 1);
    fill_face_halos(crew, velocities.face[static_cast<std::size_t>(axis)], axis, ends, 1);
  }
}

}  // namespace flow
