// The triangles of a scene as Embree keeps them: built once, followed by all rays.
//
// Made from the Scene; view factors and sunlit fractions read it from many threads at once.
#pragma once

#include <embree3/rtcore.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "scene/scene.hpp"

namespace townskin_case {

/// What a ray can meet, as bits of its mask.
enum RayMask : unsigned {
  kSolid = 1,  ///< buildings, land and water: they cast the sun's shadows
  kCrown = 2,  ///< faces of tree crowns
  kOpen = 4,   ///< all else: open and periodic sides, a far boundary that has a shape
  kAll = 7
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

  /// The group of the first face within `length` ways of a ray that looks against it; faces of
  /// `group` do not count, nor those that are met from behind. -1: there is none.
  [[nodiscard]] std::int32_t first_against(const Ray& ray, float length, std::int32_t group) const;

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
  std::vector<float> points_;
  std::vector<Geometry> geometries_;
  std::vector<std::size_t> group_start_;
  std::vector<std::uint32_t> by_group_;
};

}  // namespace townskin_case
