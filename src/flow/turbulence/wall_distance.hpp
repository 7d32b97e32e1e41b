// The distance of each cell from the nearest wall.
//
// Made once at the start of a run with large eddies, whose length it bounds. Walls are the faces
// of the rim with a given velocity through which nothing passes, on obstacles and plates too; slip
// walls, symmetry and openings are none.
#pragma once

#include "flow/terms/domain.hpp"

namespace flow {

/// Squares of the distances [m2] from the centres to the nearest wall face, infinite where there is
/// no wall. Exact: a face is a rectangle, its distance is found axis by axis, as in the distance
/// transform of Saito and Toriwaki (1994); y may repeat itself.
Field wall_distance_squares(const Domain& domain);

}  // namespace flow
