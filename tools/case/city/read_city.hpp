// The whole way from the city's files to the City.
#pragma once

#include "city/city.hpp"
#include "city/city_input.hpp"

namespace townskin_case {

/// Reads, repairs and places the city. Every repair is told in the report; what the data cannot be
/// used for at all is a Fault with the file and the feature.
City read_city(const CityInput& input, Report& report);

}  // namespace townskin_case
