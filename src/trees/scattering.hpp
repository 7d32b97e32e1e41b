// How a cell of leaves passes light on: the weights of the exchange in trees/difrad.hpp.
//
// Six fluxes cross a cell, one inwards by each face. Along axis a, of width d and with the
// extinction k of the band,
//
//     t = exp(-k d)              passes to the far face, 1 - t is stopped by leaves,
//     u = (1 - t)/(k d)          of what starts all along the axis reaches its end,
//
// and leaves scatter the part r of what they stop. Two forms give what becomes of that
// (`MDLSCT`); weights of faces b, c are those of the other two axes:
//
//     0  once, alike in the five directions other than straight on:
//            back by the same face   r (1 - t_a)(1 + t_a)/10
//            by a face of axis b     r (1 - t_a) u_b/5
//        Of light that starts in the cell, a sixth in each direction,
//            (u_a/6) (1 + (r/5) ((1 - t_a)/2 + 2 (1 - u_b) + 2 (1 - u_c)))
//        leaves by a face of axis a. What is scattered and stopped again in the cell stays in it.
//     1  over and over until it leaves or stays, alike by all faces of one reach. Of what starts in
//        the cell the mean e of the three u escapes unhindered, r (1 - e) once more, and so on:
//            by a face of axis a     s u_a/6,   s = 1/(1 - r (1 - e)),
//        and of what leaves stop and scatter r times this, straight on as well.
//
// Form 0 takes light that is stopped again as absorbed, whatever the leaves would scatter of it: a
// canopy as warm as all around it takes in a little more long wave than it gives. Form 1 closes: in
// a field of one temperature each face gives back what it receives, and a cell that is divided
// passes nearly what it passed whole. Both pass exp(-k H) of a layer straight on, and both give the
// exchange from face to face the same both ways.
#pragma once

#include <array>
#include <cstdint>

#include "trees/radiat.hpp"

namespace jmk {

/// What becomes of a unit of flux in a cell, in one band; by axis. The defaults are those of a cell
/// without leaves.
struct CellWeights {
  std::array<double, 3> ahead{1.0, 1.0, 1.0};  ///< of what enters: leaves by the far face
  std::array<double, 3> back{};                ///< leaves by the same face
  std::array<double, 3> stop{};                ///< is stopped
  std::array<double, 3> kept{};                ///< stays in the leaves
  std::array<double, 3> aside{};               ///< of what the other axes stop: leaves by each face
  std::array<double, 3> emit{};                ///< of what starts in the cell: leaves by each face
  double emit_kept = 0.0;                      ///< of what starts in the cell: stays in its leaves
};

/// The weights of a cell of widths `width` [m] full of leaves of density `lad` [m2/m3].
CellWeights cell_weights(std::int32_t MDLSCT, const jmk_module_radiat::BandOptics& optics,
                         double lad, const std::array<double, 3>& width);

}  // namespace jmk
