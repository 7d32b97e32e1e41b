#include "run/join_pieces.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace townskin_view {

namespace {

/// Corners nearer than this are one, and a corner so near to a side lies on it [m].
constexpr double kNear = 1e-3;

using Side = std::pair<std::size_t, std::size_t>;

Corner difference(const Corner& a, const Corner& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double dot(const Corner& a, const Corner& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Corner cross(const Corner& a, const Corner& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double length(const Corner& a) { return std::sqrt(dot(a, a)); }

std::size_t number_of(const Corner& corner, std::vector<Corner>& corners) {
  const auto same = std::ranges::find_if(
      corners, [&](const Corner& one) { return length(difference(one, corner)) < kNear; });
  if (same == corners.end()) {
    corners.push_back(corner);
    return corners.size() - 1;
  }
  return static_cast<std::size_t>(same - corners.begin());
}

/// Corners that lie on a side, from its start to its end, both of them among them.
std::vector<std::size_t> stations(const Side& side, const std::vector<Corner>& corners) {
  const Corner& start = corners[side.first];
  const Corner along = difference(corners[side.second], start);
  const double whole = length(along);
  std::vector<std::pair<double, std::size_t>> found;
  for (std::size_t n = 0; n < corners.size(); ++n) {
    const Corner offset = difference(corners[n], start);
    const double place = dot(offset, along) / whole;
    const bool on = length(cross(offset, along)) / whole < kNear;
    if (on && place > -kNear && place < whole + kNear) found.emplace_back(place, n);
  }
  std::ranges::sort(found);
  std::vector<std::size_t> list;
  list.reserve(found.size());
  for (const auto& [place, n] : found) list.push_back(n);
  return list;
}

/// Sides of all pieces that no other piece has the other way round.
std::set<Side> outer_sides(const std::vector<std::vector<Corner>>& pieces,
                           std::vector<Corner>& corners) {
  std::vector<Side> sides;
  for (const auto& piece : pieces) {
    for (std::size_t n = 0; n < piece.size(); ++n) {
      sides.emplace_back(number_of(piece[n], corners),
                         number_of(piece[(n + 1) % piece.size()], corners));
    }
  }
  std::set<Side> outer;
  for (const Side& side : sides) {
    if (side.first == side.second) continue;
    const std::vector<std::size_t> way = stations(side, corners);
    for (std::size_t n = 0; n + 1 < way.size(); ++n) {
      if (outer.erase({way[n + 1], way[n]}) == 0) outer.insert({way[n], way[n + 1]});
    }
  }
  return outer;
}

/// Whether a ring never turns to the right. Corners in the middle of straight sides stay:
/// neighbours have them too, and meet the ring there.
bool is_convex(const std::vector<Corner>& ring, const Corner& normal) {
  for (std::size_t n = 0; n < ring.size(); ++n) {
    const Corner before = difference(ring[n], ring[(n + ring.size() - 1) % ring.size()]);
    const Corner behind = difference(ring[(n + 1) % ring.size()], ring[n]);
    const double turn = dot(cross(before, behind), normal) / (length(before) + length(behind));
    if (turn < -kNear) return false;
  }
  return ring.size() >= 3;
}

}  // namespace

std::optional<std::vector<Corner>> joined(const std::vector<std::vector<Corner>>& pieces,
                                          const Corner& normal) {
  std::vector<Corner> corners;
  const std::set<Side> sides = outer_sides(pieces, corners);
  std::map<std::size_t, std::size_t> next;
  for (const Side& side : sides) {
    if (!next.insert(side).second) return std::nullopt;  // two parts that meet in a corner
  }
  if (next.empty()) return std::nullopt;
  std::vector<Corner> ring;
  std::size_t at = next.begin()->first;
  do {
    ring.push_back(corners[at]);
    const auto step = next.find(at);
    if (step == next.end() || ring.size() > next.size()) return std::nullopt;
    at = step->second;
  } while (at != next.begin()->first);
  if (ring.size() != next.size()) return std::nullopt;  // several parts, or a hole
  if (!is_convex(ring, normal)) return std::nullopt;
  return ring;
}

}  // namespace townskin_view
