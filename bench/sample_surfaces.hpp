// A district for tests and benchmarks of the kernels over patches: materials, columns and air by
// draws from a seeded generator, the same on every machine.
#pragma once

#include <cstdint>
#include <vector>

#include "inputs/srfprp.hpp"
#include "surface/surface_state.hpp"

namespace sample {

/// Draws in 0..1 (Knuth and Lewis 1994, "an even quicker generator").
class Draws {
 public:
  explicit Draws(std::uint32_t seed) : state_(seed) {}
  double operator()() {
    return static_cast<double>(state_ = state_ * 1664525U + 1013904223U) / 4294967296.0;
  }
  double operator()(double low, double high) { return low + (high - low) * (*this)(); }
  bool chance(double share) { return (*this)() < share; }

 private:
  std::uint32_t state_;
};

/// One column: cells of equal thickness of one material.
struct Column {
  std::int32_t cells;
  double dz, conductivity, heat_capacity, hin;
};

/// Puts `column` behind patch p and sets its conductances.
inline void set_column(tsrf_module_data::Data& state, std::size_t p, const Column& column) {
  const std::int32_t n = column.cells;
  const double half = column.conductivity / column.dz;
  state.lcal[p] = 1;
  state.nlyr[p] = n;
  for (std::int32_t k = 0; k < n; ++k) {
    state.dzl(p, k) = column.dz;
    state.cond(p, k) = column.conductivity;
    state.capa(p, k) = column.heat_capacity;
    if (k > 0) state.gcond(p, k) = 2.0 * half * half / (half + half);
  }
  state.gcond(p, 0) = 2.0 * column.conductivity / column.dz;
  const double last = state.gcond(p, 0);
  state.gcond(p, n) = column.hin > 0.0 ? column.hin * last / (last + column.hin) : 0.0;
}

/// Arrays for `patches` patches, nothing computed, 300 K throughout.
inline tsrf_module_data::Data empty_state(std::int32_t patches, std::int32_t mzg) {
  const auto n = static_cast<std::size_t>(patches);
  tsrf_module_data::Data state;
  state.mpatch = patches;
  state.mzg = mzg;
  for (auto* row : {&state.lcal, &state.isrf, &state.nlyr}) row->assign(n, 0);
  for (auto* row : {&state.hc, &state.hm, &state.hin}) row->assign(n, 0.0);
  state.airst = {patches, 4};
  state.qsurf = {patches, 6};
  state.dzl = {patches, mzg, 1e10};
  state.capa = {patches, mzg, 1.0};
  state.cond = {patches, mzg};
  state.extc = {patches, mzg, 1e20};
  state.tlyr = {patches, mzg + 1, 300.0};
  state.tprev = {patches, mzg + 1};
  state.gcond = {patches, mzg + 1};
  return state;
}

/// A district of walls, roofs and ground in mixed order; every 16th patch is not computed.
struct District {
  District(std::int32_t patches, std::uint32_t seed, double wet_share = 0.2) {
    Draws draw(seed);
    state = empty_state(patches, 12);
    constexpr std::int32_t kMaterials = 24;
    std::vector<Column> columns;
    for (std::int32_t m = 0; m < kMaterials; ++m) {
      const bool wall = draw.chance(0.6);
      columns.push_back({wall ? 1 + static_cast<std::int32_t>(draw(0.0, 4.0)) : 11, draw(0.01, 0.1),
                         draw(0.05, 2.0), draw(1e5, 2.5e6), wall ? 8.0 : 0.0});
      srfprp.alb.push_back(draw(0.05, 0.6));
      srfprp.ems.push_back(draw(0.5, 1.0));
      srfprp.beta.push_back(draw.chance(wet_share) ? draw(0.05, 1.0) : 0.0);
    }
    for (std::size_t p = 0; p < state.lcal.size(); ++p) {
      const auto m = static_cast<std::size_t>(draw(0.0, kMaterials));
      if (p % 16 != 15) set_column(state, p, columns[m]);
      state.isrf[p] = static_cast<std::int32_t>(m);
      state.hc[p] = 11.6;
      state.hm[p] = 11.6 / 1005.0;
      state.airst(p, 0) = 1e5;
      state.airst(p, 1) = draw(270.0, 310.0);
      state.airst(p, 2) = draw(0.001, 0.02);
      for (std::int32_t k = 0; k <= state.mzg; ++k) state.tlyr(p, k) = draw(270.0, 320.0);
      skyvf.push_back(1.0);
      Rl.push_back(draw(300.0, 500.0));
      Rs.push_back(draw.chance(0.5) ? draw(0.0, 900.0) : 0.0);
    }
  }
  tsrf_module_data::Data state;
  tsrf_module_srfprp::Data srfprp;
  std::vector<double> skyvf, Rl, Rs;
};

}  // namespace sample
