#include "city/bodies.hpp"

#include <algorithm>

#include "city/body_checks.hpp"
#include "city/flat_faces.hpp"
#include "city/footprint_heights.hpp"
#include "city/ring_repairs.hpp"

namespace townskin_case {
namespace {

constexpr double same_plane = 0.005;  // [m]
constexpr double steep = 0.17;        // 80 degrees: what is steeper and unnamed counts as wall

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
