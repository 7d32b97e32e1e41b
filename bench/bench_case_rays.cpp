// View factors of a town by rays, and its sunlit fractions: beside a bare loop that follows as many
// rays through the same scene with Embree and keeps nothing.
//
// `ratio` is the bare loop's processor time over ours, turn by turn in one process: more than 0.5
// means at least half of its rays a second. `Mrays_s` are rays a second of one processor; `mega`
// the process's largest memory so far [MB].
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cmath>
#include <ctime>
#include <limits>
#include <numbers>

#include "rays/ray_counts.hpp"
#include "rays/sunlit.hpp"
#include "rays/view_factors.hpp"
#include "sample_town.hpp"

namespace {

using namespace townskin_case;

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed * 2 + 1) {}
  float next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<float>(state_ >> 40) * 0x1p-24F;
  }

 private:
  std::uint64_t state_;
};

/// A cosine-weighted ray out of the first triangle of a group: a frame, a root, a sine and a
/// cosine.
void set_ray(const Scene& scene, const RayScene& rays, const Group& group,
             const std::array<std::uint32_t, 3>& triangle, Random& random, RTCRayHit8& packet,
             int lane) {
  const Vector3& a = scene.mesh.points[triangle[0]];
  const Vector3& n = group.normal;
  const Vector3 t = std::abs(n.x) < 0.5 ? cross({1, 0, 0}, n) : cross({0, 1, 0}, n);
  const Vector3 b = cross(n, t);
  const Vector3 from =
      a + static_cast<double>(random.next()) * (scene.mesh.points[triangle[1]] - a) +
      0.5 * static_cast<double>(random.next()) * (scene.mesh.points[triangle[2]] - a) +
      rays.offset() * n - rays.middle();
  const float u = random.next();
  const float phi = 2.0F * std::numbers::pi_v<float> * random.next();
  const auto r = static_cast<double>(std::sqrt(u));
  const Vector3 way = r * static_cast<double>(std::cos(phi)) * t +
                      r * static_cast<double>(std::sin(phi)) * b +
                      static_cast<double>(std::sqrt(1.0F - u)) * n;
  packet.ray.org_x[lane] = static_cast<float>(from.x);
  packet.ray.org_y[lane] = static_cast<float>(from.y);
  packet.ray.org_z[lane] = static_cast<float>(from.z);
  packet.ray.dir_x[lane] = static_cast<float>(way.x);
  packet.ray.dir_y[lane] = static_cast<float>(way.y);
  packet.ray.dir_z[lane] = static_cast<float>(way.z);
  packet.ray.tfar[lane] = std::numeric_limits<float>::infinity();
  packet.hit.geomID[lane] = RTC_INVALID_GEOMETRY_ID;
}

/// The bare loop; returns hits, so that nothing of it is left out.
std::uint64_t bare(const Scene& scene, const RayScene& ray_scene, std::uint32_t rays) {
  alignas(32) constexpr int kEveryLane[8] = {-1, -1, -1, -1, -1, -1, -1, -1};
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  RTCRayHit8 packet{};
  for (int lane = 0; lane < 8; ++lane) packet.ray.mask[lane] = kAll;
  std::uint64_t hits = 0;
  for (std::size_t g = 0; g < scene.groups.size(); ++g) {
    if (ray_scene.triangles_of(g).empty()) continue;
    const auto& triangle = scene.mesh.triangles[ray_scene.triangles_of(g)[0]];
    Random random(g + 1);
    for (std::uint32_t n = 0; n < rays; n += 8) {
      for (int lane = 0; lane < 8; ++lane) {
        set_ray(scene, ray_scene, scene.groups[g], triangle, random, packet, lane);
      }
      rtcIntersect8(kEveryLane, ray_scene.handle(), &context, &packet);
      for (const unsigned geometry : packet.hit.geomID) {
        if (geometry != RTC_INVALID_GEOMETRY_ID) ++hits;
      }
    }
  }
  return hits;
}

double processor_seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

template <class Work>
void beside_bare(benchmark::State& state, const Scene& scene, std::uint32_t rays, Work&& work) {
  const RayScene ray_scene(scene);
  double bare_time = 0.0;
  double time = 0.0;
  for ([[maybe_unused]] auto turn : state) {
    double start = processor_seconds();
    benchmark::DoNotOptimize(bare(scene, ray_scene, rays));
    bare_time += processor_seconds() - start;
    start = processor_seconds();
    work(ray_scene);
    const double taken = processor_seconds() - start;
    time += taken;
    state.SetIterationTime(taken);
  }
  const double sent = static_cast<double>(state.iterations()) * 1e-6 * rays *
                      static_cast<double>(scene.groups.size());
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  state.counters["groups"] = static_cast<double>(scene.groups.size());
  state.counters["Mrays_s"] = sent / time;
  state.counters["ratio"] = bare_time / time;
  state.counters["mega"] = static_cast<double>(used.ru_maxrss) / 1024.0;
}

/// Blocks along each side of the town, rays of each group.
void rays_alone(benchmark::State& state) {
  const Scene scene = sample::town(static_cast<int>(state.range(0)), 2.0);
  const auto rays = static_cast<std::uint32_t>(state.range(1));
  const auto far = static_cast<std::int32_t>(scene.groups.size()) - 1;
  beside_bare(state, scene, rays, [&](const RayScene& ray_scene) {
    benchmark::DoNotOptimize(count_rays(scene, ray_scene, rays, 1, far, 1, {}));
  });
}
BENCHMARK(rays_alone)
    ->Args({8, 1024})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

/// All of it, on two threads; the time is that of both together.
void all_view_factors(benchmark::State& state) {
  const Scene scene = sample::town(static_cast<int>(state.range(0)), 2.0);
  RaySettings settings{.rays = static_cast<std::uint32_t>(state.range(1)), .threads = 2};
  beside_bare(state, scene, settings.rays, [&](const RayScene& ray_scene) {
    const ViewFactors f = view_factors(scene, ray_scene, settings);
    state.counters["pairs"] = static_cast<double>(f.to.size());
    state.counters["cut"] = f.summary.cut;
    state.counters["error"] = f.summary.sky_error;
  });
}
BENCHMARK(all_view_factors)
    ->Args({4, 1024})
    ->Args({8, 256})
    ->Args({8, 1024})
    ->Args({8, 4096})
    ->Args({15, 1024})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

/// 16 points of each group under 24 suns.
void sunlit(benchmark::State& state) {
  const Scene scene = sample::town(static_cast<int>(state.range(0)), 2.0);
  std::vector<Vector3> suns;
  for (int s = 0; s < 24; ++s) {
    const double up = 0.02 + 0.05 * s;
    const double round = 0.26 * s;
    suns.push_back({std::cos(up) * std::sin(round), std::cos(up) * std::cos(round), std::sin(up)});
  }
  beside_bare(state, scene, 16 * 24, [&](const RayScene& ray_scene) {
    benchmark::DoNotOptimize(sunlit_fractions(scene, ray_scene, suns, {}));
  });
}
BENCHMARK(sunlit)->Args({8, 0})->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
