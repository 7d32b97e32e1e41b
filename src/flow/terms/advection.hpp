// flw_cladv0: advection of cell values by the mass fluxes, for all equations.
//
// Second order in space: the upwind state of a face is built from the values of three cells by the
// kappa scheme with a limiter (van Leer 1979, Anderson, Thomas and van Leer 1986); kappa 1/3 is the
// least diffusive where the field is smooth. Beyond |acrk| = 1.01 first order upwind. The field's
// differences are plain, without regard to the widths of stretched cells. Called by the momentum,
// scalar and turbulence steps.
#pragma once

#include <span>

#include "flow/rim.hpp"
#include "flow/terms/face_sweep.hpp"
#include "frame/log.hpp"

namespace flow {

/// Which equation a variable belongs to: the condition of its values at the rim.
enum class Variable : std::int32_t { momentum = 2, temperature = 3, species = 4, turbulence = 5 };

/// True where the condition of a group gives the value that air carries in.
bool gives_value(const Group& group, Variable variable);

/// Factors on the faces of the rim, in the order of the rim's lists.
using RimFactors = std::array<std::vector<double>, 3>;

struct Advected {
  const Field* q = nullptr;           ///< cell values, halos filled
  Field* dqdt = nullptr;              ///< tendency that advection is added to
  std::size_t item = 0;               ///< component, species, or 0: k, 1: epsilon
  const RimFactors* given = nullptr;  ///< on the values that a condition gives; none: 1
};

/// The constants of the kappa scheme.
struct Muscl {
  Muscl() : Muscl(1.0 / 3.0) {}
  explicit Muscl(double acrk);
  bool upwind;  ///< first order
  double c1, c2, b;
};

/// Change of the value at the centre on the way to one of its faces: `ahead` is the difference
/// across that face, `behind` that across the opposite one, both along the way.
double limited_slope(const Muscl& muscl, double ahead, double behind);

/// Mass flux through the inner faces of a row; 0 on the rim.
void inner_mass_row(const Rim& rim, const std::array<Field, 3>& ru, const FaceRow& row,
                    double* mass);
/// What a mass flux carries through a row of faces.
void advected_row(const Muscl& muscl, const Field& q, const FaceRow& row, const double* mass,
                  double* flux);

/// At most kSweepWidth variables go through together. Reads the mass fluxes ru and the values q;
/// adds to dqdt the mass that comes in times its value, per volume. Inflow through the rim carries
/// the given value, outflow that of the cell. Errors: "### program error -1- (flw_cladv0)" (-2-,
/// -3- in y and z) for a class unknown.
void flw_cladv0(frame::Log& log, frame::Crew& crew, const Metrics& metrics, const Rim& rim,
                const std::array<Field, 3>& ru, Variable variable,
                std::span<const Advected> advected, double acrk, SweepRows& rows,
                RowStart begin = kGoOn);

/// A variable on its way, with its scheme.
struct Carried {
  Advected of;
  Variable variable = Variable::momentum;
  Muscl muscl;
};

/// What the rim changes: the sweep carries nothing through its faces, and takes the values beyond
/// them as they stand; `axis` is the normal. Momentum is carried in conservative form; all others
/// gain what comes in less the cell's own value times its mass. Errors: those of flw_cladv0.
void advect_rim(frame::Log& log, frame::Crew& crew, const Metrics& metrics, const Rim& rim,
                const std::array<Field, 3>& ru, std::span<const Carried> carried, int axis);

}  // namespace flow
