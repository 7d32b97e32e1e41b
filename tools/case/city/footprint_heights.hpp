// How high footprints are, out of what their attributes say.
#pragma once

#include "city/city_input.hpp"
#include "city/features.hpp"

namespace townskin_case {

/// Heights above the ground [m], one a feature: from an attribute, else from the storeys, else the
/// default. Whether a height counts from the sea is judged over all features of the file. What was
/// taken from storeys or the default is counted, and unusable heights.
std::vector<double> footprint_heights(const std::vector<Feature>& features, const CityInput& input,
                                      Report& report);

/// Storeys above the ground as the attributes tell, or nothing.
std::optional<double> told_storeys(const Attributes& attributes, const CityInput& input);

}  // namespace townskin_case
