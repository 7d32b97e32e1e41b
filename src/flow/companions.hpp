// The companions of the flow solver: modules that its driver calls at fixed places and that do
// nothing here, each with a line on what would stand in it.
//
// They are kept as calls so that the order of start and step is complete and a module finds its
// place when it comes.
#pragma once

namespace flow {

// Start.
inline void h18_eachtrm_cnstrctr() {}  ///< files for the terms of each equation
inline void ubx_setsome() {}           ///< constants of the urban boundary modules
inline void jmk_prep_init() {}         ///< canopy cells of the flow grid
inline void rad_prep_init() {}         ///< radiosity on the flow grid
inline void nlk_prep_init() {}         ///< non-linear k-epsilon model
inline void mkc_prep_init() {}         ///< revised k-epsilon model
inline void sld_prep_init() {}         ///< conduction in obstacles
inline void chkmginit() {}             ///< sizes for a multigrid solver
inline void jmk_prep_radsky() {}       ///< sky radiation on the canopy

// Step.
inline void nlk_stress() {}         ///< stresses of the non-linear model
inline void mkc_clfbvt() {}         ///< eddy viscosity of the revised model
inline void sld_limit_deltt() {}    ///< stable step of the conduction in obstacles
inline void stamp_wall_clock() {}   ///< a line of the wall clock on a unit of its own
inline void jmk_cal_canopy() {}     ///< leaf temperatures and what the leaves give off
inline void rad_cal_srftmp() {}     ///< surface temperatures by radiosity
inline void sld_cltsld() {}         ///< temperatures in obstacles
inline void unst_set_tmprlq() {}    ///< nudging of temperature towards an outer flow
inline void unst_set_tmprls() {}    ///< nudging of species and turbulence
inline void flw_module_resid() {}   ///< largest residuals of each equation
inline void flw_module_rsdprf() {}  ///< their profile over the height
inline void kpc_dump_exchange() {}  ///< exchange with the surfaces, for the surface model
inline void h18_out_eachtrm() {}    ///< terms of each equation at the history points

}  // namespace flow
