// The surfaces of one geometry of CityJSON: rings of indices into the vertices, nested by type.
#pragma once

#include "city/features.hpp"

namespace townskin_case {

/// Level of detail of a geometry; where none is told, 2.
double lod_of(const Json& geometry);

/// Adds the surfaces to the feature. Of a solid only the outer shell counts. Returns why it cannot
/// be read, or nothing.
std::optional<std::string> add_surfaces(const Json& geometry, const std::vector<Vector3>& vertices,
                                        Feature& feature);

}  // namespace townskin_case
