// The arrays of the canopy that steps work on.
#include <cmath>

#include "trees/canopy.hpp"

namespace tsrf_module_jumoku {

namespace {

using jmk_module_radiat::BandOptics;

/// The directional terms of a cell, and what follows from them (see trees/difrad.hpp).
struct Terms {
  Terms(const FineGrid& grid, const std::array<std::int32_t, 3>& place, double k) {
    double sum = 0.0;
    for (std::size_t a = 0; a < 3; ++a) {
      const double stop = -std::expm1(-k * grid.size(place, a));
      c[a] = grid.face_area(place, a) * stop;
      weights.through[a] = 1.0 - stop;
      sum += c[a];
    }
    if (!(sum > 0.0)) return;
    for (std::size_t a = 0; a < 3; ++a) weights.share[a] = c[a] / (2.0 * sum);
    emitting = sum / k;
  }
  std::array<double, 3> c{};
  CellWeights weights;
  double emitting = 0.0;  ///< A d u, summed over the axes [m3]
};

}  // namespace

void allocdata(std::size_t mpatch, const jmk_module_radiat::Optics& optics, Data& data) {
  const std::size_t cells = data.cells.count();
  const std::size_t slots = cells * kFaces + data.outer.size();
  for (std::size_t b = 0; b < data.bands.size(); ++b) {
    data.bands[b].weights.resize(cells);
    data.bands[b].scatter = optics[b].scatter();
    data.bands[b].source.assign(cells, 0.0);
    data.bands[b].entering.assign(slots, 0.0);
    data.bands[b].outside.assign(data.outer.size(), 0.0);
  }
  Beam& beam = data.beam;
  const auto nx = static_cast<std::size_t>(data.grid.cells[0]);
  const auto ny = static_cast<std::size_t>(data.grid.cells[1]);
  beam.x.resize((nx + 1) * ny);
  beam.y.resize(nx * (ny + 1));
  beam.z.resize(nx * ny);
  beam.reached.resize(ny);
  beam.fsun.assign(cells * kFaces, 1.0);
  beam.canopy.assign(cells * kFaces, SolarPair{});
  beam.lost.assign(data.leaves.count(), SolarPair{});
  beam.tree_Jdir.assign(data.trees.size(), 0.0);
  beam.left.assign(mpatch, 1.0);

  constexpr double kFirstLeafTemperature = 300.0;
  Leaves& leaves = data.leaves;
  leaves.T.assign(leaves.count(), kFirstLeafTemperature);
  for (std::vector<double>* values :
       {&leaves.lad, &leaves.p, &leaves.Ta, &leaves.q, &leaves.U, &leaves.PAR, &leaves.Sabs,
        &leaves.Labs, &leaves.h, &leaves.e, &leaves.qs, &leaves.dqsdT, &leaves.E, &leaves.dEdT,
        &leaves.emitting}) {
    values->assign(leaves.count(), 0.0);
  }
}

void set_lad(std::span<const double> lad, const jmk_module_radiat::Optics& optics, Data& data) {
  Leaves& leaves = data.leaves;
  for (std::size_t n = 0; n < leaves.count(); ++n) {
    leaves.lad[n] = lad[n];
    const auto c = static_cast<std::size_t>(leaves.cell[n]);
    for (std::size_t b = 0; b < data.bands.size(); ++b) {
      const Terms terms(data.grid, data.cells.at[c], optics[b].extinction(lad[n]));
      data.bands[b].weights[c] = terms.weights;
      if (b == jmk_module_radiat::kLongWave) leaves.emitting[n] = terms.emitting;
    }
  }
}

void storetqair(double p, double T, double q, double U, Data& data) {
  Leaves& leaves = data.leaves;
  for (std::size_t n = 0; n < leaves.count(); ++n) {
    leaves.p[n] = p;
    leaves.Ta[n] = T;
    leaves.q[n] = q;
    leaves.U[n] = U;
  }
}

}  // namespace tsrf_module_jumoku
