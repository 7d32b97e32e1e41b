// Triangles of a flat face with holes.
#pragma once

#include <vector>

#include "shapes/geometry.hpp"

namespace townskin_case {

/// Triangles that fill the face exactly, with its points as corners and its turn. A face without
/// area has none.
std::vector<Ring3> triangulate(const Polygon3& face);

}  // namespace townskin_case
