// CityJSON as features: buildings with all their parts, ground and plants.
#pragma once

#include "city/features.hpp"

namespace townskin_case {

/// True if the value is CityJSON, whole or a line of a sequence.
bool is_city_model(const Json& root);

/// The objects of a model of CityJSON 1.0 to 2.0. Of each object the geometry of the highest level
/// of detail up to `lod` counts. Parts belong to their building: one feature.
Layer read_city_model(const Json& root, const std::string& file, double lod, Report& report);

/// The same from a sequence: a line with the model's transform and metadata, then a line a feature.
Layer read_city_sequence(const std::string& text, const std::string& file, double lod,
                         Report& report);

}  // namespace townskin_case
