// The patches' part of the energy account: surfaces and the columns behind them.
//
// The surface side is one pass over the patches in a step, in blocks that hands share; a block adds
// in the order of patches. The column side needs what stands behind the last cell, in a step, and
// the heat stored in all cells, once a day.
#pragma once

#include "account/account.hpp"

namespace tsrf_module_account {

/// Where the patches stand, for `prepare_patches`.
struct Town {
  const tsrf_module_patch::Data& patch;
  const tsrf_module_lyrstrct::Data& lyrstrct;
  const tsrf_module_matprp::Data& matprp;
  const tsrf_module_srfprp::Data& srfprp;
  const tsrf_module_data::Data& state;
  const tsrf_window::Glass& glass;
};

/// Sorts the patches into kinds and roles and takes the arrays; `dt` [s] is the step, by which a
/// column goes forward implicitly or not. To be called once, when the columns are set.
void prepare_patches(frame::Log& log, const Town& town, double dt, Data& data);

/// Notes the temperatures that a step begins with; the first of a day keeps all nodes.
void note_patches(frame::Crew& crew, const tsrf_module_data::Data& state, Data& data);

/// Radiation of a step on each patch [W/m2].
struct Radiation {
  tsrf_module_phydat::SkyFluxes sky;
  std::span<const double> Rl, Rs, Jdir;
};

/// Adds a step of `dt` [s]: surfaces.
void add_surfaces(frame::Crew& crew, const tsrf_module_patch::Data& patch,
                  const tsrf_module_srfprp::Data& srfprp, const tsrf_module_data::Data& state,
                  const Radiation& radiation, double dt, Data& data);
/// Adds a step: what columns exchange with what is behind them, and the beam in glass. Leaves what
/// each building gets of both in its house.
void add_columns(const tsrf_module_patch::Data& patch, const tsrf_module_srfprp::Data& srfprp,
                 const tsrf_module_data::Data& state, const Radiation& radiation, double dt,
                 Data& data);
/// At a day's end: the heat that the cells have stored since `note_patches` kept their
/// temperatures.
void add_stored(frame::Crew& crew, const tsrf_module_patch::Data& patch,
                const tsrf_module_data::Data& state, Data& data);

}  // namespace tsrf_module_account
