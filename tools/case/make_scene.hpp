// From the city to the scene, in one call.
#pragma once

#include "crowns.hpp"
#include "grid.hpp"
#include "patches.hpp"

namespace townskin_case {

struct SceneOptions {
  GridOptions grid;
  std::string ground = "asphalt";  ///< kind of the ground where no area tells it
  BuildUpOf build_up;
  bool boundary = true;  ///< a far boundary around the district
};

/// The scene, with what the writers need beside it.
struct District {
  Scene scene;
  Porous porous;
  Leaves leaves;
};

/// The groups stand in this order: buildings, ground, crowns, the far boundary. The far boundary
/// has the area of the grid's four sides, no triangles, and a place in the cell at the grid's
/// first corner; rays that leave the area below the horizon are its.
District make_scene(const City& city, const SceneOptions& options);

}  // namespace townskin_case
