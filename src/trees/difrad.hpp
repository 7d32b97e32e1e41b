// jmk_difrad_flux: scattered light and long-wave radiation among the cells of the canopy.
//
// Six fluxes cross each cell, one inwards by each face, and leave it by the weights of
// trees/scattering.hpp: straight on, back, aside, and as parts of what starts in the cell - the
// beam's scattered light or the emission of its leaves. Leaves of temperature T emit
// E = L sigma/2 epsilon T^4 per volume into each of the six senses (trees/radiat.hpp), so that 6 V
// E starts in a cell of volume V. What enters a cell and does not leave it stays in its leaves.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "trees/canopy.hpp"

namespace jmk {

/// Tolerance of a face's flux between sweeps: absolute [W] plus relative.
struct Tolerance {
  double absolute;
  double relative;
};

/// Relaxes the fluxes of one band among the cells of `data`, with band.outside and band.source
/// given and band.entering as a first guess. A sweep visits all cells there and back, so that every
/// flux crosses the canopy in it; no change beyond the tolerance in a sweep ends the iteration.
/// Returns the number of sweeps, and the same bits for any number of hands. More than `LOPRAD` stop
/// the run.
std::int32_t jmk_difrad_flux(frame::Log& log, frame::Crew& crew,
                             const tsrf_module_jumoku::Data& data, std::int32_t LOPRAD,
                             const Tolerance& tolerance, tsrf_module_jumoku::BandFluxes& band);

/// What stays in the leaves of cell `c`, of what enters it and of what starts in it [W].
double kept(const tsrf_module_jumoku::Data& data, const tsrf_module_jumoku::BandFluxes& band,
            std::size_t c);

}  // namespace jmk
