#include "shapes/triangulate.hpp"

#include <map>

#include "scene/pieces.hpp"
#include "shapes/plan.hpp"
#include "shapes/regions.hpp"

namespace townskin_case {

namespace {

/// A face seen along the axis to which it is most nearly normal, so that its shape hardly shrinks.
/// Points keep the third coordinate that they came with.
class Shadow {
 public:
  explicit Shadow(const Polygon3& face) {
    Vector3 whole = area_vector(face.outer);
    for (const Ring3& hole : face.holes) whole = whole + area_vector(hole);
    const double x = std::abs(whole.x);
    const double y = std::abs(whole.y);
    const double z = std::abs(whole.z);
    axis_ = z >= x && z >= y ? 2 : x >= y ? 0 : 1;
    const double along = axis_ == 2 ? whole.z : axis_ == 0 ? whole.x : whole.y;
    flat_ = along == 0.0;
    turned_ = along < 0.0;
    shape_.outer = ring(face.outer);
    for (const Ring3& hole : face.holes) shape_.holes.push_back(ring(hole));
  }

  [[nodiscard]] bool flat() const { return flat_; }
  [[nodiscard]] const Polygon2& shape() const { return shape_; }
  [[nodiscard]] Vector3 back(const Point2& at) const { return places_.at({at.x, at.y}); }

 private:
  Ring2 ring(const Ring3& points) {
    Ring2 out;
    for (const Vector3& point : points) {
      const double u = axis_ == 0 ? point.y : axis_ == 1 ? point.z : point.x;
      const double v = axis_ == 0 ? point.z : axis_ == 1 ? point.x : point.y;
      const Point2 at = turned_ ? Point2{v, u} : Point2{u, v};
      places_.emplace(std::pair{at.x, at.y}, point);
      out.push_back(at);
    }
    return out;
  }

  int axis_ = 2;
  bool flat_ = false, turned_ = false;
  Polygon2 shape_;
  std::map<std::pair<double, double>, Vector3> places_;
};

}  // namespace

std::vector<Ring3> triangulate(const Polygon3& face) {
  if (face.outer.size() < 3) return {};
  if (face.outer.size() == 3 && face.holes.empty()) return {face.outer};
  const Shadow shadow(face);
  if (shadow.flat()) return {};
  std::vector<Ring3> triangles;
  for (const auto& [a, b, c] : triangles_of(shadow.shape())) {
    triangles.push_back({shadow.back(a), shadow.back(b), shadow.back(c)});
  }
  return triangles;
}

}  // namespace townskin_case
