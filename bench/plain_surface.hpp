// The surface balance and the columns in the plain form in which one would write them down: all
// patches of a district together, one loop a formula. The yardstick of the fast forms, in bits and
// in time.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "inputs/moist_air.hpp"
#include "inputs/srfprp.hpp"
#include "surface/surface_state.hpp"

namespace plain {

/// Saturation humidity of all surfaces and its slope.
inline void satq(std::span<const double> P, std::span<const double> T, std::span<double> q,
                 std::span<double> dqdT) {
  for (std::size_t i = 0; i < q.size(); ++i) {
    const moist_air::Saturation s = moist_air::satvap(T[i]);
    q[i] = moist_air::humidity_of(s.es / P[i]);
    dqdT[i] = moist_air::kVapourRatio / P[i] * s.desdT;
  }
}

/// One round of Newton's method for patch p; what its mark becomes.
inline double newton(const tsrf_module_srfprp::Data& srfprp, std::size_t p, double skyvf, double Rl,
                     double Rs, double qs, double dqs, tsrf_module_data::Data& s) {
  using namespace moist_air;
  const auto row = static_cast<std::size_t>(s.isrf[p]);
  const double shortwave = (1.0 - srfprp.alb[row]) * Rs;
  const double longwave = srfprp.ems[row] * Rl;
  const double emission = skyvf * kStefanBoltzmann * srfprp.ems[row];
  const double wetness = srfprp.beta[row] * kLatentHeat * s.hm[p];
  const double G = 2.0 * s.cond(p, 0) / s.dzl(p, 0);
  double& T = s.tlyr(p, 0);
  const double latent = wetness * (s.airst(p, 2) - qs);
  const double f = shortwave + longwave - emission * ((T * T) * (T * T)) +
                   s.hc[p] * (s.airst(p, 1) - T) + G * (s.tlyr(p, 1) - T) + latent;
  const double dT = f / (4.0 * emission * ((T * T) * T) + s.hc[p] + G + wetness * dqs);
  T += dT;
  const double terms[] = {shortwave,
                          longwave,
                          -(emission * ((T * T) * (T * T))),
                          s.hc[p] * (s.airst(p, 1) - T),
                          latent,
                          -(G * (s.tlyr(p, 1) - T))};
  for (std::int32_t k = 0; k < 6; ++k) s.qsurf(p, k) = terms[k];
  return std::abs(dT) - 1e-10 * T;
}

/// The surface balance of all patches; false when a patch is open after 100 rounds.
inline bool tsrf_therm1d(const tsrf_module_srfprp::Data& srfprp, std::span<const double> skyvf,
                         std::span<const double> Rl, std::span<const double> Rs,
                         tsrf_module_data::Data& s) {
  const std::size_t n = s.lcal.size();
  std::vector<double> mark(n), qs(n), dqs(n);
  for (std::size_t p = 0; p < n; ++p) mark[p] = s.lcal[p] < 1 ? -1.0 : 1.0;
  for (int round = 0; round < 100; ++round) {
    satq(s.airst.row(0), s.tlyr.row(0), qs, dqs);
    double most = -1.0;
    for (std::size_t p = 0; p < n; ++p) {
      if (!(mark[p] > 0.0)) continue;
      mark[p] = newton(srfprp, p, skyvf[p], Rl[p], Rs[p], qs[p], dqs[p], s);
      most = std::max(most, mark[p]);
    }
    if (most < 0.0) return true;
  }
  return false;
}

using Table = frame::PatchTable<double>;

/// Solves the tridiagonal rows of the patches whose mark is `wanted`, in the right side `b`.
inline void solve_tridiag(std::int32_t mzg, int wanted, std::span<const int> mark,
                          const Table& lower, const Table& diagonal, Table& upper, Table& b) {
  const std::size_t n = mark.size();
  for (std::int32_t k = 0; k < mzg; ++k) {
    for (std::size_t p = 0; p < n; ++p) {
      if (mark[p] != wanted) continue;
      const double pivot = k == 0 ? diagonal(p, k) : diagonal(p, k) - lower(p, k) * upper(p, k - 1);
      b(p, k) = (k == 0 ? b(p, k) : b(p, k) - lower(p, k) * b(p, k - 1)) / pivot;
      upper(p, k) = upper(p, k) / pivot;
    }
  }
  for (std::int32_t k = mzg - 2; k >= 0; --k) {
    for (std::size_t p = 0; p < n; ++p) {
      if (mark[p] == wanted) b(p, k) -= upper(p, k) * b(p, k + 1);
    }
  }
}

/// Explicit (1) and implicit (2) columns; 0 has none.
inline std::vector<int> marks(double dt, const tsrf_module_data::Data& s) {
  const std::size_t n = s.lcal.size();
  std::vector<double> stiffness(n, 0.0);
  for (std::int32_t k = 1; k <= s.mzg; ++k) {
    for (std::size_t p = 0; p < n; ++p) {
      if (s.lcal[p] < 1) continue;
      stiffness[p] = std::max(
          stiffness[p], (s.gcond(p, k) + s.gcond(p, k - 1)) / (s.dzl(p, k - 1) * s.capa(p, k - 1)));
    }
  }
  std::vector<int> mark(n, 0);
  for (std::size_t p = 0; p < n; ++p) {
    if (s.lcal[p] >= 1) mark[p] = stiffness[p] * dt > 0.99 ? 2 : 1;
  }
  return mark;
}

/// One step of all columns.
inline void solid1d(double dt, const Table& qlayer, tsrf_module_data::Data& s) {
  const std::size_t n = s.lcal.size();
  const std::int32_t mzg = s.mzg;
  const std::vector<int> mark = marks(dt, s);
  Table F(s.mpatch, mzg + 1), lower(s.mpatch, mzg), diagonal(s.mpatch, mzg), upper(s.mpatch, mzg),
      b(s.mpatch, mzg);
  for (std::int32_t k = 0; k < mzg; ++k) {
    for (std::size_t p = 0; p < n; ++p) F(p, k) = (s.tlyr(p, k + 1) - s.tlyr(p, k)) * s.gcond(p, k);
  }
  for (std::int32_t k = 1; k <= mzg; ++k) {
    for (std::size_t p = 0; p < n; ++p) {
      const double gain = (F(p, k) - F(p, k - 1)) / s.dzl(p, k - 1) + qlayer(p, k - 1);
      if (mark[p] == 1) s.tlyr(p, k) += dt / s.capa(p, k - 1) * gain;
      if (mark[p] != 2) continue;
      const double low = -s.gcond(p, k - 1) / s.dzl(p, k - 1);
      const double up = -s.gcond(p, k) / s.dzl(p, k - 1);
      diagonal(p, k - 1) = s.capa(p, k - 1) / dt - low - up;
      lower(p, k - 1) = k == 1 ? 0.0 : low;
      upper(p, k - 1) = k == s.nlyr[p] ? 0.0 : up;
      b(p, k - 1) = gain;
    }
  }
  solve_tridiag(mzg, 2, mark, lower, diagonal, upper, b);
  for (std::int32_t k = 1; k <= mzg; ++k) {
    for (std::size_t p = 0; p < n; ++p) {
      if (mark[p] == 2) s.tlyr(p, k) += b(p, k - 1);
    }
  }
}

}  // namespace plain
