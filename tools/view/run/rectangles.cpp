// Rectangles of the patches' areas at the faces of their cells, for runs without true shapes.
#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include "run/shapes.hpp"

namespace townskin_view {

namespace {

using Vector = std::array<double, 3>;

/// A face of a cell: its middle, its sides, and the patches on it.
using FaceKey = std::tuple<std::int32_t, std::int32_t, std::int32_t, int, int, bool>;

struct Face {
  Vector middle{};
  std::array<double, 3> sides{};  ///< of the cell, along x, y, z
  int axis = 0;
};

Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector unit(const Vector& v) {
  const double size = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  return size > 0.0 ? Vector{v[0] / size, v[1] / size, v[2] / size} : Vector{0.0, 0.0, 1.0};
}

/// Axis along which a normal looks most.
int axis_of(const Vector& normal) {
  int axis = 2;
  for (int a = 0; a < 2; ++a) {
    if (std::abs(normal[static_cast<std::size_t>(a)]) >
        std::abs(normal[static_cast<std::size_t>(axis)])) {
      axis = a;
    }
  }
  return axis;
}

/// Coordinate of the line between the cells n and n+1 of an axis (n from 0); cells that are divided
/// lie evenly within theirs.
double line_at(const Grid& grid, std::size_t axis, std::int32_t n, std::int32_t division) {
  const std::vector<double>& nodes = grid.nodes[axis];
  const double place = static_cast<double>(n) / division;
  if (nodes.size() < 2) return place;
  const double last = static_cast<double>(nodes.size()) - 2.0;
  const double below = std::clamp(std::floor(place), 0.0, last);
  const auto b = static_cast<std::size_t>(below);
  return nodes[b] + (place - below) * (nodes[b + 1] - nodes[b]);
}

/// The face that a patch lies on. Of a surface the cell is the air in front of it, of leaves the
/// leaves behind it; k counts from 0.
Face face_of(const RunModel& run, std::size_t p) {
  const bool leaves = run.patches.kind[p] == Kind::leaves;
  const Vector& normal = run.patches.normal[p];
  Face face;
  face.axis = axis_of(normal);
  for (std::size_t a = 0; a < 3; ++a) {
    const std::int32_t division = leaves && a < 2 ? run.grid.leaf_division : 1;
    std::int32_t n = run.patches.cell[p][a];
    if (a < 2) n += run.grid.offset[a] * division - 1;
    const double low = line_at(run.grid, a, n, division);
    const double high = line_at(run.grid, a, n + 1, division);
    face.sides[a] = high - low;
    face.middle[a] = 0.5 * (low + high);
    if (static_cast<int>(a) != face.axis) continue;
    const bool at_high = (normal[a] > 0.0) == leaves;
    face.middle[a] = at_high ? high : low;
  }
  return face;
}

FaceKey key_of(const RunModel& run, std::size_t p) {
  const auto& cell = run.patches.cell[p];
  const int axis = axis_of(run.patches.normal[p]);
  return {cell[0],
          cell[1],
          cell[2],
          axis,
          run.patches.normal[p][static_cast<std::size_t>(axis)] > 0.0 ? 1 : 0,
          run.patches.kind[p] == Kind::leaves};
}

/// Patches of one face, those of glass last.
using Members = std::vector<std::size_t>;

std::map<FaceKey, Members> by_face(const RunModel& run) {
  std::map<FaceKey, Members> faces;
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    if (run.patches.kind[p] != Kind::far_boundary) faces[key_of(run, p)].push_back(p);
  }
  for (auto& [key, members] : faces) {
    std::stable_partition(members.begin(), members.end(),
                          [&](std::size_t p) { return run.patches.kind[p] != Kind::window; });
  }
  return faces;
}

/// Two directions in the plane of a patch, the first level, such that u x v is its normal.
struct Plane {
  Vector u, v;
};

Plane plane_of(const Vector& normal) {
  const Vector n = unit(normal);
  const bool level = std::abs(n[2]) > 0.999;
  const Vector u = level ? Vector{1.0, 0.0, 0.0} : unit(cross({0.0, 0.0, 1.0}, n));
  return {u, cross(n, u)};
}

/// Part of a rectangle: from `low` to `high` of its sides, both from -0.5 to 0.5.
struct Window {
  std::array<double, 2> low{-0.5, -0.5}, high{0.5, 0.5};
};

void add(const Face& face, const Plane& plane, double width, double height, const Window& part,
         bool hole, Shapes& shapes) {
  shapes.rings.push_back({static_cast<std::uint32_t>(shapes.xyz.size() / 3), 4, hole});
  std::array<std::array<double, 2>, 4> corners{{{part.low[0], part.low[1]},
                                                {part.high[0], part.low[1]},
                                                {part.high[0], part.high[1]},
                                                {part.low[0], part.high[1]}}};
  if (hole) std::ranges::reverse(corners);
  for (const auto& corner : corners) {
    for (std::size_t a = 0; a < 3; ++a) {
      shapes.xyz.push_back(face.middle[a] + corner[0] * width * plane.u[a] +
                           corner[1] * height * plane.v[a]);
    }
  }
}

/// The sides of a rectangle of `area`, formed as the cell's face.
std::array<double, 2> sides_of(const Face& face, double area) {
  double width = face.axis == 0 ? face.sides[1] : face.sides[0];
  double height = face.axis == 2 ? face.sides[1] : face.sides[2];
  if (!(width > 0.0) || !(height > 0.0)) width = height = 1.0;
  const double factor = std::sqrt(area / (width * height));
  return {width * factor, height * factor};
}

/// How a patch is cut from the rectangle of all patches of its face.
struct Cut {
  double all = 0.0;  ///< area of that rectangle [m2]
  Window part;
  double inner = 0.0;  ///< half a side of the hole for the glass within; 0: no hole
};

/// Walls side by side, or glass in the middle of its wall.
void cut_face(const Patches& patches, const Members& members, std::vector<Cut>& cuts) {
  double all = 0.0, before = 0.0;
  std::size_t panes = 0;
  for (const std::size_t p : members) {
    all += patches.area[p];
    panes += patches.kind[p] == Kind::window ? 1U : 0U;
  }
  const bool nested = panes > 0 && members.size() == panes + 1;
  for (const std::size_t p : members) {
    const double behind = std::max(0.0, all - before - patches.area[p]);
    Cut& cut = cuts[p];
    cut.all = all;
    if (nested) {
      const double half = 0.5 * std::sqrt((all - before) / all);
      cut.part = {{-half, -half}, {half, half}};
      cut.inner = p == members.back() ? 0.0 : 0.5 * std::sqrt(behind / all);
    } else {
      cut.part.low[0] = before / all - 0.5;
      cut.part.high[0] = (before + patches.area[p]) / all - 0.5;
    }
    before += patches.area[p];
  }
}

void draw_patch(const RunModel& run, std::size_t p, const Cut& cut, Shapes& shapes) {
  const Face face = face_of(run, p);
  const auto [width, height] = sides_of(face, cut.all);
  const Plane plane = plane_of(run.patches.normal[p]);
  add(face, plane, width, height, cut.part, false, shapes);
  if (cut.inner <= 0.0) return;
  add(face, plane, width, height, {{-cut.inner, -cut.inner}, {cut.inner, cut.inner}}, true, shapes);
}

}  // namespace

void draw_rectangles(RunModel& run) {
  run.shapes = {};
  std::vector<Cut> cuts(run.patches.size());
  for (const auto& [key, members] : by_face(run)) cut_face(run.patches, members, cuts);
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    run.shapes.first_ring.push_back(static_cast<std::uint32_t>(run.shapes.rings.size()));
    if (run.patches.kind[p] == Kind::far_boundary) continue;
    draw_patch(run, p, cuts[p], run.shapes);
  }
  run.shapes.first_ring.push_back(static_cast<std::uint32_t>(run.shapes.rings.size()));
}

}  // namespace townskin_view
