// rad_admin: the radiation of one step, in its fixed order.
//
// Sky and sun on each patch, the beam through the canopy, the exchange of both bands among the
// groups, the canopy's answer; or, where an exchange is off, sky, sun and the tree that stands over
// a patch. Called by the step (tsrf_admin) with the sun, the sky's fluxes and the patches; leaves
// the incident fluxes Rl and Rs of every patch and the radiosities for the next step.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "frame/accounts.hpp"
#include "frame/array_list.hpp"
#include "frame/function_ref.hpp"
#include "frame/log.hpp"
#include "inputs/patch.hpp"
#include "inputs/srfprp.hpp"
#include "radiation/phydat.hpp"
#include "radiation/raddat.hpp"
#include "radiation/radref.hpp"
#include "surface/surface_state.hpp"
#include "trees/htrans.hpp"
#include "trees/radiat.hpp"

namespace rad_admin {

using tsrf_module_phydat::SkyFluxes;
using tsrf_module_phydat::SunVector;

/// What the radiation of a step works on, a value a patch.
struct Fields {
  std::span<const double> fsun;  ///< sunlit fraction
  std::span<double> skyvf;       ///< in: sky view factor; 1 behind the long-wave exchange, when Rl
                                 ///< holds the sky as well
  std::span<double> Jdir;        ///< out: direct flux on the patch plane [W/m2]
  std::span<double> Rl;          ///< out: incident long-wave [W/m2]
  std::span<double> Rs;          ///< out: incident short-wave [W/m2]
};

/// The trees' part of the step: the leaves of the trees over single patches, and the two calls into
/// the canopy of cells, which know the canopy's data and the fields of this step.
struct Trees {
  const jmk_module_htrans::Data& htrans;
  const jmk_module_radiat::Data& radiat;
  frame::FunctionRef<void()> sundir;    ///< takes out of Jdir what the leaves take of the beam
  frame::FunctionRef<void()> trcanopy;  ///< takes Rl, Rs of the tree patches, sets their JRl, JRs
};

/// Arrays of one step, sized once.
struct Work {
  std::vector<double> Sl, Ss;           ///< per patch: sources of the exchange [W/m2]
  std::vector<double> tRl, tRs, tJdir;  ///< per patch: fluxes without an exchange [W/m2]
  std::vector<double> sun_absorbed;     ///< per row of the surface properties: 1 - albedo
  tsrf_module_radref::Work radref;
};

/// Takes the work arrays, when patches, surface properties and groups are known.
void allocdata(frame::Log& log, std::int32_t mpatch, const tsrf_module_srfprp::Data& srfprp,
               const tsrf_module_raddat::Data& raddat, Work& work);

/// The radiation of one step. Reads the surface temperatures in `state` and keeps the leaf
/// temperatures of single trees there.
void rad_admin(frame::Log& log, frame::Crew& crew, frame::Accounts& accounts, const SunVector& sun,
               const SkyFluxes& sky, const tsrf_module_patch::Data& patch,
               const tsrf_module_srfprp::Data& srfprp, const Trees& trees,
               tsrf_module_data::Data& state, tsrf_module_raddat::Data& raddat,
               const Fields& fields, Work& work);

/// Cosine of the angle between the sun and the normal of patch p, 0 when it looks away.
double cosine_to(const SunVector& sun, const tsrf_module_patch::Data& patch, std::size_t p);
/// Fluxes from the sky alone, and the beam on the plane of each sunlit patch.
void set_srad0(frame::Crew& crew, const SunVector& sun, const SkyFluxes& sky,
               const tsrf_module_patch::Data& patch, std::span<const double> fsun,
               std::span<const double> skyvf, std::span<double> Rl, std::span<double> Rs,
               std::span<double> Jdir);
/// Adds the beam where a patch takes part in the exchange as itself.
void add_sundir(frame::Crew& crew, std::span<const tsrf_module_patch::Type> type,
                std::span<const double> Jdir, std::span<double> Rs);
/// Sources of the exchange: what the surfaces emit at their temperatures `T` [K]; a tree patch
/// sends on what the canopy left on it.
void set_emission(frame::Crew& crew, const tsrf_module_patch::Data& patch,
                  std::span<const std::int32_t> isrf, std::span<const double> T,
                  std::span<const double> emissivity, const tsrf_module_raddat::Data& raddat,
                  std::span<double> Sl, std::span<double> Ss);

/// Tells what the arrays take.
void list_arrays(const Work& work, frame::ArrayList& list);

}  // namespace rad_admin
