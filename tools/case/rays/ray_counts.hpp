// How many rays of each group reach which other group: whole numbers, from which the view factors
// follow.
//
// Called by view_factors; the same for any number of threads.
#pragma once

#include <cstdint>
#include <vector>

#include "rays/parallel.hpp"
#include "rays/ray_scene.hpp"

namespace townskin_case {

/// Rays that go from a group to another.
struct Partner {
  std::int32_t to = 0;
  std::uint32_t rays = 0;
};

/// What became of the rays of a group.
struct RayFate {
  std::uint32_t sent = 0;
  std::uint32_t sky = 0;
  std::uint32_t below = 0;     ///< left the scene below the horizon
  std::uint32_t inside = 0;    ///< started inside a wall or below the ground: without a partner
  std::uint32_t in_crown = 0;  ///< started inside a crown, whose face they met from within
  std::uint32_t unlike = 0;    ///< pairs of neighbours of which just one reached the sky

  /// Rays that count.
  [[nodiscard]] std::uint32_t valid() const { return sent - inside; }
};

struct RayCounts {
  std::vector<std::vector<Partner>> row;  ///< of each group, by rising number
  std::vector<RayFate> fate;              ///< of each group
};

/// Sends `rays` rays from each group that has triangles, rounded up to whole packets of eight. Rays
/// that leave below the horizon go to the group `far`, to the sky where it is -1.
RayCounts count_rays(const Scene& scene, const RayScene& ray_scene, std::uint32_t rays,
                     std::uint64_t seed, std::int32_t far, unsigned threads,
                     const Progress& progress);

}  // namespace townskin_case
