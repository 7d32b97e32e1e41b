// The vertices of a CityJSON model in its own coordinates, and what it says about these.
#pragma once

#include "city/features.hpp"

namespace townskin_case {

/// How the integers of a model become coordinates.
struct VertexTransform {
  Vector3 scale{1.0, 1.0, 1.0}, translate;
};

/// The transform that the model states, or none.
VertexTransform transform_of(const Json& root, const std::string& file);

/// All vertices, transformed.
std::vector<Vector3> vertices_of(const Json& root, const VertexTransform& transform,
                                 const std::string& file);

/// Takes back a translation that was applied twice: the model's own geographicalExtent reveals it.
/// Returns true if so. An extent that is off in another way is a warning.
bool undo_double_translation(const Json& root, const VertexTransform& transform,
                             std::vector<Vector3>& vertices, const std::string& file,
                             Report& report);

/// The coordinate system that the model's metadata name, if they do.
std::optional<std::string> model_crs(const Json& root);

}  // namespace townskin_case
