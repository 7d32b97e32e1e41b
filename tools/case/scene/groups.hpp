// From pieces to the groups of the scene and the triangles that rays meet.
//
// The pieces of a face in one cell make a group.
#pragma once

#include "scene/porous.hpp"
#include "scene/scene.hpp"

namespace townskin_case {

/// Adds groups and triangles of the buildings. The cell of a group is the one that it lies in, or,
/// where that holds hardly any air, the one in front of it.
void add_buildings(const std::vector<CutFace>& faces, const Porous& porous, double sliver,
                   Scene& scene);

/// Adds a group with its triangles; `pieces` are convex, in the frame of the cells, and of one
/// plane. Returns it; the next one added moves it.
Group& add_group(Scene& scene, PatchKind kind, const std::vector<Piece>& pieces);

}  // namespace townskin_case
