#include "bodies.hpp"

#include <algorithm>
#include <map>

#include "body_checks.hpp"
#include "footprint_heights.hpp"
#include "ring_repairs.hpp"

namespace townskin_case {
namespace {

constexpr double flat_enough = 0.01;  // [m] off the plane of a face
constexpr double same_plane = 0.005;  // [m]
constexpr double upright = 0.01;      // share of a face's area seen from above: less is a wall
constexpr double steep = 0.17;        // 80 degrees: what is steeper and unnamed counts as wall

/// A face with its plane.
struct FlatFace {
  std::vector<Ring3> rings;
  FaceRole role = FaceRole::unknown;
  Vector3 normal;  ///< of length 1, as the ring turns
  double size = 0.0;
};

std::vector<Ring2> plan_of(const std::vector<Ring3>& rings) {
  std::vector<Ring2> plan;
  for (const Ring3& ring : rings) {
    Ring2& flat = plan.emplace_back();
    for (const Vector3& p : ring) flat.push_back({p.x, p.y});
  }
  return plan;
}

Vector3 mean_of(const Ring3& ring) {
  Vector3 sum;
  for (const Vector3& p : ring) sum = sum + p;
  return (1.0 / static_cast<double>(ring.size())) * sum;
}

Plane plane_of(const FlatFace& face) {
  const Vector3 mean = mean_of(face.rings.front());
  const Vector3& n = face.normal;
  const bool level = std::abs(n.x) < 1e-9 && std::abs(n.y) < 1e-9;
  const double a = level ? 0.0 : -n.x / n.z, b = level ? 0.0 : -n.y / n.z;
  return {a, b, mean.z - a * mean.x - b * mean.y};
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

/// Pieces of a body, in which faces of one plane share it.
class Pieces {
 public:
  explicit Pieces(std::vector<RoofPiece>& into) : into_(into) {}

  void add(const FlatFace& face) {
    RoofPiece piece;
    piece.rings = plan_of(face.rings);
    piece.plane = plane_of(face);
    const bool wall = face.role == FaceRole::wall ||
                      (face.role == FaceRole::unknown && std::abs(face.normal.z) < steep);
    piece.kind = wall ? FaceKind::wall : FaceKind::roof;
    for (const RoofPiece& known : firsts_) {
      if (known.kind == piece.kind && agree(known.plane, face)) {
        piece.plane = known.plane;
        piece.surface = known.surface;
        into_.push_back(std::move(piece));
        return;
      }
    }
    piece.surface = static_cast<std::int32_t>(firsts_.size());
    firsts_.push_back({0, piece.surface, piece.kind, piece.plane, {}});
    into_.push_back(std::move(piece));
  }

 private:
  static bool agree(const Plane& plane, const FlatFace& face) {
    return std::all_of(face.rings.front().begin(), face.rings.front().end(), [&](const Vector3& p) {
      return std::abs(plane.at({p.x, p.y}) - p.z) < same_plane;
    });
  }
  std::vector<RoofPiece>& into_;
  std::vector<RoofPiece> firsts_;
};

double lowest_point(const std::vector<RawPolygon>& faces, bool ground_only) {
  double low = HUGE_VAL;
  for (const RawPolygon& face : faces) {
    if (ground_only && face.role != FaceRole::ground) continue;
    for (const Ring3& ring : face.rings) {
      for (const Vector3& p : ring) low = std::min(low, p.z);
    }
  }
  return low;
}

double highest_point(const std::vector<RawPolygon>& faces) {
  double high = -HUGE_VAL;
  for (const RawPolygon& face : faces) {
    for (const Ring3& ring : face.rings) {
      for (const Vector3& p : ring) high = std::max(high, p.z);
    }
  }
  return high;
}

/// Level of the building's own ground.
double ground_level(const Feature& feature, const CityInput& input, Report& report) {
  const double low = lowest_point(feature.polygons, false);
  const double high = highest_point(feature.polygons);
  double level = lowest_point(feature.polygons, true);
  const auto told = first_length(feature.attributes, input.names.ground_level);
  if (told && *told > low && *told < high) level = *told;
  if (!(level < high)) level = low;
  if (level > low + near_enough) report.repair("walls below the ground cut off", feature.origin);
  return level;
}

/// What is amiss with the body as a whole.
void check_body(const Feature& feature, Draft& draft, Report& report) {
  if (!feature.solid) return;
  const bool closed = is_closed(feature.polygons);
  const double volume = volume_above(feature.polygons, 0.0);
  if (volume < 0.0) report.repair("body turned inside out", feature.origin);
  if (closed) {
    draft.body_volume = std::abs(volume);
  } else {
    report.repair("open body closed", feature.origin);
  }
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

Draft started(const Feature& feature) {
  Draft draft;
  draft.building.origin = feature.origin;
  draft.building.attributes = feature.attributes;
  return draft;
}

/// Raises all that lies level to the height: for a body without a roof.
void raise_outline(const std::vector<FlatFace>& faces, double height, Draft& draft) {
  for (const FlatFace& face : faces) {
    draft.pieces.push_back({0, 0, FaceKind::roof, {0.0, 0.0, height}, plan_of(face.rings)});
  }
}

}  // namespace

Draft draft_of_footprint(const Geos& geos, const Feature& feature, double height, Report& report) {
  Draft draft = started(feature);
  for (const RawPolygon& outline : feature.polygons) {
    for (Polygon2& polygon :
         repaired_outline(geos, outline, feature.rings_closed, feature.origin, report)) {
      std::vector<Ring2> rings{std::move(polygon.outer)};
      std::move(polygon.holes.begin(), polygon.holes.end(), std::back_inserter(rings));
      draft.pieces.push_back({0, 0, FaceKind::roof, {0.0, 0.0, height}, std::move(rings)});
    }
  }
  return draft;
}

Draft draft_of_body(const Geos& geos, const Feature& given, const CityInput& input,
                    Report& report) {
  Feature feature = given;
  Draft draft = started(feature);
  const double level = ground_level(feature, input, report);
  for (RawPolygon& face : feature.polygons) {
    for (Ring3& ring : face.rings) {
      for (Vector3& p : ring) p.z -= level;
    }
  }
  check_body(feature, draft, report);
  const auto faces = flat_faces(geos, feature, report);
  Pieces pieces(draft.pieces);
  for (const FlatFace& face : faces) {
    const auto highest =
        std::max_element(face.rings.front().begin(), face.rings.front().end(),
                         [](const Vector3& a, const Vector3& b) { return a.z < b.z; });
    if (highest->z > near_enough && face.role != FaceRole::ground) pieces.add(face);
  }
  const double height = highest_point(feature.polygons);
  if (draft.pieces.empty() && !faces.empty() && height > near_enough) {
    report.repair("roof lacking: the outline raised to the top", feature.origin);
    raise_outline(faces, height, draft);
  }
  if (draft.pieces.empty()) report.leave_out("no roof and no outline", feature.origin);
  return draft;
}

}  // namespace townskin_case
