#include "city/ring_repairs.hpp"

#include <algorithm>

#include "shapes/plan.hpp"

namespace townskin_case {
namespace {

constexpr double same_point = 1e-3;     // [m]
constexpr double smallest_area = 1e-3;  // [m2]
/// A ring of more points than any building needs loses those that stand on its line anyway.
constexpr std::size_t many_points = 10000;
constexpr double on_the_line = 0.01;  // [m]

bool same(const Vector3& a, const Vector3& b) {
  return std::abs(a.x - b.x) < same_point && std::abs(a.y - b.y) < same_point &&
         std::abs(a.z - b.z) < same_point;
}

Ring2 plan_of(const Ring3& ring) {
  Ring2 plan;
  plan.reserve(ring.size());
  for (const Vector3& p : ring) plan.push_back({p.x, p.y});
  return plan;
}

/// The ring with what can be seen from itself alone set right.
Ring2 repaired_ring(Ring3 ring, bool outer, bool closed, const Origin& origin, Report& report) {
  if (closed && ring.size() > 2) {
    if (same(ring.front(), ring.back())) {
      ring.pop_back();
    } else {
      report.repair("ring closed", origin);
    }
  }
  std::size_t repeats = 0;
  Ring2 plan = plan_of(without_repeats(ring, repeats));
  if (repeats > 0) report.repair("repeated points of a ring removed", origin);
  const double size = signed_area(plan);
  if (size != 0.0 && (size > 0.0) != outer) {
    std::reverse(plan.begin() + 1, plan.end());
    report.repair("ring turned round", origin);
  }
  return plan;
}

}  // namespace

Ring3 without_repeats(const Ring3& ring, std::size_t& repeats) {
  Ring3 kept;
  for (const Vector3& p : ring) {
    if (!kept.empty() && same(kept.back(), p)) {
      ++repeats;
    } else {
      kept.push_back(p);
    }
  }
  while (kept.size() > 1 && same(kept.front(), kept.back())) {
    kept.pop_back();
    ++repeats;
  }
  return kept;
}

std::vector<Polygon2> repaired_outline(const Geos& geos, const RawPolygon& outline, bool closed,
                                       const Origin& origin, Report& report) {
  std::vector<Ring2> rings;
  for (const Ring3& raw : outline.rings) {
    Ring2 ring = repaired_ring(raw, rings.empty(), closed, origin, report);
    if (ring.size() >= 3) {
      rings.push_back(std::move(ring));
    } else if (rings.empty()) {
      break;
    } else {
      report.repair("hole without area dropped", origin);
    }
  }
  std::vector<Polygon2> polygons;
  if (!rings.empty()) {
    auto shape = geos.polygon(rings);
    if (rings.front().size() > many_points) {
      shape = geos.own(GEOSSimplify_r(geos.context(), shape.get(), on_the_line));
      report.repair("outline of more than 10000 points thinned to 0.01 m", origin);
    }
    if (GEOSisValid_r(geos.context(), shape.get()) != 1) {
      GEOSMakeValidParams* how = GEOSMakeValidParams_create_r(geos.context());
      GEOSMakeValidParams_setMethod_r(geos.context(), how, GEOS_MAKE_VALID_STRUCTURE);
      GEOSMakeValidParams_setKeepCollapsed_r(geos.context(), how, 0);
      GEOSGeometry* valid = GEOSMakeValidWithParams_r(geos.context(), shape.get(), how);
      GEOSMakeValidParams_destroy_r(geos.context(), how);
      shape = geos.own(valid);
      report.repair("self-crossing outline set right", origin);
    }
    polygons = geos.polygons(shape.get());
  }
  std::erase_if(polygons, [](const Polygon2& p) { return area(p) < smallest_area; });
  if (polygons.empty()) report.leave_out("outline without area", origin);
  return polygons;
}

}  // namespace townskin_case
