// From pieces to patches: the groups of the scene, its patches and the triangles that rays meet.
//
// The pieces of a face in one cell make a group.
#pragma once

#include <functional>

#include "porous.hpp"
#include "scene.hpp"

namespace townskin_case {

/// What a building's faces are made of: keys into the library.
struct BuildUp {
  std::string roof, wall, window;
  double window_share = 0.0;  ///< of a wall's area that is glass, 0 to less than 1
};
using BuildUpOf = std::function<BuildUp(const Building&)>;

/// Adds groups, patches and triangles of the buildings. A wall with windows becomes a group with an
/// opaque and a glass patch. The cell of a group is the one that it lies in, or, where that holds
/// hardly any air, the one in front of it.
void add_buildings(const City& city, const std::vector<CutFace>& faces, const Porous& porous,
                   const BuildUpOf& build_up, Scene& scene);

/// Adds a group with its triangles; `pieces` are convex, in the frame of the cells, and of one
/// plane. Returns its index.
std::int32_t add_group(Scene& scene, PatchKind kind, const std::vector<Piece>& pieces);

}  // namespace townskin_case
