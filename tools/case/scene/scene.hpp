// The scene: the city cut along the grid into patches, and the triangles that rays meet.
//
// Made from the City (cut.cpp); the rays read it, the writers put it into the files of a run.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "city/city.hpp"
#include "shapes/geometry.hpp"

namespace townskin_case {

/// Kinds of patches, by their numbers in the files of a run.
enum class PatchKind : std::int32_t { building = 1, tree = 2, land = 3, water = 4, far = 7 };

/// Nodes of the cells along x, y and z [m], and how the cells lie: `turn` is the angle from east to
/// the cells' x axis, counted to the left [radian].
struct CellGrid {
  std::array<std::vector<double>, 3> nodes;
  double turn = 0.0;
};

/// A piece of surface that radiates as one. What is glass and what is wall within it are two
/// patches of the group.
struct Group {
  std::vector<Polygon3> shapes;  ///< pieces of one plane
  Vector3 normal;                ///< outward, of length 1
  double area = 0.0;             ///< of the shapes [m2]
  PatchKind kind = PatchKind::land;
  /// Of the air in front of it; indices from 1. Of a tree's face the tree cell of the leaves
  /// behind.
  std::array<std::int32_t, 3> cell{};
  std::int32_t building = -1;      ///< index into the city's buildings; -1: none
  FaceKind face = FaceKind::wall;  ///< of a building's
  std::string cover;               ///< of land and water: the kind of ground, as the city has it
};

/// What is one build-up of a group: made from groups and library (furnish.cpp).
struct Patch {
  std::int32_t group = 0;    ///< index into the groups
  double area = 0.0;         ///< its share of the group's [m2]
  std::int32_t surface = 0;  ///< its build-up: `SurfID`; of a tree's face its number, 1 to 6
};

/// A tree cell with leaves; indices from 1.
struct LeafCell {
  std::array<std::int32_t, 3> cell{};
  double density = 0.0;  ///< leaf area density [m2/m3]
};

/// What is open of a cell of the grid and of its faces towards west, east, south, north, below and
/// above, 0 to 1; cells that are fully open are not listed.
struct PorousCell {
  std::array<std::int32_t, 3> cell{};  ///< indices from 1
  double volume = 1.0;
  std::array<double, 6> faces{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
};

/// What rays meet: `group` tells whose a triangle is. All triangles turn to the left seen from
/// outside.
struct Mesh {
  std::vector<Vector3> points;
  std::vector<std::array<std::uint32_t, 3>> triangles;
  std::vector<std::int32_t> group;
};

struct Scene {
  CellGrid grid;
  std::vector<Group> groups;   ///< the number of a group in the files is its index plus 1
  std::vector<Patch> patches;  ///< likewise; faces of trees stand last
  Mesh mesh;
  std::int32_t tree_division = 1;  ///< tree cells to a cell of the grid, along x and along y
  std::vector<LeafCell> leaves;
  std::vector<PorousCell> porous;  ///< true fractions
  std::vector<PorousCell> air;     ///< those that the flow is given
  /// Groups that see through a periodic side: each takes the other's light.
  std::vector<std::array<std::int32_t, 2>> periodic;
};

}  // namespace townskin_case
