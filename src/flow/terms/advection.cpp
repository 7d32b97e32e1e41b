#include "flow/terms/advection.hpp"

#include <algorithm>
#include <cmath>

#include "flow/row_kernel.hpp"

namespace flow {

namespace {

FLOW_INLINE double smaller(double a, double b) { return a < b ? a : b; }

/// c1 minmod(ahead, b behind) + c2 minmod(behind, b ahead): minmod is the smaller of two slopes of
/// one sign, 0 of slopes that differ in it. Both share the sign.
FLOW_INLINE double slope_of(double c1, double c2, double b, double ahead, double behind) {
  const double size_ahead = std::fabs(ahead);
  const double size_behind = std::fabs(behind);
  const double sign = 0.5 * (std::copysign(1.0, ahead) + std::copysign(1.0, behind));
  return sign *
         (c1 * smaller(size_ahead, b * size_behind) + c2 * smaller(size_behind, b * size_ahead));
}

/// Mass flux through inner faces; 0 on the rim.
FLOW_CLONES void mass_row(std::size_t count, const double* inner, const double* ru,
                          double* __restrict m) {
  for (std::size_t i = 0; i < count; ++i) m[i] = inner[i] * ru[i];
}

/// `q` points to the cells on the lower side of the faces, `s` is the distance to the upper ones.
FLOW_CLONES void muscl_row(std::size_t count, double c1, double c2, double b, const double* m,
                           const double* q, std::size_t s, double* __restrict out) {
  const double* const before = q - s;
  const double* const next = q + s;
  const double* const after = next + s;
  for (std::size_t i = 0; i < count; ++i) {
    // Seen from the upwind cell: what is behind it, and which way the slope goes.
    const bool forward = 0.0 < m[i];
    const double d0 = q[i] - before[i];
    const double d1 = next[i] - q[i];
    const double d2 = after[i] - next[i];
    const double slope = slope_of(c1, c2, b, d1, forward ? d0 : d2);
    out[i] = m[i] * (forward ? q[i] + slope : next[i] - slope);
  }
}

FLOW_CLONES void upwind_row(std::size_t count, const double* m, const double* q, std::size_t s,
                            double* __restrict out) {
  const double* const next = q + s;
  for (std::size_t i = 0; i < count; ++i) out[i] = m[i] * (0.0 < m[i] ? q[i] : next[i]);
}

}  // namespace

Muscl::Muscl(double acrk) : upwind(!(std::fabs(acrk) < 1.01)) {
  const double kappa = std::clamp(acrk, -1.0, 1.0);
  c1 = 0.25 * (1.0 + kappa);
  c2 = 0.25 * (1.0 - kappa);
  b = (3.0 - kappa) / std::max(1e-20, 1.0 - kappa);
}

double limited_slope(const Muscl& muscl, double ahead, double behind) {
  return muscl.upwind ? 0.0 : slope_of(muscl.c1, muscl.c2, muscl.b, ahead, behind);
}

void inner_mass_row(const Rim& rim, const std::array<Field, 3>& ru, const FaceRow& row,
                    double* mass) {
  const auto a = static_cast<std::size_t>(row.axis);
  mass_row(row.count, rim.inner_from(a, row.place), ru[a].data() + row.place, mass);
}

void advected_row(const Muscl& muscl, const Field& q, const FaceRow& row, const double* mass,
                  double* flux) {
  const double* const values = q.data() + row.place;
  const std::size_t stride = q.box().stride(row.axis);
  if (muscl.upwind) {
    upwind_row(row.count, mass, values, stride, flux);
  } else {
    muscl_row(row.count, muscl.c1, muscl.c2, muscl.b, mass, values, stride, flux);
  }
}

void flw_cladv0(frame::Log& log, frame::Crew& crew, const Metrics& metrics, const Rim& rim,
                const std::array<Field, 3>& ru, Variable variable,
                std::span<const Advected> advected, double acrk, SweepRows& rows, RowStart begin) {
  const Box& box = ru[0].box();
  const Muscl muscl(acrk);
  std::array<Field*, kSweepWidth> dqdt{};
  for (std::size_t v = 0; v < advected.size(); ++v) dqdt[v] = advected[v].dqdt;
  subtract_divergence(crew, box, metrics, std::span(dqdt).first(advected.size()), rows, begin,
                      [&](const FaceRow& row, const FluxRows& out, double* mass) {
                        inner_mass_row(rim, ru, row, mass);
                        for (std::size_t v = 0; v < advected.size(); ++v) {
                          advected_row(muscl, *advected[v].q, row, mass, out[v]);
                        }
                      });
  std::array<Carried, kSweepWidth> carried{};
  for (std::size_t v = 0; v < advected.size(); ++v) carried[v] = {advected[v], variable, muscl};
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    advect_rim(log, crew, metrics, rim, ru, std::span(carried).first(advected.size()), axis);
  }
}

}  // namespace flow
