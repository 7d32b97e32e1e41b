// tsrf_sundir: the direct beam through the canopy, step by step.
//
// Shadows of buildings come with the sunlit fractions of the patches; here only leaves dim the
// beam. When it is swept through the canopy (trees/beam_sweep.hpp), and what of it the patches and
// the leaves receive until the next sweep. Called by rad_admin.
#pragma once

#include <span>

#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "inputs/patch.hpp"
#include "radiation/phydat.hpp"
#include "trees/canopy.hpp"
#include "trees/jmk_data.hpp"
#include "trees/radiat.hpp"

namespace jmk {

/// Lets the leaves dim the direct flux of the patches: `Jdir` [W/m2] of a tree patch becomes what
/// passes its face in the canopy, that of every other patch loses what leaves took out of its beam.
/// `second` is the run time and `dt` the step [s]; the beam is swept at the run's first step with
/// sun and then only when `second` is a multiple of NSKIP_SUNDIR steps of whole seconds, and the
/// last sweep holds in between. Without sun nothing passes.
void tsrf_sundir(frame::Log& log, frame::Crew& crew, double dt, double second,
                 const tsrf_module_phydat::SunVector& sun, const tsrf_module_phydat::SkyFluxes& sky,
                 const tsrf_module_patch::Data& patch, std::span<const double> fsun,
                 const jmk_module_data::Data& cells, const jmk_module_radiat::Data& radiat,
                 tsrf_module_jumoku::Data& data, std::span<double> Jdir);

/// Warns of a step that is not of whole seconds: its times are all but never such a multiple.
void warn_of_step(frame::Log& log, double dt, const tsrf_module_jumoku::Settings& settings);

}  // namespace jmk
