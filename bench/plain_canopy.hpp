// The canopy's two kernels in their plain form: arrays over the whole fine grid, every cell
// visited, what a cell does worked out where it is visited. The fast forms must give the same bits.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "trees/beam_sweep.hpp"
#include "trees/canopy.hpp"
#include "trees/difrad.hpp"

namespace plain {

using tsrf_module_jumoku::Data;
using tsrf_module_jumoku::SolarPair;

/// The fine grid as a box of cells, with the block cells on it.
struct Box {
  explicit Box(const Data& data) : n(data.grid.cells), block(cells(), -1) {
    for (std::size_t c = 0; c < data.cells.count(); ++c) {
      const auto& at = data.cells.at[c];
      block[place(at[0], at[1], at[2])] = static_cast<std::int32_t>(c);
    }
  }
  [[nodiscard]] std::size_t cells() const {
    return static_cast<std::size_t>(n[0]) * static_cast<std::size_t>(n[1]) *
           static_cast<std::size_t>(n[2]);
  }
  [[nodiscard]] std::size_t place(std::int32_t i, std::int32_t j, std::int32_t k) const {
    return (static_cast<std::size_t>(k) * static_cast<std::size_t>(n[1]) +
            static_cast<std::size_t>(j)) *
               static_cast<std::size_t>(n[0]) +
           static_cast<std::size_t>(i);
  }
  /// The block cell at a place that may lie outside, or -1.
  [[nodiscard]] std::int32_t at(const std::array<std::int32_t, 3>& p) const {
    for (std::size_t a = 0; a < 3; ++a) {
      if (p[a] < 0 || p[a] >= n[a]) return -1;
    }
    return block[place(p[0], p[1], p[2])];
  }
  std::array<std::int32_t, 3> n;
  std::vector<std::int32_t> block;
};

/// The beam: what leaves each cell by the three axes, for all cells of the grid.
struct BeamSweep {
  explicit BeamSweep(const Data& data)
      : box(data), free(box.cells()), canopy(box.cells()), lost(data.leaves.count()) {}

  void run(const Data& data, const tsrf_module_phydat::SunVector& sun, double Jdn,
           const jmk_module_radiat::Optics& optics) {
    const std::array<double, 3> s{sun.x, sun.y, sun.z};
    std::array<std::int32_t, 3> at{}, step{};
    for (std::size_t a = 0; a < 3; ++a) step[a] = -s[a] >= 0.0 ? 1 : -1;
    const auto cell = [&](std::int32_t n, std::size_t a) {
      return step[a] > 0 ? n : box.n[a] - 1 - n;
    };
    for (std::int32_t kn = 0; kn < box.n[2]; ++kn) {
      for (std::int32_t jn = 0; jn < box.n[1]; ++jn) {
        for (std::int32_t in = 0; in < box.n[0]; ++in) {
          at = {cell(in, 0), cell(jn, 1), cell(kn, 2)};
          visit(data, s, step, at, Jdn, optics);
        }
      }
    }
  }

  void visit(const Data& data, const std::array<double, 3>& s,
             const std::array<std::int32_t, 3>& step, const std::array<std::int32_t, 3>& at,
             double Jdn, const jmk_module_radiat::Optics& optics) {
    std::array<double, 3> slope{}, l{}, width{};
    for (std::size_t a = 0; a < 3; ++a) {
      width[a] = data.grid.size(at, a);
      slope[a] = std::fabs(s[a]) / width[a];
    }
    const double t = 1.0 / std::max({slope[0], slope[1], slope[2]});
    for (std::size_t a = 0; a < 3; ++a) l[a] = slope[a] * t;

    const std::int32_t c = box.at(at);
    std::array<SolarPair, 3> f{}, g{};
    for (std::size_t a = 0; a < 3; ++a) {
      auto before = at;
      before[a] -= step[a];
      const bool inside = before[a] >= 0 && before[a] < box.n[a];
      const std::size_t from = inside ? box.place(before[0], before[1], before[2]) : 0;
      f[a] = inside ? free[from][a] : SolarPair{1.0, 1.0};
      if (c < 0) continue;
      const std::size_t face = 2 * a + (step[a] > 0 ? 0 : 1);
      const double fsun =
          data.beam.fsun[tsrf_module_jumoku::slot(static_cast<std::size_t>(c), face)];
      for (std::size_t b = 0; b < 2; ++b) {
        g[a][b] = box.at(before) >= 0 ? canopy[from][a][b] : f[a][b] * fsun;
      }
    }
    const std::int32_t leaf = c < 0 ? -1 : data.cells.leaf[static_cast<std::size_t>(c)];
    for (std::size_t b = 0; b < 2 && leaf >= 0; ++b) {
      const auto n = static_cast<std::size_t>(leaf);
      const double passed = std::exp(-optics[b].extinction(data.leaves.lad[n]) * t);
      double entering = 0.0;
      for (std::size_t a = 0; a < 3; ++a) {
        entering += width[(a + 1) % 3] * width[(a + 2) % 3] * std::fabs(s[a]) * g[a][b];
        f[a][b] *= passed;
        g[a][b] *= passed;
      }
      lost[n][b] = (1.0 - passed) * entering * optics[b].direct * Jdn;
    }
    const std::size_t here = box.place(at[0], at[1], at[2]);
    for (std::size_t a = 0; a < 3; ++a) {
      const std::size_t p = (a + 1) % 3, q = (a + 2) % 3;
      const double from_p = l[p] * (1.0 - 0.5 * l[q]), from_q = l[q] * (1.0 - 0.5 * l[p]);
      for (std::size_t b = 0; b < 2; ++b) {
        free[here][a][b] = f[a][b] + from_p * (f[p][b] - f[a][b]) + from_q * (f[q][b] - f[a][b]);
        canopy[here][a][b] = g[a][b] + from_p * (g[p][b] - g[a][b]) + from_q * (g[q][b] - g[a][b]);
      }
    }
  }

