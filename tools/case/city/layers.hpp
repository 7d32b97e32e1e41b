// The files of a city as layers of features, whatever their format.
#pragma once

#include "city/city_input.hpp"
#include "city/features.hpp"

namespace townskin_case {

/// Reads GeoJSON, CityJSON or a sequence of CityJSON (.jsonl), told apart by what they hold.
Layer read_layer(const std::string& file, const CityInput& input, Report& report);

/// The middle of the box around the feature, in the file's coordinates.
Point2 box_middle(const Feature& feature);

}  // namespace townskin_case
