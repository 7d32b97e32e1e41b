// Pieces of roof out of the faces of a building in space, or out of a footprint and its height.
#pragma once

#include "city/city_input.hpp"
#include "city/features.hpp"
#include "city/roof_piece.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {

/// A footprint raised to its height; without pieces where nothing of it can be used.
Draft draft_of_footprint(const Geos& geos, const Feature& feature, double height, Report& report);

/// The faces that are not upright, down to the building's own ground. The level of that ground is
/// the lowest of the faces called so, else of all points, else what the attribute says that the
/// user named for it.
Draft draft_of_body(const Geos& geos, const Feature& feature, const CityInput& input,
                    Report& report);

}  // namespace townskin_case