  Box box;
  std::vector<std::array<SolarPair, 3>> free, canopy;
  std::vector<SolarPair> lost;
};

/// Scattered light of one band: six entering fluxes for all cells of the grid.
struct Relaxation {
  explicit Relaxation(const Data& data)
      : box(data), entering(box.cells()), leaving(data.outer.size()) {}

  /// Sweeps band `b` until nothing changes; its fluxes give source and outside.
  std::int32_t run(const Data& data, const jmk_module_radiat::Data& radiat, std::size_t b,
                   const jmk::Tolerance& tolerance) {
    const auto& band = data.bands[b];
    for (std::size_t o = 0; o < data.outer.size(); ++o) {
      const auto& outer = data.outer[o];
      const auto& p = data.cells.at[static_cast<std::size_t>(outer.cell)];
      entering[box.place(p[0], p[1], p[2])][static_cast<std::size_t>(outer.face)] = band.outside[o];
    }
    for (std::int32_t sweep = 1;; ++sweep) {
      bool changed = false;
      const std::size_t n = box.cells();
      for (std::size_t at = 0; at < n; ++at) changed |= visit(data, radiat, b, tolerance, at);
      for (std::size_t at = n; at-- > 0;) changed |= visit(data, radiat, b, tolerance, at);
      if (!changed) return sweep;
    }
  }

  bool visit(const Data& data, const jmk_module_radiat::Data& radiat, std::size_t b,
             const jmk::Tolerance& tolerance, std::size_t here) {
    if (box.block[here] < 0) return false;
    const auto c = static_cast<std::size_t>(box.block[here]);
    const auto& at = data.cells.at[c];
    const std::int32_t leaf = data.cells.leaf[c];
    const double lad = leaf < 0 ? 0.0 : data.leaves.lad[static_cast<std::size_t>(leaf)];
    const jmk::CellWeights w =
        jmk::cell_weights(radiat.settings.MDLSCT, radiat.optics[b], lad,
                          {data.grid.size(at, 0), data.grid.size(at, 1), data.grid.size(at, 2)});
    std::array<double, 3> stopped{};
    for (std::size_t a = 0; a < 3; ++a) {
      stopped[a] = w.stop[a] * (entering[here][2 * a] + entering[here][2 * a + 1]);
    }
    bool changed = false;
    for (std::size_t face = 0; face < 6; ++face) {
      const std::size_t a = face / 2;
      const double own = w.aside[a] * (stopped[(a + 1) % 3] + stopped[(a + 2) % 3]) +
                         w.emit[a] * data.bands[b].source[c];
      const double out =
          w.ahead[a] * entering[here][face ^ 1U] + w.back[a] * entering[here][face] + own;
      auto behind = at;
      behind[a] += face % 2 == 0 ? -1 : 1;
      double& place = box.at(behind) >= 0
                          ? entering[box.place(behind[0], behind[1], behind[2])][face ^ 1U]
                          : leaving[static_cast<std::size_t>(
                                        data.cells.next[tsrf_module_jumoku::slot(c, face)]) -
                                    data.cells.count() * 6];
      const double change = std::fabs(out - place);
      changed |= !(change <= tolerance.absolute + tolerance.relative * std::fabs(out));
      place = out;
    }
    return changed;
  }

  Box box;
  std::vector<std::array<double, 6>> entering;
  std::vector<double> leaving;
};

}  // namespace plain
