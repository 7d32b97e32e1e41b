// The scene: the city cut along the grid into patches, and the triangles that rays meet.
//
// Made from the City (cut.cpp); the rays read it, the writers put it into the files of a run.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "geometry.hpp"

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
  std::array<std::int32_t, 3> cell{};  ///< of the air in front of it; indices from 1
};

struct Patch {
  std::int32_t group = 0;      ///< index into the groups
  std::int32_t building = -1;  ///< index into the city's buildings; -1: none
  double area = 0.0;           ///< its share of the group's [m2]
  std::string construction;    ///< key into the library: its build-up
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
  std::vector<Patch> patches;  ///< likewise
  Mesh mesh;
};

}  // namespace townskin_case
