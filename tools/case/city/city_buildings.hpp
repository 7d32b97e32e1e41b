// From the features of all layers, in local metres, to the buildings of the city.
#pragma once

#include "city/city_input.hpp"
#include "city/features.hpp"

namespace townskin_case {

/// Repaired, made to touch where they nearly do, each place given to one building, and with their
/// outdoor faces. What has nothing left is left out.
std::vector<Building> city_buildings(const std::vector<Layer>& layers, std::size_t building_layers,
                                     const CityInput& input, Report& report);

}  // namespace townskin_case
