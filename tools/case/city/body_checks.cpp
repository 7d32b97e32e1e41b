#include "city/body_checks.hpp"

#include <map>
#include <tuple>

namespace townskin_case {

double volume_above(const std::vector<RawPolygon>& faces, double level) {
  double volume = 0.0;
  for (const RawPolygon& face : faces) {
    for (const Ring3& ring : face.rings) {
      for (std::size_t i = 2; i < ring.size(); ++i) {
        const Vector3 up = 0.5 * cross(ring[i - 1] - ring[0], ring[i] - ring[0]);
        volume += up.z * ((ring[0].z + ring[i - 1].z + ring[i].z) / 3.0 - level);
      }
    }
  }
  return volume;
}

bool is_closed(const std::vector<RawPolygon>& faces) {
  using Key = std::tuple<double, double, double>;
  std::map<std::pair<Key, Key>, int> balance;
  const auto key = [](const Vector3& p) { return Key{p.x, p.y, p.z}; };
  for (const RawPolygon& face : faces) {
    for (const Ring3& ring : face.rings) {
      for (std::size_t i = 0; i < ring.size(); ++i) {
        const Key a = key(ring[i]), b = key(ring[i + 1 < ring.size() ? i + 1 : 0]);
        if (a < b) ++balance[{a, b}];
        if (b < a) --balance[{b, a}];
      }
    }
  }
  for (const auto& [edge, sum] : balance) {
    if (sum != 0) return false;
  }
  return true;
}

}  // namespace townskin_case
