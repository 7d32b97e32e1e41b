#include "rays/ray_counts.hpp"

#include <algorithm>
#include <memory>

#include "rays/tracer.hpp"

namespace townskin_case {

RayCounts count_rays(const Scene& scene, const RayScene& ray_scene, std::uint32_t rays,
                     std::uint64_t seed, std::int32_t far, unsigned threads,
                     const Progress& progress) {
  constexpr std::size_t kRun = 64;
  const std::size_t groups = scene.groups.size();
  const std::uint32_t packets = (std::max(rays, 1U) + Tracer::kLanes - 1) / Tracer::kLanes;
  const std::vector<Draw> draws = well_spread(packets * Tracer::kLanes);
  RayCounts counts{std::vector<std::vector<Partner>>(groups), std::vector<RayFate>(groups)};
  std::vector<std::unique_ptr<Tracer>> tracers(threads_of(threads));
  in_parallel(
      threads, groups, kRun,
      [&](unsigned thread, std::size_t first, std::size_t end) {
        auto& tracer = tracers[thread];
        if (!tracer) tracer = std::make_unique<Tracer>(scene, ray_scene, seed, far);
        for (std::size_t g = first; g < end; ++g) {
          tracer->trace(g, draws, counts.row[g], counts.fate[g]);
        }
      },
      progress);
  return counts;
}

}  // namespace townskin_case
