// flw_module_slits: thin plates, groups of the boundary file that lie inside the domain.
//
// A plate closes its faces: nothing passes, and each side has the condition that a group gives it.
// The rectangles are listed before the fractions are there and close them afterwards; the checks of
// the conditions (flw_prep_ckbnd1, flw_prep_ckbnd2) then see the plates. Called by the start-up.
#pragma once

#include <array>
#include <vector>

#include "flow/boundary.hpp"
#include "flow/state.hpp"
#include "frame/log.hpp"

namespace flow {

/// Places of the plates' faces, by the axis of their normal: islt, jslt, kslt.
struct Slits {
  std::array<std::vector<std::size_t>, 3> faces;
};

/// Lists the faces of the sheets that lie on no end of the domain; a face may stand twice. Errors:
/// "### error : allocation failed", "(flw_module_slits)(mkslits)".
Slits mkslits(frame::Log& log, const Box& box, const Boundary& boundary);

/// Closes the faces of the plates.
void mkslit1(const Slits& slits, Openings& openings);

}  // namespace flow
