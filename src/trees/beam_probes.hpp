// Probes in the beam: what leaves left of it where the patches beyond the canopy lie.
//
// A sweep keeps no more of the faces than it needs on its way, and puts down what it finds on those
// that a probe looks at as it passes them.
#pragma once

#include "frame/crew.hpp"
#include "inputs/patch.hpp"
#include "trees/beam_cells.hpp"
#include "trees/canopy.hpp"
#include "trees/radiat.hpp"

namespace jmk {

/// Lists the patches that leaves may shade, all but the tree patches and those above the highest
/// leaves, and takes the arrays of their faces.
void place_probes(const tsrf_module_patch::Data& patch, tsrf_module_jumoku::Data& data);

/// Orders the faces of the probes on the way of the beam, which changes with its octant, and puts
/// the free beam on all of them.
void look_at_faces(const BeamSweep& sweep, tsrf_module_jumoku::Beam& beam);

/// Takes what a sweep has left of the beam for the patches into beam.left.
void read_probes(frame::Crew& crew, const jmk_module_radiat::Optics& optics,
                 tsrf_module_jumoku::Beam& beam);

}  // namespace jmk
