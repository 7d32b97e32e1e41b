// The canopy of cells in the energy account.
//
// Light and long wave that come to the crowns by the patches on their faces, by faces that have
// none and by the beam, what leaves absorb of it, and their balance with the air. Leaves store
// nothing. What the sweeps among cells and the search for leaf temperatures leave open is formed
// from the weights of cells and from the slopes of the search.
#pragma once

#include "account/account.hpp"
#include "account/patches.hpp"

namespace tsrf_module_account {

/// Takes what the sums of the canopy need; once, when the canopy stands.
void prepare_leaves(frame::Log& log, const tsrf_module_jumoku::Data& canopy, Data& data);

/// One side of all leaves [m2]; it changes with the months.
double leaf_area(const tsrf_module_jumoku::Data& canopy);

/// Adds a step of `dt` [s]; `raddat` has what the canopy has left on the patches of its faces.
void add_leaves(frame::Crew& crew, const tsrf_module_patch::Data& patch, const jmk::Trees& trees,
                const tsrf_module_raddat::Data& raddat, const Radiation& radiation, double dt,
                Data& data);

}  // namespace tsrf_module_account
