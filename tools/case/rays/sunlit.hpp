// Sunlit fractions of the groups of a scene, by rays towards the sun.
//
// Buildings and the ground cast these shadows. Crowns do not, for the surface model sweeps the beam
// through them itself; but their faces take the buildings' shadows. The program calls this for all
// sun hours of a day, the writer puts the fractions into the Sun file.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "rays/parallel.hpp"
#include "rays/ray_scene.hpp"

namespace townskin_case {

struct SunSettings {
  std::uint32_t points = 16;  ///< on each group, rounded up to whole packets of eight
  std::uint64_t seed = 1;
  unsigned threads = 0;  ///< 0: one for each processor
};

/// The share of each group that directions towards the sun see, in rows of one direction: that of
/// group g under sun s stands at s * groups + g. It is 0 where the sun is not above the horizon or
/// stands behind the group's face, and for groups without triangles that cannot be shaded 1.
std::vector<float> sunlit_fractions(const Scene& scene, const RayScene& ray_scene,
                                    std::span<const Vector3> suns, const SunSettings& settings,
                                    const Progress& progress = {});

}  // namespace townskin_case
