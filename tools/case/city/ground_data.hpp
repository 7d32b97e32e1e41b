// Ground polygons with what they are covered by.
#pragma once

#include "city/city_input.hpp"
#include "city/features.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {

/// The kind of ground that the words of the data mean ("meadow" is "grass"); the words themselves
/// where they are not known.
std::string ground_kind(const std::string& words);

/// The areas of the feature, in local metres. One whose kind nobody tells is left out.
void add_ground(const Geos& geos, const Feature& feature, const CityInput& input,
                std::vector<GroundArea>& ground, Report& report);

}  // namespace townskin_case
