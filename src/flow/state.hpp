// The state of the flow: what a step advances, and the open fractions of cells and faces.
//
// Owned by the run; each operator's header tells which fields it reads and which it writes.
#pragma once

#include <array>
#include <vector>

#include "flow/box.hpp"
#include "flow/equal_rows.hpp"

namespace flow {

/// Below this fraction a face is closed, and a cell is filled.
inline constexpr double kClosedFace = 1e-20;

/// Open fractions; without obstacles all are 1 and every cell is fluid.
///
/// A mass flux density is that of the open part of its face: what passes a face is area * fraction
/// * flux. Every balance divides by the open volume, width * width * width * gmc.
struct Openings {
  Flags fluid;              ///< iobs: > 0: a cell of fluid
  Field gmc;                ///< volume; 1 in cells that are not fluid, so that it divides anywhere
  std::array<Field, 3> gm;  ///< faces x, y, z (gmx, gmy, gmz); below 1e-20 a face is closed
  EqualRows fluid_rows, gmc_rows;  ///< by which kernels read these; see note_equal_rows
  std::array<EqualRows, 3> gm_rows;

  Openings() = default;
  explicit Openings(const Box& box)
      : fluid(box, 1), gmc(box, 1.0), gm{Field(box, 1.0), Field(box, 1.0), Field(box, 1.0)} {}

  /// To be called when all fractions are final.
  void note_equal_rows() {
    fluid_rows = EqualRows(fluid);
    gmc_rows = EqualRows(gmc);
    for (std::size_t a = 0; a < 3; ++a) gm_rows[a] = EqualRows(gm[a]);
  }
  /// The rest of a row, for kernels.
  [[nodiscard]] const std::int32_t* fluid_from(std::size_t place) const {
    return fluid_rows.from(fluid, place);
  }
  [[nodiscard]] const double* gmc_from(std::size_t place) const {
    return gmc_rows.from(gmc, place);
  }
  [[nodiscard]] const double* gm_from(std::size_t axis, std::size_t place) const {
    return gm_rows[axis].from(gm[axis], place);
  }
};

struct State {
  std::array<Field, 2> r;   ///< density: now, and at the step before [kg/m3]
  Field p;                  ///< pressure above the thermodynamic one [Pa]
  Field t;                  ///< [K]
  std::vector<Field> ys;    ///< mass fractions
  std::array<Field, 3> ru;  ///< mass flux density on the faces of each axis [kg/m2 s]
  std::array<Field, 2> ak;  ///< k [m2/s2] and epsilon [m2/s3]; empty without k-epsilon
  Field mu;                 ///< molecular viscosity [Pa s]
  Field mut;                ///< eddy viscosity [Pa s]
  Field cp;                 ///< specific heat [J/kg K]; empty without temperature
  Field dif;        ///< diffusivity of the second species [kg/m s]; empty without it or temperature
  double pt = 0.0;  ///< thermodynamic pressure [Pa]
  double reference_mass = 0;  ///< that a closed domain keeps [kg]; 0: not known yet
  std::int32_t iter = 0;
  double time = 0.0;  ///< [s]
  double dt = 0.0;    ///< [s]
};

}  // namespace flow
