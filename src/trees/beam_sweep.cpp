#include "trees/beam_sweep.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "trees/beam_probes.hpp"

namespace jmk {

namespace {

using jmk_module_radiat::kSolarBands;
using jmk_module_radiat::Optics;
using tsrf_module_jumoku::Beam;
using tsrf_module_jumoku::Data;
using tsrf_module_jumoku::opposite;
using tsrf_module_jumoku::slot;
using tsrf_module_jumoku::SolarPair;
using tsrf_module_phydat::SunVector;

constexpr SolarPair kFree{1.0, 1.0};

/// Fractions of the beam by axis.
using Fractions = std::array<SolarPair, 3>;

/// How a cell of given widths spreads a beam of given speeds along the axes.
struct Spread {
  Spread() = default;
  Spread(const std::array<double, 3>& width, const std::array<double, 3>& speed) {
    std::array<double, 3> l{};
    for (std::size_t a = 0; a < 3; ++a) l[a] = speed[a] / width[a];
    path = 1.0 / std::max({l[0], l[1], l[2]});
    for (double& length : l) length *= path;
    for (std::size_t a = 0; a < 3; ++a) {
      const std::size_t b = (a + 1) % 3;
      const std::size_t c = (a + 2) % 3;
      weight[a] = width[b] * width[c] * speed[a];
      over[a] = {l[b] * (1.0 - 0.5 * l[c]), l[c] * (1.0 - 0.5 * l[b])};
    }
  }
  /// Fractions on the leaving faces from those on the entering ones.
  [[nodiscard]] Fractions pass(const Fractions& in) const {
    Fractions out;
    for (std::size_t n = 0; n < kSolarBands; ++n) {
      const double x = in[0][n];
      const double y = in[1][n];
      const double z = in[2][n];
      out[0][n] = x + over[0][0] * (y - x) + over[0][1] * (z - x);
      out[1][n] = y + over[1][0] * (z - y) + over[1][1] * (x - y);
      out[2][n] = z + over[2][0] * (x - z) + over[2][1] * (y - z);
    }
    return out;
  }

  std::array<double, 3> weight{};               ///< by axis: the free beam through a face [m2]
  double path = 0.0;                            ///< longest way of a ray through the cell [m]
  std::array<std::array<double, 2>, 3> over{};  ///< by leaving axis: from the next, the one after
};

/// An axis as the beam sees it.
struct Way {
  Way() = default;
  Way(double s, std::size_t axis, std::int32_t cell_count)
      : step(-s >= 0.0 ? 1 : -1), count(cell_count), entry_face(2 * axis + (step > 0 ? 0 : 1)) {}
  [[nodiscard]] std::int32_t cell(std::int32_t n) const { return step > 0 ? n : count - 1 - n; }
  /// The grid's faces by which the beam enters and leaves cell i.
  [[nodiscard]] std::int32_t entry(std::int32_t i) const { return step > 0 ? i : i + 1; }
  [[nodiscard]] std::int32_t exit(std::int32_t i) const { return step > 0 ? i + 1 : i; }

  std::int32_t step = 1;
  std::int32_t count = 0;
  std::size_t entry_face = 0;  ///< 0 to 5
};

class Sweep {
 public:
  Sweep(const SunVector& sun, double Jdn, const Optics& optics, Data& data)
      : data_(data), beam_(data.beam), optics_(optics), Jdn_(Jdn) {
    const std::array<double, 3> s{sun.x, sun.y, sun.z};
    for (std::size_t a = 0; a < 3; ++a) {
      way_[a] = Way(s[a], a, data.grid.cells[a]);
      speed_[a] = std::fabs(s[a]);
    }
    nx_ = static_cast<std::size_t>(data.grid.cells[0]);
  }

  void run() {
    std::fill(beam_.x.begin(), beam_.x.end(), kFree);
    std::fill(beam_.y.begin(), beam_.y.end(), kFree);
    std::fill(beam_.z.begin(), beam_.z.end(), kFree);
    std::fill(beam_.reached.begin(), beam_.reached.end(), std::uint8_t{0});
    for (std::int32_t n = 0; n < way_[2].count; ++n) {
      const std::int32_t k = way_[2].cell(n);
      layer(k);
      read_probes(optics_, k, data_);
    }
  }

 private:
  /// Rows that neither leaves nor anything dimmed by them reaches are free and stay as they are.
  void layer(std::int32_t k) {
    bool from_row_before = false;
    for (std::int32_t n = 0; n < way_[1].count; ++n) {
      const std::int32_t j = way_[1].cell(n);
      const std::size_t r = data_.grid.row(j, k);
      std::uint8_t& reached = beam_.reached[static_cast<std::size_t>(j)];
      const bool has_leaves = data_.cells.row_first[r] < data_.cells.row_first[r + 1];
      if (!has_leaves && reached == 0 && !from_row_before) continue;
      row(j, k, r);
      reached = 1;
      from_row_before = true;
    }
  }

