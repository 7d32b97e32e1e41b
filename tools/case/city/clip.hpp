// Which features count: those in the user's area, and within reach of the others.
#pragma once

#include "city/systems.hpp"

namespace townskin_case {

/// Drops buildings and trees out of the clipping area, and all features 50 km and more off the
/// origin of `metres`. The first layers are the buildings'. Returns the middle of the area, or
/// without one of the buildings that stay.
Point2 clip_layers(std::vector<Layer>& layers, std::size_t building_layers, const CityInput& input,
                   const LocalMetres& metres, Report& report);

}  // namespace townskin_case
