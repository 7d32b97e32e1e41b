#include "city/snap.hpp"

#include <algorithm>
#include <cstdint>
#include <set>
#include <unordered_map>

namespace townskin_case {
namespace {

constexpr double worth_telling = 1e-3;  // [m]
constexpr double grid = 1e6;            // lines a metre; data are never finer

double rounded(double x) { return std::round(x * grid) / grid; }

double distance(const Point2& a, const Point2& b) { return std::hypot(a.x - b.x, a.y - b.y); }

/// The corners that others move onto, in squares as wide as the tolerance.
class Corners {
 public:
  /// The corner nearest to the point within the tolerance; else the point becomes one.
  Point2 onto(const Point2& point) {
    const auto column = square(point.x), row = square(point.y);
    const Point2* nearest = nullptr;
    for (std::int64_t i = column - 1; i <= column + 1; ++i) {
      for (std::int64_t j = row - 1; j <= row + 1; ++j) {
        const auto found = squares_.find(key(i, j));
        if (found == squares_.end()) continue;
        for (const std::size_t index : found->second) {
          const double d = distance(all_[index], point);
          if (d < near_enough && (nearest == nullptr || d < distance(*nearest, point))) {
            nearest = &all_[index];
          }
        }
      }
    }
    if (nearest != nullptr) return *nearest;
    squares_[key(column, row)].push_back(all_.size());
    all_.push_back(point);
    return point;
  }
  [[nodiscard]] const std::vector<Point2>& all() const { return all_; }

 private:
  static std::int64_t square(double x) { return static_cast<std::int64_t>(x / near_enough + 4e9); }
  static std::uint64_t key(std::int64_t i, std::int64_t j) {
    return static_cast<std::uint64_t>(i) << 32U ^ static_cast<std::uint64_t>(j);
  }
  std::vector<Point2> all_;
  std::unordered_map<std::uint64_t, std::vector<std::size_t>> squares_;
};

/// Finds the corners that lie near an edge.
class CornerTree {
 public:
  CornerTree(const Geos& geos, const std::vector<Point2>& corners)
      : geos_(geos), tree_(GEOSSTRtree_create_r(geos.context(), 10)) {
    for (const Point2& corner : corners) {
      shapes_.push_back(geos.point(corner));
      GEOSSTRtree_insert_r(geos.context(), tree_, shapes_.back().get(),
                           const_cast<Point2*>(&corner));
    }
  }
  ~CornerTree() { GEOSSTRtree_destroy_r(geos_.context(), tree_); }
  CornerTree(const CornerTree&) = delete;
  CornerTree& operator=(const CornerTree&) = delete;

  /// Those within the tolerance of the edge and between its ends, in order along it.
  [[nodiscard]] Ring2 along(const Point2& a, const Point2& b) const {
    const auto box = geos_.own(GEOSGeom_createRectangle_r(
        geos_.context(), std::min(a.x, b.x) - near_enough, std::min(a.y, b.y) - near_enough,
        std::max(a.x, b.x) + near_enough, std::max(a.y, b.y) + near_enough));
    std::vector<const Point2*> found;
    GEOSSTRtree_query_r(
        geos_.context(), tree_, box.get(),
        [](void* item, void* into) {
          static_cast<std::vector<const Point2*>*>(into)->push_back(static_cast<Point2*>(item));
        },
        &found);
    const double span = distance(a, b);
    std::vector<std::pair<double, Point2>> near;
    for (const Point2* p : found) {
      const double s = ((p->x - a.x) * (b.x - a.x) + (p->y - a.y) * (b.y - a.y)) / span;
      const double d = ((p->x - a.x) * (b.y - a.y) - (p->y - a.y) * (b.x - a.x)) / span;
      if (*p == a || *p == b || s <= 0.0 || s >= span || std::abs(d) >= near_enough) continue;
      near.emplace_back(s, *p);
    }
    std::sort(near.begin(), near.end(),
              [](const auto& left, const auto& right) { return left.first < right.first; });
    Ring2 points;
    for (const auto& [s, point] : near) points.push_back(point);
    return points;
  }

 private:
  const Geos& geos_;
  GEOSSTRtree* tree_;
  std::vector<Geos::Shape> shapes_;
};

/// Without points that repeat the one before and without spikes, which go out and come straight
/// back.
Ring2 tidied(const Ring2& ring) {
  Ring2 kept;
  for (const Point2& p : ring) {
    if (!kept.empty() && kept.back() == p) continue;
    if (kept.size() > 1 && kept[kept.size() - 2] == p) {
      kept.pop_back();
    } else {
      kept.push_back(p);
    }
  }
  while (kept.size() > 1 && kept.front() == kept.back()) kept.pop_back();
  return kept;
}

}  // namespace

void snap_pieces(const Geos& geos, std::vector<RoofPiece>& pieces, const std::vector<Draft>& drafts,
                 Report& report) {
  Corners corners;
  std::set<std::int32_t> moved;
  for (RoofPiece& piece : pieces) {
    for (Ring2& ring : piece.rings) {
      for (Point2& point : ring) {
        const Point2 to = corners.onto({rounded(point.x), rounded(point.y)});
        if (distance(to, point) > worth_telling) moved.insert(piece.building);
        point = to;
      }
    }
  }
  const CornerTree tree(geos, corners.all());
  for (RoofPiece& piece : pieces) {
    for (Ring2& ring : piece.rings) {
      Ring2 through;
      const Ring2 simple = tidied(ring);
      for (std::size_t i = 0; i < simple.size(); ++i) {
        const Point2 &a = simple[i], &b = simple[i + 1 < simple.size() ? i + 1 : 0];
        through.push_back(a);
        for (const Point2& p : tree.along(a, b)) through.push_back(p);
      }
      ring = tidied(through);
    }
    if (piece.rings.front().size() < 3) piece.rings.clear();
    std::erase_if(piece.rings, [](const Ring2& ring) { return ring.size() < 3; });
  }
  std::erase_if(pieces, [](const RoofPiece& piece) { return piece.rings.empty(); });
  for (const std::int32_t building : moved) {
    report.repair("corners within 0.05 m of another moved onto it",
                  drafts[static_cast<std::size_t>(building)].building.origin);
  }
}

}  // namespace townskin_case
