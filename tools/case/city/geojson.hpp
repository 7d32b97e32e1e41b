// GeoJSON as features: polygons and points with their attributes.
#pragma once

#include "city/features.hpp"

namespace townskin_case {

/// The features of a FeatureCollection, a Feature or a bare geometry. What holds neither polygon
/// nor point is left out.
Layer read_geojson(const Json& root, const std::string& file, Report& report);

}  // namespace townskin_case
