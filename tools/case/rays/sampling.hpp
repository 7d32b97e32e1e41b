// Where rays start on a group's faces and which way they go.
//
// A fixed set of well spread points (Sobol 1967, direction numbers of Joe and Kuo 2008) is turned
// for each group by bits that follow from the seed and the group's number: each group's set is as
// well spread, those of two groups are unlike, and no result depends on who drew it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "rays/ray_scene.hpp"

namespace townskin_case {

/// Four coordinates of a ray as fractions of 2^32: two for its way, two for its start.
using Draw = std::array<std::uint32_t, 4>;

/// `rays` points of the sequence in four dimensions. Points whose ways lie close together stand
/// together (by the Morton order of the first two coordinates): a packet stays coherent, and
/// neighbours share a stratum. Powers of two are spread best.
std::vector<Draw> well_spread(std::uint32_t rays);

/// The bits that turn the set for a group.
Draw turn_of(std::uint64_t seed, std::uint64_t group);

/// Points on the faces of one group, alike by area, and ways out of them.
class FaceSampler {
 public:
  /// Turns to a group; false where it has no face to start from.
  bool turn_to(const Scene& scene, const RayScene& rays, std::size_t group);

  /// The point on the faces for two fractions, in the coordinates of the RayScene.
  [[nodiscard]] Vector3 point(std::uint32_t along, std::uint32_t across) const;
  /// A way out, as often as the cosine to the normal is large.
  [[nodiscard]] Vector3 way(std::uint32_t u, std::uint32_t v) const;
  [[nodiscard]] const Vector3& normal() const { return normal_; }

 private:
  struct Part {
    Vector3 corner, first, second;    ///< a corner and the two edges from it
    double below = 0.0, share = 0.0;  ///< of the group's area: of all parts before it, and its own
  };
  std::vector<Part> parts_;
  Vector3 normal_, east_, north_;  ///< a frame on the faces
};

}  // namespace townskin_case
