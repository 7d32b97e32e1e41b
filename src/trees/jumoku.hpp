// jumoku: one layer of leaves over a patch of ground.
//
// Takes what comes from sun and sky above the tree and gives what is left of it beneath, finding on
// the way the leaf temperature at which the leaves' heat balance closes. The light is followed
// downwards once, back up from the ground once, and scattered once; long-wave radiation of sky,
// ground and leaves the same way. Called by rad_admin for every patch that carries a simple tree,
// in the runs in which an exchange among patches is off.
#pragma once

#include "frame/log.hpp"
#include "radiation/phydat.hpp"
#include "trees/htrans.hpp"
#include "trees/radiat.hpp"

namespace jmk {

struct SimpleTree {
  double LAD = 0.0;  ///< leaf area density [m2/m3]
  double H = 0.0;    ///< height [m]
  double T = 300.0;  ///< leaf temperature [K], kept from step to step
};

/// The patch under the tree.
struct Ground {
  double cosi = 0.0;      ///< cosine between its normal and the sun, not negative
  double emission = 0.0;  ///< its own long-wave emission [W/m2]
  double emissivity = 1.0;
  double albedo = 0.0;
};

struct Air {
  double p = 0.0;  ///< pressure [Pa]
  double T = 0.0;  ///< temperature [K]
  double q = 0.0;  ///< specific humidity [kg/kg]
  double U = 0.0;  ///< wind speed [m/s]
};

/// The fluxes of `above` (direct normal, scattered, long-wave [W/m2]) as they arrive beneath the
/// tree; the direct part stays a flux normal to the sun. `tree.T` is the first guess on entry and
/// the leaf temperature on return. A tree without leaves or height passes all on. A balance that
/// does not close within LOPHBL passes stops the run.
tsrf_module_phydat::SkyFluxes jumoku(frame::Log& log, const jmk_module_htrans::Data& htrans,
                                     const jmk_module_radiat::Data& radiat,
                                     const tsrf_module_phydat::SunVector& sun, const Ground& ground,
                                     const Air& air, const tsrf_module_phydat::SkyFluxes& above,
                                     SimpleTree& tree);

}  // namespace jmk
