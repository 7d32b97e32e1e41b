// The cells of a run: how large, how many, where.
//
// The cells may be turned against east and north; whatever is cut along them is first brought into
// their frame. Made once for a city; used by all that cuts and by the writers.
#pragma once

#include "city/city.hpp"
#include "scene/scene.hpp"
#include "site/site.hpp"

namespace townskin_case {

/// Cells around all buildings and trees; their planes stand at whole multiples of the cell's size
/// from the origin of the city. Fault: more cells than the files can count.
CellGrid make_grid(const City& city, const SiteGrid& wanted);

/// The turn that brings the cells along the streets: that of the walls, weighed by length, to a
/// quarter turn. In -45 to 45 degrees [radian].
double street_turn(const City& city);

Vector3 to_cells(const CellGrid& grid, const Vector3& point);
Vector3 from_cells(const CellGrid& grid, const Vector3& point);

/// The cell of a coordinate along an axis, from 1; 0 or one more than there are outside.
std::int32_t cell_of(const std::vector<double>& nodes, double at);

}  // namespace townskin_case
