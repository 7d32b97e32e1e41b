#include "run/outlines.hpp"

#include <cmath>
#include <limits>

namespace townskin_view {

namespace {

using Line = std::vector<std::uint32_t>;
using Point = std::array<double, 2>;

Line line_of(const Shapes::Ring& ring) {
  Line line(ring.count);
  for (std::uint32_t n = 0; n < ring.count; ++n) line[n] = ring.first + n;
  return line;
}

double squared_distance(const Shapes& shapes, std::uint32_t a, std::uint32_t b) {
  double sum = 0.0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double d = shapes.xyz[3 * std::size_t{a} + axis] - shapes.xyz[3 * std::size_t{b} + axis];
    sum += d * d;
  }
  return sum;
}

/// Takes a further ring into a line, by an edge there and back between their nearest points.
void join(const Shapes& shapes, const Line& ring, Line& line) {
  std::size_t at = 0, from = 0;
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t n = 0; n < line.size(); ++n) {
    for (std::size_t m = 0; m < ring.size(); ++m) {
      const double distance = squared_distance(shapes, line[n], ring[m]);
      if (distance >= least) continue;
      least = distance;
      at = n;
      from = m;
    }
  }
  Line detour;
  for (std::size_t m = 0; m <= ring.size(); ++m) detour.push_back(ring[(from + m) % ring.size()]);
  detour.push_back(line[at]);
  line.insert(line.begin() + static_cast<std::ptrdiff_t>(at) + 1, detour.begin(), detour.end());
}

/// A polygon seen from the side that its normal points to.
class Plan {
 public:
  Plan(const Shapes& shapes, const std::array<double, 3>& normal) : shapes_(shapes) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      if (std::abs(normal[axis]) > std::abs(normal[drop_])) drop_ = axis;
    }
    turned_ = normal[drop_] < 0.0;
  }
  [[nodiscard]] Point at(std::uint32_t n) const {
    const double a = shapes_.xyz[3 * std::size_t{n} + (drop_ + 1) % 3];
    const double b = shapes_.xyz[3 * std::size_t{n} + (drop_ + 2) % 3];
    return turned_ ? Point{b, a} : Point{a, b};
  }
  /// Twice the area of a triangle, positive where it turns left.
  [[nodiscard]] double turn(std::uint32_t a, std::uint32_t b, std::uint32_t c) const {
    const Point p = at(a), q = at(b), r = at(c);
    return (q[0] - p[0]) * (r[1] - p[1]) - (q[1] - p[1]) * (r[0] - p[0]);
  }

 private:
  const Shapes& shapes_;
  std::size_t drop_ = 2;
  bool turned_ = false;
};

bool is_ear(const Plan& plan, const Line& line, std::size_t n) {
  const std::size_t size = line.size();
  const std::uint32_t a = line[(n + size - 1) % size], b = line[n], c = line[(n + 1) % size];
  if (plan.turn(a, b, c) <= 0.0) return false;
  for (const std::uint32_t p : line) {
    const Point q = plan.at(p);
    if (q == plan.at(a) || q == plan.at(b) || q == plan.at(c)) continue;
    if (plan.turn(a, b, p) >= 0.0 && plan.turn(b, c, p) >= 0.0 && plan.turn(c, a, p) >= 0.0) {
      return false;
    }
  }
  return true;
}

void clip_ears(const Plan& plan, Line line, std::vector<std::array<std::uint32_t, 3>>& triangles) {
  for (std::size_t size = line.size(); size >= 3; size = line.size()) {
    std::size_t ear = 0;
    while (ear < size && !is_ear(plan, line, ear)) ++ear;
    const bool found = ear < size;
    if (!found) {  // what is left has no area, or its lines touch: any corner that turns left
      for (ear = 0; ear + 1 < size; ++ear) {
        if (plan.turn(line[(ear + size - 1) % size], line[ear], line[ear + 1]) > 0.0) break;
      }
    }
    const std::uint32_t a = line[(ear + size - 1) % size], b = line[ear],
                        c = line[(ear + 1) % size];
    if (plan.turn(a, b, c) > 0.0) triangles.push_back({a, b, c});
    line.erase(line.begin() + static_cast<std::ptrdiff_t>(ear));
  }
}

}  // namespace

std::vector<std::uint32_t> joined_ring(const Shapes& shapes, std::size_t patch) {
  Line line;
  for (const Shapes::Ring& ring : shapes.of(patch)) {
    if (line.empty()) {
      line = line_of(ring);
    } else {
      join(shapes, line_of(ring), line);
    }
  }
  return line;
}

std::vector<std::array<std::uint32_t, 3>> triangles_of(const Shapes& shapes,
                                                       const std::array<double, 3>& normal,
                                                       std::size_t patch) {
  std::vector<std::array<std::uint32_t, 3>> triangles;
  const Plan plan(shapes, normal);
  Line line;
  for (const Shapes::Ring& ring : shapes.of(patch)) {
    if (ring.hole) {
      join(shapes, line_of(ring), line);
      continue;
    }
    clip_ears(plan, std::move(line), triangles);
    line = line_of(ring);
  }
  clip_ears(plan, std::move(line), triangles);
  return triangles;
}

std::array<double, 3> middle_of(const Shapes& shapes, std::size_t patch) {
  std::array<double, 3> middle{};
  double count = 0.0;
  for (const Shapes::Ring& ring : shapes.of(patch)) {
    if (ring.hole) continue;
    for (std::size_t n = ring.first; n < std::size_t{ring.first} + ring.count; ++n, count += 1.0) {
      for (std::size_t axis = 0; axis < 3; ++axis) middle[axis] += shapes.xyz[3 * n + axis];
    }
  }
  for (double& x : middle) x /= count;  // 0/0 without shape
  return middle;
}

}  // namespace townskin_view
