// Boundary conditions: what the boundary file tells, group by group, and the faces that they hold.
//
// flw_read_bndcnd reads and checks the groups; list_faces spreads them over the faces of the grid,
// once, when the obstacles are known; from then on the operators walk through short lists of faces
// and look up the values of a face's group. The halos of symmetric and periodic ends are filled by
// halo.hpp and need no group.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "flow/box.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

/// An end of the domain without a group of its own.
enum class End : std::int32_t { open = 0, periodic = 1, symmetric = 2 };

enum class PressureAt : std::int32_t { held = 1, free = 2, column = 3 };
enum class VelocityAt : std::int32_t { given = 1, free = 2, log_wall = 3, slip = 4, no_slip = 5 };
enum class TemperatureAt : std::int32_t { given = 1, adiabatic = 2, log_wall = 3, flux = 4 };
enum class SpeciesAt : std::int32_t { given = 1, closed = 2 };
enum class TurbulenceAt : std::int32_t { given = 1, free = 2, wall = 3, k_free = 4 };

/// Values and kinds of one group; `t` is a heat flux into the domain [W/m2] with
/// TemperatureAt::flux.
struct Group {
  Triple first{}, last{};  ///< nodes: is, js, ks and ie, je, ke
  int axis = -1;           ///< normal of a sheet; -1: a block
  std::int32_t idir = 0;   ///< side of the fluid; 0: both
  PressureAt ip = PressureAt::free;
  VelocityAt iv = VelocityAt::no_slip;
  TemperatureAt it = TemperatureAt::adiabatic;
  SpeciesAt iy = SpeciesAt::closed;
  TurbulenceAt ik = TurbulenceAt::free;
  Vector velocity{};       ///< [m/s]
  double t = 0.0;          ///< [K]
  double pb = 0.0;         ///< [Pa]
  std::vector<double> ys;  ///< sum to 1
  std::vector<double> xs;  ///< mole fractions
  double gas = 0.0;        ///< 8.314 sum(ys/wm) [J/kg K]
  double k = 0.0, eps = 0.0;

  /// Pressure is given at the face: it couples to the diagonal of the pressure equation.
  [[nodiscard]] bool holds_pressure() const { return ip != PressureAt::free; }
  /// The velocity, so the mass flux, is given at the face.
  [[nodiscard]] bool gives_velocity() const {
    return iv == VelocityAt::given || iv == VelocityAt::log_wall || iv == VelocityAt::no_slip;
  }
};

/// Neither flow through it nor shear; adiabatic, no flux of species.
Group slip_wall();

struct Boundary {
  std::array<std::array<End, 2>, 3> ends{};  ///< [axis][lower, upper]
  std::vector<Group> groups;                 ///< without the skipped ones

  [[nodiscard]] bool periodic_y() const { return ends[1][0] == End::periodic; }
};

/// A face with a condition. Two entries stand for an inner sheet with fluid on both sides.
struct BoundaryFace {
  std::size_t face = 0;   ///< place of the face in a face field of its axis
  std::size_t cell = 0;   ///< place of the fluid cell
  Triple index{};         ///< i, j, k of the fluid cell
  std::int32_t side = 0;  ///< -1: the face is the fluid cell's lower one, +1: its upper one
  std::int32_t group = 0;
};

/// The faces with a condition, by the axis of their normal.
struct BoundaryFaces {
  std::array<std::vector<BoundaryFace>, 3> of;
};

/// Reads the boundary file. `cells` is the grid, `species` the number of mass fractions.
/// Errors: "### data error (flw_read_bndcnd)" with the rule that is broken.
Boundary flw_read_bndcnd(frame::Log& log, frame::TextInput& file, const Triple& cells,
                         const Species& species, const Ambient& ambient);

/// The mixture of a group: its mass fractions scaled to the sum 1, its mole fractions and its gas
/// constant.
void settle_mixture(Group& group, const Species& species);

/// Spreads the groups over the faces: of two groups on a face the later holds; a block holds every
/// face between a fluid and another cell, and both sides of a closed face between two fluid cells,
/// within it or on its surface; of the ends of the domain only a periodic one, where the cells of
/// the other end stand beyond. Faces of an axis with one cell take no part. Reads the fluid flags
/// and the fractions of the faces.
BoundaryFaces list_faces(const Boundary& boundary, const Openings& openings);

/// A face that its fraction closes lets nothing through: where its group would, a slip wall takes
/// the group's place. Appends that group to the boundary where it is needed.
void close_faces(const Openings& openings, Boundary& boundary, BoundaryFaces& faces);

/// Each face of a fluid cell towards a cell that is not, an open end or a closed face (a plate
/// among them) has a condition, also across a periodic end, and no other face of a symmetric or
/// periodic end has one. The first offence, in cell order (k outer; faces -x +x -y +y -z +z), ends
/// the run.
void flw_prep_ckbnd1(frame::Log& log, const Boundary& boundary, const Openings& openings,
                     const BoundaryFaces& faces);

/// A plate is a wall: neither a given pressure nor a flow through it has sense there.
void flw_prep_ckbnd2(frame::Log& log, const Boundary& boundary, const Flags& fluid,
                     const BoundaryFaces& faces);

/// True when the pressure is given at some face: else the thermodynamic pressure follows the mass.
[[nodiscard]] bool holds_pressure(const Boundary& boundary, const BoundaryFaces& faces);

}  // namespace flow
