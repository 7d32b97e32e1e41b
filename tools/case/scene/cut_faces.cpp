#include "scene/cut_faces.hpp"

#include "scene/grid.hpp"
#include "shapes/plan.hpp"
#include "shapes/triangulate.hpp"

namespace townskin_case {

namespace {

Ring3 into_cells(const CellGrid& grid, Ring3 ring) {
  for (Vector3& point : ring) point = to_cells(grid, point);
  return ring;
}

CutFace cut_face(const CellGrid& grid, const Face& face, std::int32_t building) {
  CutFace cut{building, face.kind, {}, {}};
  std::vector<Ring3> triangles = triangulate(face.shape);
  Vector3 whole;
  for (Ring3& triangle : triangles) {
    triangle = into_cells(grid, std::move(triangle));
    whole = whole + area_vector(triangle);
  }
  const double area = length(whole);
  if (!(area > 0.0)) return cut;
  cut.normal = (1.0 / area) * whole;
  for (const Ring3& triangle : triangles) cut_along(grid, triangle, cut.normal, cut.pieces);
  return cut;
}

}  // namespace

std::vector<CutFace> cut_faces(const City& city, const CellGrid& grid) {
  std::vector<CutFace> all;
  for (std::size_t b = 0; b < city.buildings.size(); ++b) {
    for (const Face& face : city.buildings[b].faces) {
      all.push_back(cut_face(grid, face, static_cast<std::int32_t>(b)));
      if (all.back().pieces.empty()) all.pop_back();
    }
  }
  return all;
}

}  // namespace townskin_case
