#include "flow/terms/drag.hpp"

#include <algorithm>
#include <cmath>

#include "flow/share.hpp"

namespace flow {

namespace {

void list_inner_faces(const Domain& domain, int axis, std::vector<DragFace>& faces) {
  const auto a = static_cast<std::size_t>(axis);
  const Field& adrg = domain.urban.adrg;
  const Field& volume = domain.openings.gmc;
  const AxisMetric& metric = domain.metrics[a];
  const std::size_t s = adrg.box().stride(axis);
  const std::int32_t last = adrg.box().n[a];
  for_face_rows(
      adrg.box(), axis, [&](std::size_t place, std::size_t count, std::int32_t j, std::int32_t k) {
        for (std::size_t c = place; c < place + count; ++c) {
          const std::int32_t f = axis == 0   ? static_cast<std::int32_t>(c - place)
                                 : axis == 1 ? j
                                             : k;
          if (domain.rim.inner[a][c] <= 0.0) continue;
          const double lower = AxisMetric::at(metric.lower, f);
          const double upper = AxisMetric::at(metric.upper, f);
          // A half cell's part in the volume between the centres is that of its width,
          // which is the other's weight in a linear mean.
          const double drag = upper * (adrg[c] / volume[c]) + lower * (adrg[c + s] / volume[c + s]);
          if (drag > 0.0) faces.push_back({c, c, c + s, f > 0, f < last, lower, upper, drag});
        }
      });
}

void list_free_faces(const Domain& domain, std::size_t axis, std::vector<DragFace>& faces) {
  for (const FreeFace& free : domain.rim.free[axis]) {
    const BoundaryFace& at = domain.rim.faces[axis][free.number];
    const double drag = domain.urban.adrg[at.cell] / domain.openings.gmc[at.cell];
    if (drag > 0.0) faces.push_back({at.face, at.cell, at.cell, true, false, 1.0, 0.0, drag});
  }
}

/// Speed on a face: its own flux, and the other components from the centres beside it.
double speed_on(const DragFace& at, std::size_t axis, const Velocities& velocities) {
  double square = 0.0;
  for (std::size_t b = 0; b < 3; ++b) {
    const Field& cell = velocities.cell[b];
    const double u = b == axis ? velocities.face[b][at.face]
                               : at.at_lower * cell[at.lower] + at.at_upper * cell[at.upper];
    square += u * u;
  }
  return std::sqrt(square);
}

}  // namespace

Drag make_drag(const Domain& domain) {
  Drag drag;
  if (domain.urban.adrg.empty()) return drag;
  for (int axis = 0; axis < 3; ++axis) {
    if (!domain.grid.box.computed(axis)) continue;
    const auto a = static_cast<std::size_t>(axis);
    list_inner_faces(domain, axis, drag.faces[a]);
    list_free_faces(domain, a, drag.faces[a]);
    drag.rate[a].assign(drag.faces[a].size(), 0.0);
    drag.sink[a].assign(drag.faces[a].size(), 0.0);
  }
  return drag;
}

void flw_clvdrg(const Domain& domain, const State& state, const Velocities& velocities, double dt,
                Drag& drag) {
  const bool implicit = domain.settings.control.implicit();
  for (std::size_t a = 0; a < 3; ++a) {
    domain.crew.each(drag.faces[a].size(), kSharedCells / 4, [&](std::size_t f) {
      const DragFace& at = drag.faces[a][f];
      const double rate = at.drag * speed_on(at, a, velocities);
      drag.rate[a][f] = implicit ? rate : std::min(rate, 1.0 / dt);
      drag.sink[a][f] = drag.rate[a][f] * state.ru[a][at.face];
    });
  }
}

void take_sink(const Drag& drag, std::size_t axis, double factor, Field& field) {
  for (std::size_t f = 0; f < drag.faces[axis].size(); ++f) {
    field[drag.faces[axis][f].face] -= factor * drag.sink[axis][f];
  }
}

void add_drag_diagonal(const Drag& drag, std::size_t axis, double dt, Field& diagonal) {
  for (std::size_t f = 0; f < drag.faces[axis].size(); ++f) {
    const DragFace& at = drag.faces[axis][f];
    const double half = 0.5 * dt * drag.rate[axis][f];
    if (at.has_lower) diagonal[at.lower] += half;
    if (at.has_upper) diagonal[at.upper] += half;
  }
}

}  // namespace flow
