// tsrf_trcanopy: the canopy in the exchange of the district.
//
// After the exchange among the patches the tree patches hold what the district and the sky send to
// the canopy's outer faces. This takes it into the canopy, follows the scattered light of both
// solar bands, finds the leaf temperatures, and hands the tree patches the light with which the
// canopy faces the district in the next step's exchange. Called by rad_admin when both exchanges
// are on.
#pragma once

#include <span>

#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "inputs/patch.hpp"
#include "radiation/phydat.hpp"
#include "trees/canopy.hpp"
#include "trees/htrans.hpp"
#include "trees/jmk_data.hpp"
#include "trees/leaf_balance.hpp"
#include "trees/radiat.hpp"

namespace jmk {

/// `Rl`, `Rs` are the incident fluxes of the patches [W/m2]; `JRl`, `JRs` of the tree patches
/// become what leaves the canopy by their faces [W/m2].
void tsrf_trcanopy(frame::Log& log, frame::Crew& crew, const tsrf_module_phydat::SkyFluxes& sky,
                   const tsrf_module_patch::Data& patch, const jmk_module_data::Data& cells,
                   const jmk_module_htrans::Data& htrans, const jmk_module_radiat::Data& radiat,
                   tsrf_module_jumoku::Data& data, std::span<const double> Rl,
                   std::span<const double> Rs, std::span<double> JRl, std::span<double> JRs);

}  // namespace jmk
