// Transport of cell scalars: diffusion (flw_cldif0) and advection (flw_cladv0) in one sweep.
//
// Temperature, species, k and epsilon all go this way. Advection has the advective form
//
//   -div(ru q) + q div(ru)
//
// whose two parts are formed from the same fluxes face by face: a uniform q stays uniform to
// round-off whatever the fluxes keep of the mass, and no divergence is stored. Each flux is formed
// once and used at once. Called by the steps of temperature and species and of turbulence.
#pragma once

#include <span>

#include "flow/terms/advection.hpp"
#include "flow/terms/domain.hpp"

namespace flow {

/// Coefficient of diffusion: capacity * (part * molecular + turbulent * mut).
struct Diffusivity {
  const Field* molecular = nullptr;  ///< [kg/m s]; null: the variable does not diffuse
  double part = 1.0;
  double turbulent = 0.0;
  /// Heat held by a kg and K [J/kg K]: what diffuses is heat, and a cell's tendency takes it over
  /// its own capacity. Null: 1 everywhere.
  const Field* capacity = nullptr;
};

struct Transported {
  Advected advected;
  Diffusivity diffusivity;
  Variable variable = Variable::temperature;
  double acrk = 1.0 / 3.0;  ///< scheme of advection
};

/// Variables that go together; one with a capacity counts twice.
inline constexpr std::size_t kTransportWidth = kSweepWidth - 1;

/// What the tendencies hold before: part of the sum, or nothing.
enum class Tendency : std::int32_t { adds, begins };

/// Advection and diffusion of the fluid cells, per volume of the whole cell and by the open
/// fractions of the faces, into the tendencies. Reads ru, mut and the fields of `all` with their
/// halos; writes their dqdt. Through the faces of the rim passes what the air carries and nothing
/// else: conditions add their own diffusion. Second order in space. Errors: those of flw_cladv0.
void transport(frame::Log& log, const Domain& domain, const State& state,
               std::span<const Transported> all, Tendency before, SweepRows& rows);

/// flw_cldif0: takes what diffuses through a row of faces from `flux`; with a capacity it is heat
/// and goes to `flux` alone.
void flw_cldif0(const Metrics& metrics, const Rim& rim, const Field& mut, const Diffusivity& by,
                const Field& q, const FaceRow& row, double* flux);

}  // namespace flow
