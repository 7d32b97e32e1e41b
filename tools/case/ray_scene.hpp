// The triangles of a scene as Embree keeps them: built once, followed by all rays.
//
// Made from the Scene; view factors and sunlit fractions read it from many threads at once.
#pragma once

#include <embree3/rtcore.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "scene.hpp"

namespace townskin_case {

/// What a ray can meet, as bits of its mask.
enum RayMask : unsigned {
  kSolid = 1,  ///< buildings, land and water: they cast the sun's shadows
  kCrown = 2,  ///< faces of tree crowns
  kOpen = 4,   ///< all else: open and periodic sides, a far boundary that has a shape
  kAll = 7
};

/// What a single ray has met.
struct Hit {
  std::int32_t group = -1;  ///< -1: nothing
  bool front = false;       ///< the face was met from its outer side
  unsigned mask = 0;        ///< the kind of what was met
  float distance = 0.0F;    ///< in lengths of the ray's way
};

/// A point and a direction in the coordinates of a RayScene.
struct Ray {
  std::array<float, 3> start{}, way{};
};

class RayScene {
 public:
  /// Triangles without area and those with a point that is no number are left out. Embree works
  /// with one thread here: a tree that is built by several may settle ties otherwise.
  explicit RayScene(const Scene& scene);
  ~RayScene();
  RayScene(const RayScene&) = delete;
  RayScene& operator=(const RayScene&) = delete;

  [[nodiscard]] RTCScene handle() const { return scene_; }

  /// How far before its face a ray starts [m]: some steps of single precision at the scene's rim.
  [[nodiscard]] double offset() const { return offset_; }

  /// The middle of the scene, from which its coordinates count, so that single precision is spent
  /// on its extent alone.
  [[nodiscard]] Vector3 middle() const { return middle_; }

  /// Numbers of the mesh triangles of a group that rays can start from.
  [[nodiscard]] std::span<const std::uint32_t> triangles_of(std::size_t group) const {
    return std::span(by_group_).subspan(group_start_[group],
                                        group_start_[group + 1] - group_start_[group]);
  }

  [[nodiscard]] std::int32_t group_of(unsigned geometry, unsigned triangle) const {
    return geometries_[geometry].group[triangle];
  }
  [[nodiscard]] unsigned mask_of(unsigned geometry) const { return geometries_[geometry].mask; }

  /// Whether there are crowns: only then can faces lie on the faces of others.
  [[nodiscard]] bool has_crowns() const { return has_crowns_; }

  /// Follows one ray, for the few that need a second look.
  [[nodiscard]] Hit follow(const Ray& ray, float length, unsigned mask) const;

 private:
  /// The triangles of one mask.
  struct Geometry {
    unsigned mask = 0;
    std::vector<std::array<std::uint32_t, 3>> corners;
    std::vector<std::int32_t> group;
  };

  void take_points(const Mesh& mesh);
  void sort_triangles(const Scene& scene);
  void build();
  void release();

  RTCDevice device_ = nullptr;
  RTCScene scene_ = nullptr;
  Vector3 middle_;
  double offset_ = 0.0;
  bool has_crowns_ = false;
  std::vector<float> points_;
  std::vector<Geometry> geometries_;
  std::vector<std::size_t> group_start_;
  std::vector<std::uint32_t> by_group_;
};

}  // namespace townskin_case
