// Where the city lies: the coordinate systems of its files, the centre of the site, and all
// features brought into metres about it.
#pragma once

#include "city/city_input.hpp"
#include "city/features.hpp"
#include "city/projection.hpp"

namespace townskin_case {

/// Brings the points of all features into metres east and north of the site's centre, heights into
/// metres, and drops what lies out of the clipping area or tens of kilometres off. The first layers
/// are the buildings'; they decide where the centre is. Returns the centre, if the data tell where
/// they lie.
std::optional<Place> place_layers(std::vector<Layer>& layers, std::size_t building_layers,
                                  const CityInput& input, Report& report);

}  // namespace townskin_case
