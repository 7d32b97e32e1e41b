// Plain forms of the flow's terms: one axis after the other, each flux a field of its own.
#pragma once

#include <cmath>

#include "flow/scalars/transport.hpp"
#include "flow/terms/velocities.hpp"

namespace plain {

using flow::AxisMetric;
using flow::Field;
using flow::Metrics;
using flow::Triple;

inline double sgn(double a) { return a < 0.0 ? -1.0 : 1.0; }
inline double mm(double a, double b) {
  return std::fmin(std::fabs(a), std::fabs(b)) * (sgn(a) + sgn(b)) / 2.0;
}

/// Takes the divergence of `flux(face, index of the lower cell)` along one axis from dqdt.
template <class Flux>
void take_divergence(const Metrics& metrics, int axis, Field& dqdt, Flux&& flux) {
  const flow::Box& box = dqdt.box();
  const auto a = static_cast<std::size_t>(axis);
  if (!box.computed(axis)) return;
  Field through(box);
  const Triple from{axis == 0 ? 0 : 1, axis == 1 ? 0 : 1, axis == 2 ? 0 : 1};
  for (std::int32_t k = from[2]; k <= box.n[2]; ++k) {
    for (std::int32_t j = from[1]; j <= box.n[1]; ++j) {
      for (std::int32_t i = from[0]; i <= box.n[0]; ++i) {
        through(i, j, k) = flux(box.at(i, j, k), Triple{i, j, k});
      }
    }
  }
  for (std::int32_t k = 1; k <= box.n[2]; ++k) {
    for (std::int32_t j = 1; j <= box.n[1]; ++j) {
      for (std::int32_t i = 1; i <= box.n[0]; ++i) {
        const std::size_t c = box.at(i, j, k);
        dqdt[c] -= (through[c] - through[c - box.stride(axis)]) *
                   AxisMetric::at(metrics[a].inv_width, Triple{i, j, k}[a]);
      }
    }
  }
}

/// What the mass m carries through the face f, as the scheme is written down.
inline double face_flux(const Field& q, std::size_t f, std::size_t s, double m, double acrk) {
  const double kappa = std::fmin(std::fmax(acrk, -1.0), 1.0);
  const double c1 = (1.0 + kappa) / 4.0;
  const double c2 = (1.0 - kappa) / 4.0;
  const double b = (3.0 - kappa) / std::fmax(1e-20, 1.0 - kappa);
  double left = q[f];
  double right = q[f + s];
  if (std::fabs(acrk) < 1.01) {
    const double d0 = q[f] - q[f - s];
    const double d1 = q[f + s] - q[f];
    const double d2 = q[f + 2 * s] - q[f + s];
    left = q[f] + (c1 * mm(d1, b * d0) + c2 * mm(d0, b * d1));
    right = q[f + s] - (c1 * mm(d1, b * d2) + c2 * mm(d2, b * d1));
  }
  return std::fmax(0.0, m) * left + std::fmin(0.0, m) * right;
}

/// The sweep of flw_cladv0 for one variable.
inline void advect(const Metrics& metrics, const flow::Rim& rim, const std::array<Field, 3>& ru,
                   const Field& q, double acrk, Field& dqdt) {
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    take_divergence(metrics, axis, dqdt, [&](std::size_t f, const Triple&) {
      return face_flux(q, f, q.box().stride(axis), rim.inner[a][f] * ru[a][f], acrk);
    });
  }
}

/// Transport of a scalar between inner faces: each face gives a cell what its flux has beside the
/// cell's own value.
inline void transport(const Metrics& metrics, const flow::Rim& rim, const flow::State& state,
                      const flow::Transported& one, Field& dqdt) {
  const Field& q = *one.advected.q;
  const auto& by = one.diffusivity;
  const bool held = by.capacity != nullptr;
  const Field capacity = held ? *by.capacity : Field(q.box(), 1.0);
  for (int axis = 0; axis < 3; ++axis) {
    if (!q.box().computed(axis)) continue;
    const auto a = static_cast<std::size_t>(axis);
    const AxisMetric& m = metrics[a];
    const std::size_t s = q.box().stride(axis);
    Field mass(q.box()), carried(q.box()), heat(q.box());
    const auto coefficient = [&](std::size_t c) {
      return (by.part * (*by.molecular)[c] + by.turbulent * state.mut[c]) * capacity[c];
    };
    Field unused(q.box());
    take_divergence(metrics, axis, unused, [&](std::size_t f, const Triple& index) {
      mass[f] = rim.inner[a][f] * state.ru[a][f];
      carried[f] = face_flux(q, f, s, mass[f], one.acrk);
      if (by.molecular == nullptr) return 0.0;
      const double mean =
          rim.inner[a][f] * (AxisMetric::at(m.lower, index[a]) * coefficient(f) +
                             AxisMetric::at(m.upper, index[a]) * coefficient(f + s));
      (held ? heat : carried)[f] -=
          mean * ((q[f + s] - q[f]) * AxisMetric::at(m.inv_gap, index[a]));
      return 0.0;
    });
    flow::for_rows(q.box(), [&](std::size_t place, std::int32_t j, std::int32_t k) {
      for (std::int32_t i = 1; i <= q.box().n[0]; ++i) {
        const std::size_t c = place + static_cast<std::size_t>(i - 1);
        double sum = (carried[c] - carried[c - s]) - q[c] * (mass[c] - mass[c - s]);
        if (held) sum += (heat[c] - heat[c - s]) / capacity[c];
        dqdt[c] -= sum * AxisMetric::at(m.inv_width, Triple{i, j, k}[a]);
      }
    });
  }
}

/// The sweep of flw_cldifv for one component.
inline void diffuse(const Metrics& metrics, const flow::Rim& rim, const flow::State& state,
                    const flow::Velocities& velocities, int component, Field& dqdt) {
  const auto b = static_cast<std::size_t>(component);
  const flow::Box& box = dqdt.box();
  const Field& u = velocities.cell[b];
  for (int axis = 0; axis < 3; ++axis) {
    const auto a = static_cast<std::size_t>(axis);
    const std::size_t s = box.stride(axis);
    const std::size_t t = box.stride(component);
    const Field& face = velocities.face[a];
    const AxisMetric& m = metrics[a];
    take_divergence(metrics, axis, dqdt, [&](std::size_t f, const Triple& index) {
      const double wl = AxisMetric::at(m.lower, index[a]);
      const double wu = AxisMetric::at(m.upper, index[a]);
      const double viscosity = rim.inner[a][f] * (wl * (state.mu[f] + state.mut[f]) +
                                                  wu * (state.mu[f + s] + state.mut[f + s]));
      const double width = AxisMetric::at(m.inv_width, index[a]);
      const double next = AxisMetric::at(m.inv_width, index[a] + 1);
      const double transposed =
          axis == component
              ? wl * ((face[f] - face[f - s]) * width) + wu * ((face[f + s] - face[f]) * next)
              : (face[f + t] - face[f - t]) * AxisMetric::at(metrics[b].inv_span, index[b]);
      return -viscosity * ((u[f + s] - u[f]) * AxisMetric::at(m.inv_gap, index[a]) + transposed);
    });
  }
}

}  // namespace plain
