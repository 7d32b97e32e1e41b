// What can be told of a body from its faces: whether they close it and which way they turn.
#pragma once

#include "city/features.hpp"
#include "shapes/plan.hpp"

namespace townskin_case {

/// Volume between the faces and the level [m3]: positive if they turn outward. A floor at that
/// level, and walls, do not matter.
double volume_above(const std::vector<RawPolygon>& faces, double level);

/// True if each edge of a face is met by one of a face beside it.
bool is_closed(const std::vector<RawPolygon>& faces);

}  // namespace townskin_case
