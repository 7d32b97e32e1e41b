// The city cut along the grid: from shapes to the groups of the scene.
#pragma once

#include "city/city.hpp"
#include "report.hpp"
#include "scene/scene.hpp"
#include "site/site.hpp"

namespace townskin_case {

/// Makes grid, groups, mesh, leaf cells and porous cells of the city; the patches come later, from
/// furnish.
Scene cut_city(const City& city, const Site& site, Report& report);

}  // namespace townskin_case
