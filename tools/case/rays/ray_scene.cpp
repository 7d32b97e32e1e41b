#include "rays/ray_scene.hpp"

#include <algorithm>
#include <limits>
#include <string>

#include "report.hpp"

namespace townskin_case {

namespace {

bool finite(const Vector3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

unsigned mask_of_kind(PatchKind kind) {
  switch (kind) {
    case PatchKind::building:
    case PatchKind::land:
    case PatchKind::water:
      return kSolid;
    case PatchKind::tree:
      return kCrown;
    default:
      return kOpen;
  }
}

/// Whether rays can meet a triangle and start from it.
bool has_area(const Mesh& mesh, const std::array<std::uint32_t, 3>& corners) {
  for (const std::uint32_t c : corners) {
    if (c >= mesh.points.size() || !finite(mesh.points[c])) return false;
  }
  const Vector3& a = mesh.points[corners[0]];
  return length(cross(mesh.points[corners[1]] - a, mesh.points[corners[2]] - a)) > 0.0;
}

/// What the filter of first_against knows; Embree hands on the first part.
struct Against {
  RTCIntersectContext base;
  const RayScene* scene;
  std::int32_t group;
};

/// Lets pass faces of other groups that look against the ray.
void only_against(const RTCFilterFunctionNArguments* of) {
  const auto& context = *reinterpret_cast<const Against*>(of->context);
  const RTCHit hit = rtcGetHitFromHitN(of->hit, of->N, 0);
  const RTCRay ray = rtcGetRayFromRayN(of->ray, of->N, 0);
  const float along = hit.Ng_x * ray.dir_x + hit.Ng_y * ray.dir_y + hit.Ng_z * ray.dir_z;
  if (along < 0.0F && context.scene->group_of(hit.geomID, hit.primID) != context.group) return;
  of->valid[0] = 0;
}

}  // namespace

RayScene::RayScene(const Scene& scene) {
  take_points(scene.mesh);
  sort_triangles(scene);
  try {
    build();
  } catch (...) {
    release();
    throw;
  }
}

RayScene::~RayScene() { release(); }

void RayScene::release() {
  if (scene_ != nullptr) rtcReleaseScene(scene_);
  if (device_ != nullptr) rtcReleaseDevice(device_);
}

void RayScene::take_points(const Mesh& mesh) {
  constexpr double kFar = std::numeric_limits<double>::max();
  Vector3 low{kFar, kFar, kFar};
  Vector3 high{-kFar, -kFar, -kFar};
  for (const Vector3& p : mesh.points) {
    if (!finite(p)) continue;
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  if (low.x > high.x) low = high = {};
  middle_ = 0.5 * (low + high);
  const Vector3 half = 0.5 * (high - low);
  offset_ = std::max({half.x, half.y, half.z}) / (1 << 20);
  points_.reserve(3 * mesh.points.size() + 1);
  for (const Vector3& p : mesh.points) {
    const Vector3 q = p - middle_;
    for (const double c : {q.x, q.y, q.z}) points_.push_back(static_cast<float>(c));
  }
  points_.push_back(0.0F);  // Embree reads points by four numbers
}

void RayScene::sort_triangles(const Scene& scene) {
  for (const unsigned mask : {kSolid, kCrown, kOpen}) geometries_.push_back({mask, {}, {}});
  const Mesh& mesh = scene.mesh;
  const std::size_t groups = scene.groups.size();
  group_start_.assign(groups + 1, 0);
  std::vector<std::uint32_t> kept;
  for (std::uint32_t t = 0; t < mesh.triangles.size(); ++t) {
    if (!has_area(mesh, mesh.triangles[t])) continue;
    const std::int32_t group = mesh.group[t];
    const bool owned = group >= 0 && static_cast<std::size_t>(group) < groups;
    const auto g = static_cast<std::size_t>(owned ? group : 0);
    const unsigned mask = owned ? mask_of_kind(scene.groups[g].kind) : kSolid;
    Geometry& geometry = geometries_[mask == kSolid ? 0 : mask == kCrown ? 1 : 2];
    geometry.corners.push_back(mesh.triangles[t]);
    geometry.group.push_back(owned ? group : -1);
    if (!owned) continue;
    kept.push_back(t);
    ++group_start_[g + 1];
  }
  for (std::size_t g = 0; g < groups; ++g) group_start_[g + 1] += group_start_[g];
  std::vector<std::size_t> place(group_start_.begin(), group_start_.end() - 1);
  by_group_.resize(kept.size());
  for (const std::uint32_t t : kept) {
    by_group_[place[static_cast<std::size_t>(mesh.group[t])]++] = t;
  }
}

void RayScene::build() {
  device_ = rtcNewDevice("threads=1,set_affinity=0");
  if (device_ == nullptr) throw Fault("Embree does not start");
  scene_ = rtcNewScene(device_);
  // Robust: no ray slips through between triangles.
  rtcSetSceneFlags(scene_, static_cast<RTCSceneFlags>(RTC_SCENE_FLAG_ROBUST |
                                                      RTC_SCENE_FLAG_CONTEXT_FILTER_FUNCTION));
  for (std::size_t n = 0; n < geometries_.size(); ++n) {
    const Geometry& from = geometries_[n];
    if (from.corners.empty()) continue;
    RTCGeometry geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                               points_.data(), 0, 3 * sizeof(float), points_.size() / 3);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                               from.corners.data(), 0, sizeof(from.corners[0]),
                               from.corners.size());
    rtcSetGeometryMask(geometry, from.mask);
    rtcCommitGeometry(geometry);
    rtcAttachGeometryByID(scene_, geometry, static_cast<unsigned>(n));
    rtcReleaseGeometry(geometry);
  }
  rtcCommitScene(scene_);
  const RTCError error = rtcGetDeviceError(device_);
  if (error != RTC_ERROR_NONE) {
    throw Fault("Embree cannot build the scene: error " + std::to_string(error));
  }
}

std::int32_t RayScene::first_against(const Ray& ray, float length, std::int32_t group) const {
  Against context{{}, this, group};
  rtcInitIntersectContext(&context.base);
  context.base.filter = only_against;
  RTCRayHit of{};
  of.ray = {ray.start[0], ray.start[1], ray.start[2], 0.0F, ray.way[0], ray.way[1],
            ray.way[2],   0.0F,         length,       kAll, 0,          0};
  of.hit.geomID = RTC_INVALID_GEOMETRY_ID;
  rtcIntersect1(scene_, &context.base, &of);
  if (of.hit.geomID == RTC_INVALID_GEOMETRY_ID) return -1;
  return group_of(of.hit.geomID, of.hit.primID);
}

}  // namespace townskin_case
