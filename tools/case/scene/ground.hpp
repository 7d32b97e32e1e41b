// The ground between the buildings, cut along the grid by its kinds.
#pragma once

#include "city/city.hpp"
#include "scene/scene.hpp"

namespace townskin_case {

/// Adds groups for all ground of the grid that no building covers: of the kind of the last area
/// that holds it, else of `other`. Ground of the kind "water" is of type 4.
void add_ground(const City& city, const std::string& other, double sliver, Scene& scene);

}  // namespace townskin_case
