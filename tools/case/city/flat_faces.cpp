#include "city/flat_faces.hpp"

#include <algorithm>
#include <map>

#include "city/body_checks.hpp"
#include "city/ring_repairs.hpp"

namespace townskin_case {
namespace {

constexpr double flat_enough = 0.01;  // [m] off the plane of a face
constexpr double upright = 0.01;      // share of a face's area seen from above: less is a wall

Vector3 mean_of(const Ring3& ring) {
  Vector3 sum;
  for (const Vector3& p : ring) sum = sum + p;
  return (1.0 / static_cast<double>(ring.size())) * sum;
}

/// How far the corners of the outer ring lie off the mean plane at most.
double off_plane(const FlatFace& face) {
  const Vector3 mean = mean_of(face.rings.front());
  double farthest = 0.0;
  for (const Vector3& p : face.rings.front()) {
    farthest = std::max(farthest, std::abs(dot(face.normal, p - mean)));
  }
  return farthest;
}

std::optional<FlatFace> flat_face(const RawPolygon& raw, const Origin& origin, Report& report) {
  FlatFace face;
  face.role = raw.role;
  std::size_t repeats = 0;
  for (const Ring3& ring : raw.rings) {
    Ring3 clean = without_repeats(ring, repeats);
    if (clean.size() >= 3) {
      face.rings.push_back(std::move(clean));
    } else if (face.rings.empty()) {
      break;
    }
  }
  if (repeats > 0) report.repair("repeated points of a ring removed", origin);
  if (!face.rings.empty()) {
    const Vector3 sum = area_vector(face.rings.front());
    face.size = length(sum);
    if (face.size > 1e-6) {
      face.normal = (1.0 / face.size) * sum;
      return face;
    }
  }
  report.repair("face without area dropped", origin);
  return std::nullopt;
}

/// The face as triangles, which are flat; the face itself where it cannot be cut.
std::vector<FlatFace> triangles_of(const Geos& geos, const FlatFace& face) {
  std::map<std::pair<double, double>, double> heights;
  for (const Ring3& ring : face.rings) {
    for (const Vector3& p : ring) heights[{p.x, p.y}] = p.z;
  }
  try {
    const auto shape = geos.polygon(plan_of(face.rings));
    if (GEOSisValid_r(geos.context(), shape.get()) != 1) return {face};
    const auto cut = geos.own(GEOSConstrainedDelaunayTriangulation_r(geos.context(), shape.get()));
    std::vector<FlatFace> triangles;
    for (const Polygon2& polygon : geos.polygons(cut.get())) {
      FlatFace& triangle = triangles.emplace_back();
      Ring3& ring = triangle.rings.emplace_back();
      for (const Point2& p : polygon.outer) ring.push_back({p.x, p.y, heights.at({p.x, p.y})});
      triangle.role = face.role;
      const Vector3 sum = area_vector(ring);
      triangle.size = length(sum);
      triangle.normal = (1.0 / triangle.size) * sum;
    }
    return triangles;
  } catch (const std::exception&) {
    return {face};
  }
}

}  // namespace

std::vector<Ring2> plan_of(const std::vector<Ring3>& rings) {
  std::vector<Ring2> plan;
  for (const Ring3& ring : rings) {
    Ring2& flat = plan.emplace_back();
    for (const Vector3& p : ring) flat.push_back({p.x, p.y});
  }
  return plan;
}

Plane plane_of(const FlatFace& face) {
  const Vector3 mean = mean_of(face.rings.front());
  const Vector3& n = face.normal;
  const bool level = std::abs(n.x) < 1e-9 && std::abs(n.y) < 1e-9;
  const double a = level ? 0.0 : -n.x / n.z, b = level ? 0.0 : -n.y / n.z;
  return {a, b, mean.z - a * mean.x - b * mean.y};
}

std::vector<FlatFace> flat_faces(const Geos& geos, const Feature& feature, Report& report) {
  std::vector<FlatFace> faces;
  for (const RawPolygon& raw : feature.polygons) {
    auto face = flat_face(raw, feature.origin, report);
    if (!face) continue;
    const bool flat = off_plane(*face) <= flat_enough;
    if (!flat) report.repair("face off its plane made flat", feature.origin);
    if (std::abs(face->normal.z) < upright) continue;
    if (flat) {
      faces.push_back(std::move(*face));
    } else {
      for (FlatFace& triangle : triangles_of(geos, *face)) {
        if (triangle.size > 1e-6 && std::abs(triangle.normal.z) >= upright) {
          faces.push_back(std::move(triangle));
        }
      }
    }
  }
  std::stable_sort(faces.begin(), faces.end(),
                   [](const FlatFace& a, const FlatFace& b) { return a.size > b.size; });
  return faces;
}

}  // namespace townskin_case
