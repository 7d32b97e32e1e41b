// The arrays of the canopy that steps work on.
#include <algorithm>
#include <map>

#include "trees/canopy.hpp"

namespace tsrf_module_jumoku {

namespace {

/// Numbers the kinds of cells: those of one density and one size.
class Kinds {
 public:
  using Key = std::array<double, 4>;  ///< density, widths
  std::int32_t number(const Key& key) {
    if (key != last_) {
      last_ = key;
      last_number_ =
          numbers_.emplace(key, static_cast<std::int32_t>(numbers_.size())).first->second;
    }
    return last_number_;
  }
  [[nodiscard]] const std::map<Key, std::int32_t>& numbers() const { return numbers_; }

 private:
  std::map<Key, std::int32_t> numbers_;
  Key last_{-1.0};
  std::int32_t last_number_ = 0;
};

}  // namespace

void allocdata(std::size_t mpatch, Data& data) {
  const std::size_t cells = data.cells.count();
  const std::size_t slots = cells * kFaces + data.outer.size();
  data.kind.assign(cells, 0);
  for (BandFluxes& band : data.bands) {
    band.source.assign(cells, 0.0);
    band.entering.assign(slots, 0.0);
    band.outside.assign(data.outer.size(), 0.0);
  }
  Beam& beam = data.beam;
  const auto nx = static_cast<std::size_t>(data.grid.cells[0]);
  const auto ny = static_cast<std::size_t>(data.grid.cells[1]);
  const auto nz = static_cast<std::size_t>(data.grid.cells[2]);
  beam.x.resize(ny * nz);
  beam.y.resize(nz * nx);
  beam.z.resize(nx);
  beam.reached.resize(ny * nz);
  beam.cells.resize(cells);
  beam.fsun.assign(cells * kFaces, 1.0);
  beam.outer.assign(data.outer.size(), SolarPair{});
  beam.lost.assign(data.leaves.count(), SolarPair{});
  beam.tree_Jdir.assign(data.trees.size(), 0.0);
  beam.left.assign(mpatch, 1.0);

  constexpr double kFirstLeafTemperature = 300.0;
  Leaves& leaves = data.leaves;
  leaves.T.assign(leaves.count(), kFirstLeafTemperature);
  for (std::vector<double>* values :
       {&leaves.lad, &leaves.p, &leaves.Ta, &leaves.q, &leaves.U, &leaves.PAR, &leaves.Sabs,
        &leaves.Labs, &leaves.h, &leaves.e, &leaves.qs, &leaves.dqsdT, &leaves.E, &leaves.dEdT,
        &leaves.escaping}) {
    values->assign(leaves.count(), 0.0);
  }
}

void set_lad(std::span<const double> lad, const jmk_module_radiat::Data& radiat, Data& data) {
  if (data.fault.kind != PatchFault::none) return;  // there are no leaves then
  Leaves& leaves = data.leaves;
  std::ranges::copy(lad, leaves.lad.begin());
  Kinds kinds;
  for (std::size_t c = 0; c < data.cells.count(); ++c) {
    const auto& at = data.cells.at[c];
    const std::int32_t leaf = data.cells.leaf[c];
    data.kind[c] =
        kinds.number({leaf < 0 ? 0.0 : lad[static_cast<std::size_t>(leaf)], data.grid.size(at, 0),
                      data.grid.size(at, 1), data.grid.size(at, 2)});
    bool borders_air = false;
    for (std::size_t face = 0; face < kFaces; ++face) borders_air |= data.cells.is_outer(c, face);
    data.beam.cells[c] = {at[0], leaf, data.kind[c], borders_air ? 1 : 0};
  }
  data.kinds.resize(kinds.numbers().size());
  data.beam.passed.resize(kinds.numbers().size());
  for (const auto& [key, number] : kinds.numbers()) {
    data.kinds[static_cast<std::size_t>(number)] = {key[0], {key[1], key[2], key[3]}};
  }
  for (std::size_t b = 0; b < data.bands.size(); ++b) {
    data.bands[b].weights.resize(kinds.numbers().size());
    for (const auto& [key, number] : kinds.numbers()) {
      data.bands[b].weights[static_cast<std::size_t>(number)] = jmk::cell_weights(
          radiat.settings.MDLSCT, radiat.optics[b], key[0], {key[1], key[2], key[3]});
    }
  }
  const BandFluxes& longwave = data.bands[jmk_module_radiat::kLongWave];
  for (std::size_t n = 0; n < leaves.count(); ++n) {
    leaves.escaping[n] =
        1.0 - data.weights(longwave, static_cast<std::size_t>(leaves.cell[n])).emit_kept;
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

void list_arrays(const Data& data, frame::ArrayList& list) {
  list.add("block cells", data.grid.width[0], data.grid.width[1], data.grid.width[2], data.cells.at,
           data.cells.row_first, data.cells.leaf, data.cells.next, data.kind);
  list.add("canopy faces", data.outer, data.trees, data.groups, data.group_trees);
  for (const BandFluxes& band : data.bands) {
    list.add("canopy light", band.weights, band.source, band.entering, band.outside);
  }
  const Beam& beam = data.beam;
  list.add("canopy beam", beam.x, beam.y, beam.z, beam.reached, beam.cells, beam.passed, beam.fsun,
           beam.probes, beam.faces, beam.face_first, beam.seen, beam.outer, beam.lost,
           beam.tree_Jdir, beam.left);
  const Leaves& leaves = data.leaves;
  list.add("leaves", leaves.cell, leaves.lad, leaves.volume, leaves.T, leaves.p, leaves.Ta,
           leaves.q, leaves.U, leaves.PAR, leaves.Sabs, leaves.Labs, leaves.h, leaves.e, leaves.qs,
           leaves.dqsdT, leaves.E, leaves.dEdT, leaves.escaping);
}

}  // namespace tsrf_module_jumoku
