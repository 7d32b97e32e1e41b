#include "city/projection.hpp"

#include <proj.h>

#include <array>
#include <cmath>
#include <cstdio>

#include "city/crs_name.hpp"

namespace townskin_case {
namespace {

std::string local_system(const Place& centre) {
  std::array<char, 200> text{};
  std::snprintf(text.data(), text.size(),
                "+proj=tmerc +lat_0=%.12f +lon_0=%.12f +k=1 +x_0=0 +y_0=0 +datum=WGS84 +units=m "
                "+no_defs +type=crs",
                centre.latitude, centre.longitude);
  return text.data();
}

std::optional<Point2> transformed(PJ* projection, const Point2& point) {
  proj_errno_reset(projection);
  const PJ_COORD out = proj_trans(projection, PJ_FWD, proj_coord(point.x, point.y, 0.0, HUGE_VAL));
  if (!std::isfinite(out.xy.x) || !std::isfinite(out.xy.y)) return std::nullopt;
  return Point2{out.xy.x, out.xy.y};
}

/// Metres in the unit of an axis of the system; 1 where it has none or turns.
double unit_of_axis(PJ_CONTEXT* context, const PJ* crs, int axis) {
  PJ* system = proj_crs_get_coordinate_system(context, crs);
  if (system == nullptr) return 1.0;
  double factor = 1.0;
  const char* name = nullptr;
  const int count = proj_cs_get_axis_count(context, system);
  const bool found =
      count > 0 && proj_cs_get_axis_info(context, system, std::min(axis, count - 1), nullptr,
                                         nullptr, nullptr, &factor, &name, nullptr, nullptr) != 0;
  const bool turns = found && name != nullptr && std::string(name).find("deg") != std::string::npos;
  proj_destroy(system);
  return found && !turns && factor > 0.0 ? factor : 1.0;
}

}  // namespace

void CoordinateSystem::Free::operator()(pj_ctx* context) const { proj_context_destroy(context); }
void CoordinateSystem::Free::operator()(PJconsts* projection) const { proj_destroy(projection); }

CoordinateSystem::CoordinateSystem(const std::string& name, const Origin& origin)
    : name_(crs_key(name)), context_(proj_context_create()) {
  PJ_CONTEXT* context = context_.get();
  proj_log_level(context, PJ_LOG_NONE);
  proj_context_set_enable_network(context, 0);
  plane_.reset(proj_create(context, name_.c_str()));
  if (!plane_ || proj_is_crs(plane_.get()) == 0) {
    Report::fault("unknown coordinate system '" + name + "'", origin);
  }
  height_unit_ = unit_of_axis(context, plane_.get(), 2);
  if (proj_get_type(plane_.get()) == PJ_TYPE_COMPOUND_CRS) {
    const Handle heights(proj_crs_get_sub_crs(context, plane_.get(), 1));
    if (heights) height_unit_ = unit_of_axis(context, heights.get(), 0);
    plane_.reset(proj_crs_get_sub_crs(context, plane_.get(), 0));
  }
  to_degrees_ = to("OGC:CRS84");
  if (!to_degrees_) {
    Report::fault("the coordinate system '" + name + "' names no place on the earth", origin);
  }
}

CoordinateSystem::Handle CoordinateSystem::to(const std::string& target) const {
  PJ_CONTEXT* context = context_.get();
  const Handle other(proj_create(context, target.c_str()));
  if (!plane_ || !other) return nullptr;
  const Handle raw(
      proj_create_crs_to_crs_from_pj(context, plane_.get(), other.get(), nullptr, nullptr));
  // x east and y north whatever order the system's own axes have: so files have it.
  return Handle(raw ? proj_normalize_for_visualization(context, raw.get()) : nullptr);
}

std::optional<Place> CoordinateSystem::place(const Point2& point) const {
  const auto degrees = transformed(to_degrees_.get(), point);
  if (!degrees || std::abs(degrees->y) > 90.0) return std::nullopt;
  return Place{degrees->y, degrees->x};
}

bool CoordinateSystem::meant_for(const Place& place) const {
  double west = 0.0, south = 0.0, east = 0.0, north = 0.0;
  if (proj_get_area_of_use(context_.get(), plane_.get(), &west, &south, &east, &north, nullptr) ==
          0 ||
      west < -180.5) {
    return true;
  }
  constexpr double rim = 0.5;       // [degree] data reach beyond an area without harm
  const bool across = west > east;  // over the line of dates
  const bool inside = across ? place.longitude >= west - rim || place.longitude <= east + rim
                             : place.longitude >= west - rim && place.longitude <= east + rim;
  return inside && place.latitude >= south - rim && place.latitude <= north + rim;
}

LocalProjection::LocalProjection(const CoordinateSystem& from, const Place& centre)
    : projection_(from.to(local_system(centre))) {
  if (!projection_) Report::fault("no way from '" + from.name() + "' to local metres", {});
}

std::optional<Point2> LocalProjection::operator()(const Point2& point) const {
  return transformed(projection_.get(), point);
}

Place place_of_local(const Place& centre, const Point2& point) {
  const CoordinateSystem local(local_system(centre), {});
  return local.place(point).value_or(centre);
}

}  // namespace townskin_case
