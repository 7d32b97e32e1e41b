// jmk_difrad_flux: scattered light and long-wave radiation among the cells of the canopy.
//
// Six fluxes cross each cell, one inwards by each face. In a band whose light the leaves stop with
// extinction k, of the flux that enters by a face across the width d
//
//     exp(-k d)      passes to the far face,
//     1 - exp(-k d)  is stopped; of all that a cell stops, the share r is scattered and 1 - r
//     stays.
//
// What a cell scatters or emits leaves by its six faces in proportion to their directional term
//
//     c = A (1 - exp(-k d)),     share of one face of axis a:  c_a / (2 (c_x + c_y + c_z)).
//
// This is the one set of shares, used for every way in and for emission alike, with which three
// things hold at once. The shares add up to 1, so a cell gives away what it takes. The exchange
// from face to face, r c_a c_b / S, is the same both ways. And in a field of one temperature every
// face gives back exactly what it receives: a canopy as warm as all around it exchanges nothing.
// Shares that leave the forward direction out, or that weight reflection back along the path with
// (1 + exp(-k d))/2 and let the rest of the scattered light fade within the cell, do not close: the
// light that fades is neither absorbed nor passed on. A cell without leaves passes all on as it
// is; a homogeneous layer of any number of cells passes exp(-k H); a thick cell radiates its
// emissivity times a black body.
//
// Emission follows from the same terms: leaves of temperature T emit E = L sigma/2 epsilon T^4 per
// volume into each sense of an axis, of which A d u E reaches the face, u = (1 - exp(-k d))/(k d).
#pragma once

#include <cstdint>
#include <span>

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
/// Returns the number of sweeps. More than `LOPRAD` stop the run.
std::int32_t jmk_difrad_flux(frame::Log& log, const tsrf_module_jumoku::Data& data,
                             std::int32_t LOPRAD, const Tolerance& tolerance,
                             tsrf_module_jumoku::BandFluxes& band);

/// What cell `c` stops of the fluxes that enter it [W].
double stopped(const tsrf_module_jumoku::BandFluxes& band, std::size_t c);

}  // namespace jmk
