// Bi-CGSTAB in the plain form in which one would write it down: seven flat blocks over the box and
// a layer around it, sweeps by lists of hyperplanes, one loop a step. The yardstick of the fast
// form, in numbers and in time.
#pragma once

#include "flow/linear/bcgstb_pre.hpp"
#include "plain_pressure.hpp"

namespace plain {

struct Bcgstb {
  Hyperplanes h;
  bool periodic = false;
  std::array<std::vector<double>, 3> lower, upper;  ///< couplings at -1, -sy, -sz and +1, +sy, +sz
  std::vector<double> d, scale;

  [[nodiscard]] std::array<std::ptrdiff_t, 3> steps() const { return {1, h.sy, h.sz}; }
};

/// Rows given as fields, scaled and factorised.
inline Bcgstb flw_bcgstb_pre(const flow::SevenPoint& rows, const flow::Flags& fluid,
                             bool periodic) {
  Bcgstb s;
  s.h = flw_list_hypln(fluid);
  s.periodic = periodic;
  for (std::size_t n = 0; n < 3; ++n) {
    s.lower[n].assign(s.h.size(), 0.0);
    s.upper[n].assign(s.h.size(), 0.0);
  }
  s.d.assign(s.h.size(), 0.0);
  s.scale.assign(s.h.size(), 0.0);
  for (std::int32_t k = 1; k <= s.h.nz; ++k) {
    for (std::int32_t j = 1; j <= s.h.ny; ++j) {
      for (std::int32_t i = 1; i <= s.h.nx; ++i) {
        if (fluid(i, j, k) <= 0) continue;
        const auto l = static_cast<std::size_t>(s.h.at(i, j, k));
        s.scale[l] = 1.0 / rows.diagonal(i, j, k);
        for (std::size_t n = 0; n < 3; ++n) {
          s.lower[n][l] = rows.lower[n](i, j, k) * s.scale[l];
          s.upper[n][l] = rows.upper[n](i, j, k) * s.scale[l];
        }
      }
    }
  }
  for (const std::int32_t point : s.h.index) {
    const auto l = static_cast<std::size_t>(point);
    double w = 1.0;
    for (std::size_t n = 0; n < 3; ++n) {
      const auto m = static_cast<std::size_t>(point - s.steps()[n]);
      w -= s.d[m] * s.lower[n][l] * s.upper[n][m];
    }
    s.d[l] = 1.0 / w;
  }
  return s;
}

/// What an exchange puts beyond the ends of y.
inline void exchange(const Bcgstb& s, std::vector<double>& v) {
  clear(s.h, v);
  if (!s.periodic || s.h.ny < 2) return;
  for (std::int32_t k = 1; k <= s.h.nz; ++k) {
    for (std::int32_t i = 1; i <= s.h.nx; ++i) {
      const auto at = [&](std::int32_t j) { return static_cast<std::size_t>(s.h.at(i, j, k)); };
      v[at(0)] = v[at(s.h.ny)];
      v[at(s.h.ny + 1)] = v[at(1)];
    }
  }
}

/// q = A v.
inline void product(const Bcgstb& s, std::vector<double>& v, std::vector<double>& q) {
  exchange(s, v);
  const double* f = v.data();
  const std::ptrdiff_t end = s.h.at(s.h.nx, s.h.ny, s.h.nz);
  for (std::ptrdiff_t l = s.h.at(1, 1, 1); l <= end; ++l) {
    const auto u = static_cast<std::size_t>(l);
    q[u] = f[l] + s.lower[0][u] * f[l - 1] + s.lower[1][u] * f[l - s.h.sy] +
           s.lower[2][u] * f[l - s.h.sz] + s.upper[0][u] * f[l + 1] +
           s.upper[1][u] * f[l + s.h.sy] + s.upper[2][u] * f[l + s.h.sz];
  }
  clear(s.h, q);
  clear(s.h, v);
}

/// z from r by both sweeps.
inline void precondition(const Bcgstb& s, const std::vector<double>& r, std::vector<double>& zv) {
  const Hyperplanes& h = s.h;
  clear(h, zv);
  double* z = zv.data();
  for (const std::int32_t l : h.index) {
    const auto u = static_cast<std::size_t>(l);
    z[l] = (r[u] - s.lower[0][u] * z[l - 1] - s.lower[1][u] * z[l - h.sy] -
            s.lower[2][u] * z[l - h.sz]) *
           s.d[u];
  }
  for (std::size_t n = h.index.size(); n-- > 0;) {
    const std::int32_t l = h.index[n];
    const auto u = static_cast<std::size_t>(l);
    z[l] -= s.d[u] *
            (s.upper[0][u] * z[l + 1] + s.upper[1][u] * z[l + h.sy] + s.upper[2][u] * z[l + h.sz]);
  }
}

/// Solves for `b` from a start of 0 into `x`, without the ways out of a breakdown.
inline flow::SolveResult flw_bcgstb(const Bcgstb& s, const flow::SolveLimits& limits,
                                    const std::vector<double>& b, std::vector<double>& x) {
  flow::SolveResult result;
  const std::size_t n = b.size();
  std::vector<double> r = b;
  std::vector<double> p(n), v(n), y(n), z(n), t(n);
  std::fill(x.begin(), x.end(), 0.0);
  const double first = norm_of(limits, r);
  const double tolerance = std::max(limits.epsabs, limits.epsrel * first);
  double rho = 1.0;
  double alpha = 1.0;
  double omega = 1.0;
  for (;;) {
    const double next = dot(b, r);
    const double beta = next / rho * (alpha / omega);
    rho = next;
    for (std::size_t l = 0; l < n; ++l) p[l] = r[l] + beta * (p[l] - omega * v[l]);
    precondition(s, p, y);
    product(s, y, v);
    alpha = rho / dot(b, v);
    add(-alpha, v, r);
    precondition(s, r, z);
    product(s, z, t);
    const double tt = dot(t, t);
    omega = tt == 0.0 ? 0.0 : dot(t, r) / tt;
    add(alpha, y, x);
    add(omega, z, x);
    add(-omega, t, r);
    result.norm = norm_of(limits, r);
    result.converged = result.norm <= tolerance;
    if (result.converged || ++result.iterations > limits.itmax) break;
  }
  result.ratio = result.norm / first;
  return result;
}

}  // namespace plain
