#include "city/faces.hpp"

#include <algorithm>

namespace townskin_case {
namespace {

using Rings = std::vector<Ring2>;

Rings rings_of(const Polygon2& polygon) {
  Rings rings{polygon.outer};
  rings.insert(rings.end(), polygon.holes.begin(), polygon.holes.end());
  return rings;
}

Ring3 lifted(const Ring2& ring, const Plane& plane) {
  Ring3 points;
  for (const Point2& p : ring) points.push_back({p.x, p.y, plane.at(p)});
  return points;
}

/// The cells of a building, by surface.
using Surfaces = std::map<std::int32_t, std::pair<const RoofPiece*, std::vector<Rings>>>;

void add_roofs(const Geos& geos, const Surfaces& surfaces, Building& building) {
  for (const auto& [number, surface] : surfaces) {
    const RoofPiece& piece = *surface.first;
    for (const Polygon2& plan : geos.polygons(geos.dissolved(surface.second).get())) {
      Face& face = building.faces.emplace_back();
      face.kind = piece.kind;
      face.shape.outer = lifted(plan.outer, piece.plane);
      for (const Ring2& hole : plan.holes) face.shape.holes.push_back(lifted(hole, piece.plane));
    }
  }
}

struct Heights {
  double from = 0.0, to = 0.0;
};

Heights heights_of(const std::vector<RoofPiece>& pieces, std::int32_t piece, const Border& border) {
  if (piece < 0) return {};
  const Plane& plane = pieces[static_cast<std::size_t>(piece)].plane;
  return {std::max(plane.at(border.from), 0.0), std::max(plane.at(border.to), 0.0)};
}

/// The wall of what stands left of the border, where it is the higher.
void add_wall(const Border& border, const Heights& left, const Heights& right, Walls& walls) {
  const double first = left.from - right.from, last = left.to - right.to;
  if (first <= near_enough && last <= near_enough) return;
  if (first >= 0.0 && last >= 0.0) {
    walls.add(border.from, border.to, {right.from, right.to}, {left.from, left.to});
    return;
  }
  // The two roofs cross on the way.
  const double t = first / (first - last);
  const Point2 at{border.from.x + t * (border.to.x - border.from.x),
                  border.from.y + t * (border.to.y - border.from.y)};
  const double z = left.from + t * (left.to - left.from);
  if (first > 0.0) {
    walls.add(border.from, at, {right.from, z}, {left.from, z});
  } else {
    walls.add(at, border.to, {z, right.to}, {z, left.to});
  }
}

void add_walls(const std::vector<RoofPiece>& pieces, const Border& border,
               std::vector<Walls>& walls) {
  if (border.left == border.right) return;
  const Heights left = heights_of(pieces, border.left, border);
  const Heights right = heights_of(pieces, border.right, border);
  const auto walls_of = [&](std::int32_t piece) -> Walls& {
    return walls[static_cast<std::size_t>(pieces[static_cast<std::size_t>(piece)].building)];
  };
  if (border.left >= 0) add_wall(border, left, right, walls_of(border.left));
  if (border.right >= 0) {
    add_wall({border.to, border.from, border.right, border.left}, {right.to, right.from},
             {left.to, left.from}, walls_of(border.right));
  }
}

}  // namespace

void add_faces(const Geos& geos, const Arrangement& arrangement,
               const std::vector<RoofPiece>& pieces, std::vector<Draft>& drafts) {
  std::vector<Surfaces> surfaces(drafts.size());
  std::vector<std::vector<Rings>> covered(drafts.size());
  for (const Cell& cell : arrangement.cells) {
    if (cell.piece < 0) continue;
    const RoofPiece& piece = pieces[static_cast<std::size_t>(cell.piece)];
    const auto owner = static_cast<std::size_t>(piece.building);
    auto& surface = surfaces[owner][piece.surface];
    surface.first = &piece;
    surface.second.push_back(rings_of(cell.shape));
    covered[owner].push_back(rings_of(cell.shape));
    Building& building = drafts[owner].building;
    building.floor_area += area(cell.shape);
    building.volume += area(cell.shape) * piece.plane.at(middle(cell.shape));
    for (const Point2& p : cell.shape.outer) {
      building.height = std::max(building.height, piece.plane.at(p));
    }
  }
  std::vector<Walls> walls(drafts.size());
  for (const Border& border : arrangement.borders) add_walls(pieces, border, walls);
  for (std::size_t i = 0; i < drafts.size(); ++i) {
    if (covered[i].empty()) continue;
    add_roofs(geos, surfaces[i], drafts[i].building);
    auto own = walls[i].faces(geos);
    auto& faces = drafts[i].building.faces;
    faces.insert(faces.end(), own.begin(), own.end());
    drafts[i].building.footprint = geos.polygons(geos.dissolved(covered[i]).get());
  }
}

}  // namespace townskin_case
