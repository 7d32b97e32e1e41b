// tree_incident: sun and sky on patches that carry a tree of their own.
//
// Called by rad_admin in steps in which an exchange among the patches is off.
#pragma once

#include <span>

#include "driver/rad_admin.hpp"

namespace rad_admin {

/// Replaces Rl and Rs of each marked patch by what arrives beneath its tree; the tree's leaf
/// temperature in `state` is brought up to date.
void tree_incident(frame::Log& log, const SunVector& sun, const SkyFluxes& sky,
                   const tsrf_module_patch::Data& patch, const tsrf_module_srfprp::Data& srfprp,
                   const Trees& trees, const Fields& fields, tsrf_module_data::Data& state,
                   std::span<double> Rl, std::span<double> Rs);

}  // namespace rad_admin
