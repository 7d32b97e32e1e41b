// Follows the rays of one group after the other; each thread has its own.
//
// Used by ray_counts alone. Rays run in packets of eight that keep close together. What a packet
// cannot tell, where faces lie on faces or start within walls, single rays look up.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "rays/ray_counts.hpp"
#include "rays/sampling.hpp"

namespace townskin_case {

/// Counts by group of one row, with no search: a counter for each group, and which were touched.
class RowCounter {
 public:
  explicit RowCounter(std::size_t groups) : count_(groups) {}

  void add(std::int32_t to) {
    if (count_[static_cast<std::size_t>(to)]++ == 0) touched_.push_back(to);
  }
  /// The row by rising number; the counters are 0 again.
  std::vector<Partner> take();

 private:
  std::vector<std::uint32_t> count_;
  std::vector<std::int32_t> touched_;
};

class Tracer {
 public:
  static constexpr std::uint32_t kLanes = 8;

  /// Rays that leave below the horizon go to the group `far`, to the sky where it is -1.
  Tracer(const Scene& scene, const RayScene& ray_scene, std::uint64_t seed, std::int32_t far);

  /// Sends a ray for each of the draws, whose number is a multiple of eight.
  void trace(std::size_t group, std::span<const Draw> draws, std::vector<Partner>& row,
             RayFate& fate);

 private:
  void send(const Draw* draws, const Draw& turn);
  bool arrive(std::uint32_t lane);
  std::int32_t end_of(std::uint32_t lane);
  std::int32_t meet_from_within(std::uint32_t lane, std::int32_t to, unsigned mask);
  std::int32_t leave_below(std::uint32_t lane);
  [[nodiscard]] std::int32_t lid_at(std::uint32_t lane) const;
  [[nodiscard]] std::int32_t lid(Vector3 start) const;
  [[nodiscard]] bool is_covered(std::span<const Draw> draws, const Draw& turn) const;

  const Scene& scene_;
  const RayScene& rays_;
  std::uint64_t seed_;
  std::int32_t far_;
  RTCIntersectContext context_{};
  RTCRayHit8 packet_{};
  FaceSampler sampler_;
  RowCounter counter_;
  std::int32_t group_ = 0;
  bool covered_ = false;  ///< the group has faces of others on its own
  RayFate fate_;
};

}  // namespace townskin_case
