// Trees out of points, crown polygons and the plants of city models.
#pragma once

#include "city/city_input.hpp"
#include "city/features.hpp"

namespace townskin_case {

/// The trees of the feature, in local metres: one a point, one a polygon. Sizes that the attributes
/// lack follow from the others by the defaults.
void add_trees(const Feature& feature, const CityInput& input, std::vector<Tree>& trees,
               Report& report);

}  // namespace townskin_case
