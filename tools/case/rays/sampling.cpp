#include "rays/sampling.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace townskin_case {

namespace {

/// A fraction of 2^32 within 0 and 1, both left out.
double fraction(std::uint32_t bits) { return (static_cast<double>(bits) + 0.5) * 0x1p-32; }

/// The n-th point of the sequence of a dimension with the given first direction numbers and the
/// polynomial of `degree` whose inner coefficients are the bits of `inner`.
std::array<std::uint32_t, 32> direction_numbers(unsigned degree, unsigned inner,
                                                std::array<std::uint32_t, 3> first) {
  std::array<std::uint32_t, 32> v{};
  for (unsigned k = 0; k < 32; ++k) {
    if (degree == 0) {
      v[k] = 1U << (31 - k);
    } else if (k < degree) {
      v[k] = first[k] << (31 - k);
    } else {
      v[k] = v[k - degree] ^ (v[k - degree] >> degree);
      for (unsigned q = 1; q < degree; ++q) {
        if (((inner >> (degree - 1 - q)) & 1U) != 0) v[k] ^= v[k - q];
      }
    }
  }
  return v;
}

/// The upper 16 bits of both interleaved.
std::uint64_t morton(std::uint32_t a, std::uint32_t b) {
  const auto spread = [](std::uint64_t x) {
    x = (x | (x << 16)) & 0x0000FFFF0000FFFFULL;
    x = (x | (x << 8)) & 0x00FF00FF00FF00FFULL;
    x = (x | (x << 4)) & 0x0F0F0F0F0F0F0F0FULL;
    x = (x | (x << 2)) & 0x3333333333333333ULL;
    return (x | (x << 1)) & 0x5555555555555555ULL;
  };
  return spread(a) | (spread(b) << 1);
}

/// Both to 3e-8 up to an eighth of a turn: more than a ray in single precision holds, a third of
/// the library's time, and the same bits on any machine.
double sine(double x) {
  const double q = x * x;
  return x * (1.0 - q / 6.0 * (1.0 - q / 20.0 * (1.0 - q / 42.0 * (1.0 - q / 72.0))));
}
double cosine(double x) {
  const double q = x * x;
  return 1.0 - q / 2.0 * (1.0 - q / 12.0 * (1.0 - q / 30.0 * (1.0 - q / 56.0)));
}

/// Mixes the bits of a counter (Steele, Lea and Flood 2014).
std::uint64_t mix(std::uint64_t z) {
  z += 0x9E3779B97F4A7C15ULL;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
  return z ^ (z >> 31);
}

}  // namespace

std::vector<Draw> well_spread(std::uint32_t rays) {
  const std::array dimension{direction_numbers(0, 0, {}), direction_numbers(1, 0, {1, 0, 0}),
                             direction_numbers(2, 1, {1, 3, 0}),
                             direction_numbers(3, 1, {1, 3, 1})};
  std::vector<Draw> draws(rays);
  for (std::uint32_t n = 0; n < rays; ++n) {
    for (std::size_t d = 0; d < 4; ++d) {
      for (unsigned bit = 0; n >> bit != 0; ++bit) {
        if (((n >> bit) & 1U) != 0) draws[n][d] ^= dimension[d][bit];
      }
    }
  }
  std::ranges::sort(draws, {}, [](const Draw& p) { return std::pair(morton(p[0], p[1]), p); });
  return draws;
}

Draw turn_of(std::uint64_t seed, std::uint64_t group) {
  const std::uint64_t key = mix(mix(seed) ^ group);
  const std::uint64_t a = mix(key);
  const std::uint64_t b = mix(key + 1);
  return {static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(a >> 32),
          static_cast<std::uint32_t>(b), static_cast<std::uint32_t>(b >> 32)};
}

bool FaceSampler::turn_to(const Scene& scene, const RayScene& rays, std::size_t group) {
  parts_.clear();
  const Mesh& mesh = scene.mesh;
  double area = 0.0;
  for (const std::uint32_t t : rays.triangles_of(group)) {
    const auto& corners = mesh.triangles[t];
    const Vector3& a = mesh.points[corners[0]];
    Part part{a - rays.middle(), mesh.points[corners[1]] - a, mesh.points[corners[2]] - a};
    part.below = area;
    part.share = length(cross(part.first, part.second));
    area += part.share;
    parts_.push_back(part);
  }
  const Vector3& n = scene.groups[group].normal;
  const double size = length(n);
  if (!(size > 0.0) || !(area > 0.0)) return false;
  for (Part& part : parts_) {
    part.below /= area;
    part.share /= area;
  }
  normal_ = (1.0 / size) * n;
  const Vector3 beside = std::abs(normal_.x) < 0.5 ? Vector3{1, 0, 0} : Vector3{0, 1, 0};
  const Vector3 east = cross(beside, normal_);
  east_ = (1.0 / length(east)) * east;
  north_ = cross(normal_, east_);
  return true;
}

Vector3 FaceSampler::point(std::uint32_t along, std::uint32_t across) const {
  double u = fraction(along);
  double v = fraction(across);
  const auto above = std::upper_bound(parts_.begin() + 1, parts_.end(), u,
                                      [](double x, const Part& part) { return x < part.below; });
  const Part& part = *(above - 1);
  u = std::min((u - part.below) / part.share, 1.0);
  if (u + v > 1.0) {  // the other half of the parallelogram
    u = 1.0 - u;
    v = 1.0 - v;
  }
  return part.corner + u * part.first + v * part.second;
}

Vector3 FaceSampler::way(std::uint32_t u, std::uint32_t v) const {
  // The square goes to the disk in rings (Shirley and Chiu 1997), the disk up to the half sphere.
  const double a = 2.0 * fraction(u) - 1.0;
  const double b = 2.0 * fraction(v) - 1.0;
  const bool wide = std::abs(a) > std::abs(b);
  const double radius = wide ? a : b;
  const double angle = std::numbers::pi / 4.0 * (wide ? b / a : a / b);
  const double near = radius * cosine(angle);
  const double far = radius * sine(angle);
  const double x = wide ? near : far;
  const double y = wide ? far : near;
  const double z = std::sqrt(std::max(1.0 - radius * radius, 1e-12));
  return x * east_ + y * north_ + z * normal_;
}

}  // namespace townskin_case
