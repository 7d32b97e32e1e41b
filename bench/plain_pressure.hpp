// The pressure solver in the plain form in which one would write it down: five flat blocks over the
// box and a layer around it, sweeps by lists of hyperplanes, one loop a step. The yardstick of the
// fast form, in numbers and in time.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "flow/box.hpp"
#include "flow/linear/iccg_pre.hpp"
#include "flow/linear/solve_limits.hpp"

namespace plain {

/// Points of the box, numbered with i fastest, behind a margin that no index leaves.
struct Hyperplanes {
  std::int32_t nx = 0, ny = 0, nz = 0;
  std::ptrdiff_t sy = 0, sz = 0, sp = 0, margin = 0;
  std::vector<std::size_t> offset;    ///< of each plane in `index`, and the end
  std::vector<std::int32_t> index;    ///< fluid points by planes of one i + j + k
  std::vector<std::int32_t> outside;  ///< points of the box that are not in the system

  [[nodiscard]] std::ptrdiff_t at(std::int32_t i, std::int32_t j, std::int32_t k) const {
    return margin + i + sy * j + sz * k;
  }
  [[nodiscard]] std::size_t size() const {
    return static_cast<std::size_t>(2 * margin + sz * (nz + 2));
  }
};

inline Hyperplanes flw_list_hypln(const flow::Flags& fluid) {
  Hyperplanes h;
  std::tie(h.nx, h.ny, h.nz) = std::tie(fluid.box().n[0], fluid.box().n[1], fluid.box().n[2]);
  h.sy = h.nx + 2;
  h.sz = h.sy * (h.ny + 2);
  h.sp = std::max<std::ptrdiff_t>(1, (h.ny - 1) * h.sy);
  h.margin = h.sz;
  for (std::int32_t plane = 0; plane < h.nx + h.ny + h.nz - 2; ++plane) {
    h.offset.push_back(h.index.size());
    for (std::int32_t k = std::max(1, plane + 3 - h.nx - h.ny); k <= std::min(h.nz, plane + 1);
         ++k) {
      const std::int32_t rest = plane + 3 - k;
      for (std::int32_t j = std::max(1, rest - h.nx); j <= std::min(h.ny, rest - 1); ++j) {
        const std::int32_t i = rest - j;
        if (fluid(i, j, k) > 0) h.index.push_back(static_cast<std::int32_t>(h.at(i, j, k)));
      }
    }
  }
  h.offset.push_back(h.index.size());
  for (std::int32_t k = 0; k <= h.nz + 1; ++k) {
    for (std::int32_t j = 0; j <= h.ny + 1; ++j) {
      for (std::int32_t i = 0; i <= h.nx + 1; ++i) {
        const bool inside = i >= 1 && i <= h.nx && j >= 1 && j <= h.ny && k >= 1 && k <= h.nz;
        if (!inside || fluid(i, j, k) <= 0) {
          h.outside.push_back(static_cast<std::int32_t>(h.at(i, j, k)));
        }
      }
    }
  }
  return h;
}

using Blocks = std::array<std::vector<double>, 5>;

struct Iccg {
  Hyperplanes h;
  Blocks a;  ///< the diagonal, later the factor; couplings at -1, -sy, -sz, -sp
  std::vector<double> scale;
  double smallest = 1.0;  ///< pivot
};

/// Blocks of a matrix given as fields, scaled and factorised in place.
inline Iccg flw_iccg_pre(const flow::FiveBlocks& blocks, const flow::Flags& fluid, double g) {
  Iccg s;
  s.h = flw_list_hypln(fluid);
  const Hyperplanes& h = s.h;
  const std::array<std::ptrdiff_t, 5> step{0, 1, h.sy, h.sz, h.sp};
  for (auto& block : s.a) block.assign(h.size(), 0.0);
  s.scale.assign(h.size(), 0.0);
  for (std::int32_t k = 1; k <= h.nz; ++k) {
    for (std::int32_t j = 1; j <= h.ny; ++j) {
      for (std::int32_t i = 1; i <= h.nx; ++i) {
        if (fluid(i, j, k) <= 0) continue;
        const auto l = static_cast<std::size_t>(h.at(i, j, k));
        s.scale[l] = 1.0 / std::sqrt(blocks.diagonal(i, j, k));
        for (std::size_t n = 0; n < 3; ++n) s.a[n + 1][l] = blocks.lower[n](i, j, k);
        if (j == h.ny) s.a[4][l] = blocks.wrap(i, j, k);
      }
    }
  }
  for (const std::int32_t point : h.index) {
    for (std::size_t n = 1; n < 5; ++n) {
      s.a[n][static_cast<std::size_t>(point)] *= s.scale[static_cast<std::size_t>(point)] *
                                                 s.scale[static_cast<std::size_t>(point - step[n])];
    }
  }
  const double omega = std::clamp(g, 0.0, 1.0);
  const double sigma = std::max(1.0, g);
  std::vector<double>& d = s.a[0];
  for (const std::int32_t point : h.index) {
    double w = sigma;
    for (std::size_t n = 1; n < 5; ++n) {
      const std::ptrdiff_t m = point - step[n];
      double dropped = 0.0;
      for (std::size_t o = 1; o < 5; ++o) {
        if (o != n) dropped += s.a[o][static_cast<std::size_t>(m + step[o])];
      }
      const double an = s.a[n][static_cast<std::size_t>(point)];
      w -= d[static_cast<std::size_t>(m)] * an * (an + omega * dropped);
    }
    s.smallest = std::min(s.smallest, w);
    d[static_cast<std::size_t>(point)] = 1.0 / w;
  }
  return s;
}

/// The vectors of a solution.
struct IccgVectors {
  std::vector<double> x, r, z, p, q;
  explicit IccgVectors(std::size_t n) : x(n), r(n), z(n), p(n), q(n) {}
};

inline void clear(const Hyperplanes& h, std::vector<double>& v) {
  for (const std::int32_t point : h.outside) v[static_cast<std::size_t>(point)] = 0.0;
}

/// q = A v.
inline void product(const Iccg& s, std::vector<double>& v, std::vector<double>& q) {
  const Hyperplanes& h = s.h;
  clear(h, v);
  const double* a1 = s.a[1].data();
  const double* a2 = s.a[2].data();
  const double* a3 = s.a[3].data();
  const double* a4 = s.a[4].data();
  const double* f = v.data();
  double* to = q.data();
  const std::ptrdiff_t end = h.at(h.nx, h.ny, h.nz);
  for (std::ptrdiff_t l = h.at(1, 1, 1); l <= end; ++l) {
    to[l] = f[l] + a1[l] * f[l - 1] + a2[l] * f[l - h.sy] + a3[l] * f[l - h.sz] +
            a4[l] * f[l - h.sp] + a1[l + 1] * f[l + 1] + a2[l + h.sy] * f[l + h.sy] +
            a3[l + h.sz] * f[l + h.sz] + a4[l + h.sp] * f[l + h.sp];
  }
  clear(h, q);
}

/// z from r by both sweeps; the sum of r z.
inline double precondition(const Iccg& s, const std::vector<double>& rv, std::vector<double>& zv) {
  const Hyperplanes& h = s.h;
  clear(h, zv);
  const double* d = s.a[0].data();
  const double* a1 = s.a[1].data();
  const double* a2 = s.a[2].data();
  const double* a3 = s.a[3].data();
  const double* a4 = s.a[4].data();
  const double* r = rv.data();
  double* z = zv.data();
  for (std::size_t plane = 0; plane + 1 < h.offset.size(); ++plane) {
    for (std::size_t n = h.offset[plane]; n < h.offset[plane + 1]; ++n) {
      const std::ptrdiff_t l = h.index[n];
      z[l] = (r[l] - a1[l] * z[l - 1] - a2[l] * z[l - h.sy] - a3[l] * z[l - h.sz] -
              a4[l] * z[l - h.sp]) *
             d[l];
    }
  }
  double rho = 0.0;
  for (std::size_t plane = h.offset.size() - 1; plane-- > 0;) {
    for (std::size_t n = h.offset[plane]; n < h.offset[plane + 1]; ++n) {
      const std::ptrdiff_t l = h.index[n];
      z[l] -= d[l] * (a1[l + 1] * z[l + 1] + a2[l + h.sy] * z[l + h.sy] +
                      a3[l + h.sz] * z[l + h.sz] + a4[l + h.sp] * z[l + h.sp]);
      rho += r[l] * z[l];
    }
  }
  return rho;
}

inline double norm_of(const flow::SolveLimits& limits, const std::vector<double>& r) {
  double collected = 0.0;
  for (const double v : r) {
    collected = limits.largest() ? std::max(collected, std::abs(v)) : collected + v * v;
  }
  return limits.norm(collected);
}

inline double dot(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0.0;
  for (std::size_t l = 0; l < a.size(); ++l) sum += a[l] * b[l];
  return sum;
}

/// y += factor * x.
inline void add(double factor, const std::vector<double>& x, std::vector<double>& y) {
  for (std::size_t l = 0; l < x.size(); ++l) y[l] += factor * x[l];
}

/// Solves for `b` from a start of 0; the solution stands in v.x.
inline flow::SolveResult flw_iccg(const Iccg& s, const flow::SolveLimits& limits,
                                  const std::vector<double>& b, IccgVectors& v) {
  flow::SolveResult result;
  std::fill(v.x.begin(), v.x.end(), 0.0);
  v.r = b;
  const double first = norm_of(limits, v.r) < flow::kNoResidual ? 0.0 : norm_of(limits, v.r);
  result.norm = first;
  if (limits.epsabs >= first) return result;
  const double tolerance = std::max(limits.epsabs, limits.epsrel * first);
  bool broken = false;
  result.converged = false;
  for (;;) {
    product(s, v.x, v.q);
    v.r = b;
    add(-1.0, v.q, v.r);
    clear(s.h, v.r);
    result.norm = norm_of(limits, v.r);
    result.converged = result.norm <= tolerance;
    if (result.converged) break;
    double rho = precondition(s, v.r, v.z);
    if (rho == 0.0 || broken) {
      broken = false;
      add(1.0, v.z, v.x);
      if (++result.iterations > limits.itmax) break;
      continue;
    }
    v.p = v.z;
    for (;;) {
      product(s, v.p, v.q);
      const double pq = dot(v.p, v.q);
      broken = pq == 0.0;
      if (broken) break;
      const double alpha = rho / pq;
      add(alpha, v.p, v.x);
      add(-alpha, v.q, v.r);
      result.norm = norm_of(limits, v.r);
      result.converged = result.norm <= tolerance;
      if (result.converged) break;
      const double next = precondition(s, v.r, v.z);
      broken = next == 0.0;
      if (broken) break;
      const double beta = next / rho;
      rho = next;
      for (std::size_t l = 0; l < v.p.size(); ++l) v.p[l] = v.z[l] + beta * v.p[l];
      if (++result.iterations > limits.itmax) break;
    }
    if (!broken) break;
  }
  result.ratio = result.norm / first;
  return result;
}

}  // namespace plain
