// One sweep of the direct beam through the canopy.
//
// The beam is not traced ray by ray but swept as a flux through the faces of the fine grid, from
// the sun's side to the far side and from the highest leaves to the ground. What is carried is the
// fraction f of the free beam on each face, 1 where no leaf stood in its way.
//
// In a cell of widths d the longest way of a ray is t = 1/max(|s|/d); across it the beam shifts by
// the parts l = |s| t/d of the cell's widths. Of what enters by the face of axis a, the part
// l_b (1 - l_c/2) goes over to the face of axis b, l_c (1 - l_b/2) to that of axis c, and the rest
// straight on. Leaves let exp(-k t) of it pass. Divided by the free beam on the leaving face this
// is a mean of the three entering fractions with the weights
//
//     face of axis a:  1 - w_b - w_c from a,  w_b = l_b (1 - l_c/2) from b,  w_c likewise from c,
//
// taken as f_a + w_b (f_b - f_a) + w_c (f_c - f_a), so that the free beam stays 1 to the bit and
// cells that nothing dimmed by leaves reaches need no visit.
//
// Two beams go through the canopy. One is dimmed by leaves only and tells what reaches the patches
// beyond. The other runs inside the blocks: it starts on their outer faces, where a building's
// shadow on the tree patch there takes its part, and is what the leaves receive.
//
// One sweep serves all eight octants: it runs along each axis in the sense of the beam.
#pragma once

#include "frame/crew.hpp"
#include "frame/instruction_set.hpp"
#include "radiation/phydat.hpp"
#include "trees/canopy.hpp"
#include "trees/radiat.hpp"

namespace jmk {

/// One sweep of the beam of direct normal flux `Jdn` [W/m2] for a sun above the horizon: fills the
/// results of data.beam from data.beam.fsun and the leaf area densities. The same bits for any
/// number of hands and any set of instructions.
void sweep_beam(frame::Crew& crew, const tsrf_module_phydat::SunVector& sun, double Jdn,
                const jmk_module_radiat::Optics& optics, tsrf_module_jumoku::Data& data,
                frame::InstructionSet set = frame::widest_set());

}  // namespace jmk
