// Crowns of trees in the cells of the grid: leaves, and the faces that they show.
//
// A crown is an ellipsoid; what part of a cell lies within it is found by points spread through the
// cell. Crowns that overlap add up. A cell that holds more building than air has no leaves.
#pragma once

#include <map>

#include "city/city.hpp"
#include "scene/porous.hpp"
#include "scene/scene.hpp"

namespace townskin_case {

/// Leaves of the tree cells, which are the grid's divided by `division` along x and along y.
struct Leaves {
  CellGrid cells;  ///< the tree cells
  std::int32_t division = 1;
  std::map<std::array<std::int32_t, 3>, double> density;  ///< leaf area [m2/m3] by cell, > 0
  std::size_t cut = 0;  ///< cells of crowns that buildings, or the end of the grid, take away
};

/// Densities below `least` count as none.
Leaves spread_leaves(const City& city, const CellGrid& grid, const Porous& porous,
                     std::int32_t division, double least = 0.02);

/// Adds the cells with leaves, and a group for each of their outer faces; its cell is that of the
/// leaves behind it. A face on the ground sees that alone, one against a building itself.
void add_crowns(const Leaves& leaves, Scene& scene);

}  // namespace townskin_case
