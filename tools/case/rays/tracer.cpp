#include "rays/tracer.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace townskin_case {

namespace {

constexpr std::int32_t kSkyward = -1;  // in place of a group
constexpr std::int32_t kNowhere = -2;
alignas(32) constexpr int kEveryLane[Tracer::kLanes] = {-1, -1, -1, -1, -1, -1, -1, -1};

std::array<float, 3> single(const Vector3& v) {
  return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

}  // namespace

std::vector<Partner> RowCounter::take() {
  std::ranges::sort(touched_);
  std::vector<Partner> row;
  row.reserve(touched_.size());
  for (const std::int32_t to : touched_) {
    row.push_back({to, std::exchange(count_[static_cast<std::size_t>(to)], 0)});
  }
  touched_.clear();
  return row;
}

Tracer::Tracer(const Scene& scene, const RayScene& ray_scene, std::uint64_t seed, std::int32_t far)
    : scene_(scene), rays_(ray_scene), seed_(seed), far_(far), counter_(scene.groups.size()) {
  rtcInitIntersectContext(&context_);
  context_.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
  std::ranges::fill(packet_.ray.mask, kAll);
  std::ranges::fill(packet_.hit.instID[0], RTC_INVALID_GEOMETRY_ID);
}

void Tracer::trace(std::size_t group, std::span<const Draw> draws, std::vector<Partner>& row,
                   RayFate& fate) {
  if (!sampler_.turn_to(scene_, rays_, group)) return;
  group_ = static_cast<std::int32_t>(group);
  fate_ = {};
  const Draw turn = turn_of(seed_, group);
  covered_ = is_covered(draws, turn);
  for (std::size_t first = 0; first < draws.size(); first += kLanes) {
    send(&draws[first], turn);
    for (std::uint32_t lane = 0; lane < kLanes; lane += 2) {
      const bool one = arrive(lane);
      const bool other = arrive(lane + 1);
      if (one != other) ++fate_.unlike;
    }
  }
  row = counter_.take();
  fate = fate_;
}

void Tracer::send(const Draw* draws, const Draw& turn) {
  const Vector3 shift = rays_.offset() * sampler_.normal();
  for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
    const Draw& draw = draws[lane];
    const Vector3 way = sampler_.way(draw[0] ^ turn[0], draw[1] ^ turn[1]);
    const Vector3 start = sampler_.point(draw[2] ^ turn[2], draw[3] ^ turn[3]) + shift;
    packet_.ray.org_x[lane] = static_cast<float>(start.x);
    packet_.ray.org_y[lane] = static_cast<float>(start.y);
    packet_.ray.org_z[lane] = static_cast<float>(start.z);
    packet_.ray.dir_x[lane] = static_cast<float>(way.x);
    packet_.ray.dir_y[lane] = static_cast<float>(way.y);
    packet_.ray.dir_z[lane] = static_cast<float>(way.z);
    packet_.ray.tfar[lane] = std::numeric_limits<float>::infinity();
    packet_.hit.geomID[lane] = RTC_INVALID_GEOMETRY_ID;
  }
  rtcIntersect8(kEveryLane, rays_.handle(), &context_, &packet_);
}

/// Counts a ray where it arrives; true for the sky.
bool Tracer::arrive(std::uint32_t lane) {
  ++fate_.sent;
  const std::int32_t to = end_of(lane);
  if (to == kNowhere) {
    ++fate_.inside;
  } else if (to == kSkyward) {
    ++fate_.sky;
  } else {
    counter_.add(to);
  }
  return to == kSkyward;
}

std::int32_t Tracer::end_of(std::uint32_t lane) {
  if (covered_) {
    const std::int32_t on_top = lid_at(lane);
    if (on_top >= 0) return on_top;
  }
  const RTCHit8& hit = packet_.hit;
  const unsigned geometry = hit.geomID[lane];
  if (geometry == RTC_INVALID_GEOMETRY_ID) {
    return packet_.ray.dir_z[lane] >= 0.0F ? kSkyward : leave_below(lane);
  }
  const float along = hit.Ng_x[lane] * packet_.ray.dir_x[lane] +
                      hit.Ng_y[lane] * packet_.ray.dir_y[lane] +
                      hit.Ng_z[lane] * packet_.ray.dir_z[lane];
  const std::int32_t to = rays_.group_of(geometry, hit.primID[lane]);
  if (along < 0.0F) return to >= 0 ? to : kNowhere;
  return meet_from_within(lane, to, rays_.mask_of(geometry));
}

/// A ray that meets a face from within started inside something: behind a face that lies on its
/// own, which then is what it sees, or inside a crown, or in a wall.
std::int32_t Tracer::meet_from_within(std::uint32_t lane, std::int32_t to, unsigned mask) {
  const std::int32_t on_top = lid_at(lane);
  if (on_top >= 0) return on_top;
  if (mask != kCrown) return kNowhere;
  ++fate_.in_crown;
  return to;
}

std::int32_t Tracer::leave_below(std::uint32_t lane) {
  const std::int32_t on_top = lid_at(lane);
  if (on_top >= 0) return on_top;
  ++fate_.below;
  return far_ >= 0 ? far_ : kSkyward;
}

/// The group whose face lies on that of this group where a ray starts, and looks at it; -1: none.
std::int32_t Tracer::lid_at(std::uint32_t lane) const {
  return lid({packet_.ray.org_x[lane], packet_.ray.org_y[lane], packet_.ray.org_z[lane]});
}

/// From a start before the face: through the face from behind, as far as beyond the start.
std::int32_t Tracer::lid(Vector3 start) const {
  const Vector3& normal = sampler_.normal();
  const Vector3 behind = start - 3.0 * rays_.offset() * normal;
  return rays_.first_against({single(behind), single(normal)},
                             4.0F * static_cast<float>(rays_.offset()), group_);
}

/// Whether a face of another group lies on this one at any of some points.
bool Tracer::is_covered(std::span<const Draw> draws, const Draw& turn) const {
  constexpr std::size_t kLooks = 16;
  const Vector3 shift = rays_.offset() * sampler_.normal();
  for (std::size_t n = 0; n < kLooks; ++n) {
    const Draw& draw = draws[n * draws.size() / kLooks];
    const Vector3 point = sampler_.point(draw[2] ^ turn[2], draw[3] ^ turn[3]);
    if (lid(point + shift) >= 0) return true;
  }
  return false;
}

}  // namespace townskin_case
