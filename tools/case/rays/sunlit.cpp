#include "rays/sunlit.hpp"

#include <algorithm>
#include <limits>

#include "rays/sampling.hpp"

namespace townskin_case {

namespace {

constexpr std::uint32_t kLanes = 8;
alignas(32) constexpr int kEveryLane[kLanes] = {-1, -1, -1, -1, -1, -1, -1, -1};

/// Looks at suns from points on one group after the other; each thread has its own.
class SunSeeker {
 public:
  SunSeeker(const Scene& scene, const RayScene& ray_scene, std::uint64_t seed)
      : scene_(scene), rays_(ray_scene), seed_(seed) {
    rtcInitIntersectContext(&context_);
    context_.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
  }

  /// Puts the fractions of a group under all suns into every `groups`-th place from `fraction` on.
  void seek(std::size_t group, std::span<const Draw> draws, std::span<const Vector3> suns,
            float* fraction) {
    const std::size_t groups = scene_.groups.size();
    const bool has_face = sampler_.turn_to(scene_, rays_, group);
    if (has_face) take_points(draws, turn_of(seed_, group));
    const Vector3 normal = has_face ? sampler_.normal() : scene_.groups[group].normal;
    for (std::size_t s = 0; s < suns.size(); ++s) {
      float& here = fraction[s * groups + group];
      here = 0.0F;
      if (!(suns[s].z > 0.0) || !(dot(normal, suns[s]) > 0.0)) continue;
      here = has_face ? lit_share(suns[s]) : 1.0F;
    }
  }

 private:
  void take_points(std::span<const Draw> draws, const Draw& turn) {
    starts_.clear();
    const Vector3 shift = rays_.offset() * sampler_.normal();
    for (const Draw& draw : draws) {
      // The first two coordinates of the set are its best spread ones.
      starts_.push_back(sampler_.point(draw[0] ^ turn[0], draw[1] ^ turn[1]) + shift);
    }
  }

  [[nodiscard]] float lit_share(const Vector3& sun) {
    std::size_t lit = 0;
    for (std::size_t first = 0; first < starts_.size(); first += kLanes) {
      RTCRay8 packet;
      for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
        const Vector3& start = starts_[first + lane];
        packet.org_x[lane] = static_cast<float>(start.x);
        packet.org_y[lane] = static_cast<float>(start.y);
        packet.org_z[lane] = static_cast<float>(start.z);
        packet.dir_x[lane] = static_cast<float>(sun.x);
        packet.dir_y[lane] = static_cast<float>(sun.y);
        packet.dir_z[lane] = static_cast<float>(sun.z);
        packet.tnear[lane] = 0.0F;
        packet.tfar[lane] = std::numeric_limits<float>::infinity();
        packet.time[lane] = 0.0F;
        packet.mask[lane] = kSolid;
        packet.id[lane] = lane;
        packet.flags[lane] = 0;
      }
      rtcOccluded8(kEveryLane, rays_.handle(), &context_, &packet);
      for (const float far : packet.tfar) {
        if (far > 0.0F) ++lit;  // what is in the shade has -infinity
      }
    }
    return static_cast<float>(lit) / static_cast<float>(starts_.size());
  }

  const Scene& scene_;
  const RayScene& rays_;
  std::uint64_t seed_;
  RTCIntersectContext context_{};
  FaceSampler sampler_;
  std::vector<Vector3> starts_;
};

}  // namespace

std::vector<float> sunlit_fractions(const Scene& scene, const RayScene& ray_scene,
                                    std::span<const Vector3> suns, const SunSettings& settings,
                                    const Progress& progress) {
  const std::size_t groups = scene.groups.size();
  std::vector<float> fractions(suns.size() * groups);
  const std::vector<Draw> draws =
      well_spread((std::max(settings.points, 1U) + kLanes - 1) / kLanes * kLanes);
  in_parallel(
      settings.threads, groups, 256,
      [&](unsigned, std::size_t first, std::size_t end) {
        SunSeeker seeker(scene, ray_scene, settings.seed);
        for (std::size_t g = first; g < end; ++g) seeker.seek(g, draws, suns, fractions.data());
      },
      progress);
  return fractions;
}

}  // namespace townskin_case