  void row(std::int32_t j, std::int32_t k, std::size_t r) {
    const auto js = static_cast<std::size_t>(j);
    SolarPair* x = beam_.x.data() + js * (nx_ + 1);
    SolarPair* y_in = beam_.y.data() + static_cast<std::size_t>(way_[1].entry(j)) * nx_;
    SolarPair* y_out = beam_.y.data() + static_cast<std::size_t>(way_[1].exit(j)) * nx_;
    SolarPair* z = beam_.z.data() + js * nx_;
    const std::vector<double>& width_x = data_.grid.width[0];
    std::array<double, 3> width{-1.0, data_.grid.width[1][js],
                                data_.grid.width[2][static_cast<std::size_t>(k)]};
    // The block cells of the row, met in the beam's sense.
    std::int32_t c = way_[0].step > 0 ? data_.cells.row_first[r] : data_.cells.row_first[r + 1] - 1;
    std::int32_t left = data_.cells.row_first[r + 1] - data_.cells.row_first[r];
    Spread spread;
    SolarPair along_x = kFree;
    for (std::int32_t n = 0; n < way_[0].count; ++n) {
      const std::int32_t at = way_[0].cell(n);
      const auto i = static_cast<std::size_t>(at);
      if (width_x[i] != width[0]) {
        width[0] = width_x[i];
        spread = Spread(width, speed_);
      }
      Fractions out;
      if (left > 0 && data_.cells.at[static_cast<std::size_t>(c)][0] == at) {
        out = block_cell(static_cast<std::size_t>(c), spread, {along_x, y_in[i], z[i]});
        c += way_[0].step;
        --left;
      } else {
        out = spread.pass({along_x, y_in[i], z[i]});
      }
      along_x = out[0];
      x[way_[0].exit(at)] = out[0];
      y_out[i] = out[1];
      z[i] = out[2];
    }
  }

  /// Both beams through one cell of a block. `free` is the one that only leaves dim, on the
  /// entering faces; what of it is on the leaving ones is returned.
  Fractions block_cell(std::size_t c, const Spread& spread, Fractions free) {
    Fractions in;
    for (std::size_t a = 0; a < 3; ++a) {
      const std::size_t place = slot(c, way_[a].entry_face);
      if (data_.cells.is_outer(c, way_[a].entry_face)) {
        for (std::size_t b = 0; b < kSolarBands; ++b) {
          beam_.canopy[place][b] = free[a][b] * beam_.fsun[place];
        }
      }
      in[a] = beam_.canopy[place];
    }
    if (data_.cells.leaf[c] >= 0) leaves(c, spread, in, free);
    const Fractions out = spread.pass(in);
    for (std::size_t a = 0; a < 3; ++a) {
      const std::size_t exit = opposite(way_[a].entry_face);
      beam_.canopy[slot(c, exit)] = out[a];
      if (!data_.cells.is_outer(c, exit)) {
        beam_.canopy[static_cast<std::size_t>(data_.cells.next[slot(c, exit)])] = out[a];
      }
    }
    return spread.pass(free);
  }

  /// Leaves take their part of both beams and keep that of the beam in the canopy.
  void leaves(std::size_t c, const Spread& spread, Fractions& in, Fractions& free) {
    const auto n = static_cast<std::size_t>(data_.cells.leaf[c]);
    const SolarPair& passed = passed_by(data_.leaves.lad[n], spread.path);
    for (std::size_t b = 0; b < kSolarBands; ++b) {
      double entering = 0.0;
      for (std::size_t a = 0; a < 3; ++a) {
        entering += spread.weight[a] * in[a][b];
        in[a][b] *= passed[b];
        free[a][b] *= passed[b];
      }
      beam_.lost[n][b] = (1.0 - passed[b]) * entering * optics_[b].direct * Jdn_;
    }
  }

  /// What leaves of a density let pass along a path. Neighbours in a crown are mostly alike.
  const SolarPair& passed_by(double lad, double path) {
    if (lad != last_lad_ || path != last_path_) {
      last_lad_ = lad;
      last_path_ = path;
      for (std::size_t b = 0; b < kSolarBands; ++b) {
        last_passed_[b] = std::exp(-optics_[b].extinction(lad) * path);
      }
    }
    return last_passed_;
  }

  Data& data_;
  Beam& beam_;
  const Optics& optics_;
  double Jdn_;
  std::array<Way, 3> way_;
  std::array<double, 3> speed_{};
  double last_lad_ = -1.0;
  double last_path_ = -1.0;
  SolarPair last_passed_{};
  std::size_t nx_ = 0;
};

}  // namespace

void sweep_beam(const SunVector& sun, double Jdn, const Optics& optics, Data& data) {
  Sweep(sun, Jdn, optics, data).run();
}

}  // namespace jmk
