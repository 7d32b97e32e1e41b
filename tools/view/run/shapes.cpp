#include "run/shapes.hpp"

#include <algorithm>
#include <cmath>

#include "run/inputs.hpp"
#include "run/join_pieces.hpp"
#include "run/lines.hpp"

namespace townskin_view {

namespace {

using Vector = std::array<double, 3>;
using Outline = std::vector<Vector>;

/// Rings of one piece: the outer one, then its holes.
using Piece = std::vector<Outline>;

/// Twice the area of a ring as a vector along its normal.
Vector twice_area(const Outline& ring) {
  Vector sum{};
  for (std::size_t n = 0; n < ring.size(); ++n) {
    const Vector& a = ring[n];
    const Vector& b = ring[(n + 1) % ring.size()];
    sum[0] += a[1] * b[2] - a[2] * b[1];
    sum[1] += a[2] * b[0] - a[0] * b[2];
    sum[2] += a[0] * b[1] - a[1] * b[0];
  }
  return sum;
}

double length(const Vector& v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }
double product(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

void add_ring(const Outline& ring, bool hole, const Vector& normal, Shapes& shapes) {
  shapes.rings.push_back({static_cast<std::uint32_t>(shapes.xyz.size() / 3),
                          static_cast<std::uint32_t>(ring.size()), hole});
  const bool left = product(twice_area(ring), normal) >= 0.0;
  for (std::size_t n = 0; n < ring.size(); ++n) {
    const Vector& point = ring[left != hole ? n : ring.size() - 1 - n];
    shapes.xyz.insert(shapes.xyz.end(), point.begin(), point.end());
  }
}

/// Centre of the area; of the convex pieces that faces are cut into it lies within.
Vector middle_of(const Outline& ring) {
  Vector sum{};
  double whole = 0.0;
  for (std::size_t n = 1; n + 1 < ring.size(); ++n) {
    const double area = length(twice_area({ring[0], ring[n], ring[n + 1]}));
    whole += area;
    for (std::size_t a = 0; a < 3; ++a) sum[a] += area * (ring[0][a] + ring[n][a] + ring[n + 1][a]);
  }
  if (!(whole > 0.0)) return ring.front();
  for (double& coordinate : sum) coordinate /= 3.0 * whole;
  return sum;
}

Outline scaled(const Outline& ring, double factor) {
  const Vector middle = middle_of(ring);
  Outline to = ring;
  for (Vector& point : to) {
    for (std::size_t a = 0; a < 3; ++a) point[a] = middle[a] + factor * (point[a] - middle[a]);
  }
  return to;
}

/// The pieces between two insets, as shares of the whole: from `outer` down to `inner`.
void add_inset(const std::vector<Piece>& pieces, double outer, double inner, const Vector& normal,
               Shapes& shapes) {
  for (const Piece& piece : pieces) {
    // A piece with holes of its own cannot be drawn in; all its patches then lie on each other.
    if (piece.size() > 1) {
      for (std::size_t r = 0; r < piece.size(); ++r) add_ring(piece[r], r > 0, normal, shapes);
      continue;
    }
    add_ring(scaled(piece.front(), std::sqrt(outer)), false, normal, shapes);
    if (inner > 0.0) add_ring(scaled(piece.front(), std::sqrt(inner)), true, normal, shapes);
  }
}

/// Shares of the common outline that stay for the patches behind each of `members`.
std::vector<double> inner_shares(const Patches& patches, const std::vector<std::size_t>& members) {
  double all = 0.0;
  for (const std::size_t p : members) all += patches.area[p];
  std::vector<double> shares;
  double left = all;
  for (const std::size_t p : members) {
    left -= patches.area[p];
    shares.push_back(p == members.back() || all <= 0.0 ? 0.0 : left / all);
  }
  return shares;
}

/// What the file tells, per patch.
bool read_pieces(Lines& lines, const RunModel& run, std::vector<std::vector<Piece>>& pieces) {
  constexpr std::size_t kMostNumbers = 3 * 10000 + 4;
  std::vector<double> numbers(kMostNumbers);
  std::string_view line;
  while (lines.next(line)) {
    if (line.starts_with('#') || line.find_first_not_of(" \t\r") == std::string_view::npos)
      continue;
    const std::size_t count = numbers_of(line, numbers);
    if (count < 4 + 9 || numbers[3] * 3.0 != static_cast<double>(count - 4) ||
        (count - 4) % 3 != 0) {
      return false;
    }
    const std::int64_t p = run.find_patch(std::llround(numbers[0]));
    if (p < 0) return false;
    Outline ring;
    for (std::size_t n = 4; n < count; n += 3) {
      ring.push_back({numbers[n], numbers[n + 1], numbers[n + 2]});
    }
    std::vector<Piece>& of_patch = pieces[static_cast<std::size_t>(p)];
    if (numbers[2] == 0.0) {
      of_patch.emplace_back();
    } else if (of_patch.empty()) {
      return false;
    }
    of_patch.back().push_back(std::move(ring));
  }
  return !lines.was_cut();
}

/// Patches that share an outline, in the order of the list: the group of the exchange, as long as
/// its patches tell the same pieces.
std::vector<std::vector<std::size_t>> sharers(const RunModel& run,
                                              const std::vector<std::vector<Piece>>& pieces) {
  std::vector<std::vector<std::size_t>> of_group;
  for (std::size_t p = 0; p < pieces.size(); ++p) {
    const auto g = static_cast<std::size_t>(run.patches.group[p]);
    if (g >= of_group.size()) of_group.resize(g + 1);
    of_group[g].push_back(p);
  }
  for (auto& members : of_group) {
    if (members.size() < 2) continue;
    std::erase_if(members, [&](std::size_t p) {
      return pieces[p].empty() || pieces[p] != pieces[members.front()];
    });
  }
  return of_group;
}

/// Joins the pieces of a patch two by two, as long as two make a convex one of the same area.
void join(std::vector<Piece>& pieces, const Vector& normal) {
  const bool holes = std::ranges::any_of(pieces, [](const Piece& one) { return one.size() > 1; });
  if (pieces.size() < 2 || holes) return;
  for (Piece& piece : pieces) {
    if (product(twice_area(piece.front()), normal) < 0.0) std::ranges::reverse(piece.front());
  }
  for (std::size_t a = 0; a < pieces.size(); ++a) {
    for (std::size_t b = a + 1; b < pieces.size(); ++b) {
      const Outline &first = pieces[a].front(), &second = pieces[b].front();
      const double area = length(twice_area(first)) + length(twice_area(second));
      std::optional<Outline> outline = joined({first, second}, normal);
      if (!outline || std::abs(length(twice_area(*outline)) - area) > 1e-9 * area) continue;
      pieces[a] = {std::move(*outline)};
      pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(b));
      b = a;  // the larger one may join those that it passed over
    }
  }
}

void enter(const RunModel& run, const std::vector<std::vector<Piece>>& pieces, Shapes& shapes) {
  const auto of_group = sharers(run, pieces);
  for (std::size_t p = 0; p < pieces.size(); ++p) {
    shapes.first_ring.push_back(static_cast<std::uint32_t>(shapes.rings.size()));
    const std::vector<std::size_t>& members =
        of_group[static_cast<std::size_t>(run.patches.group[p])];
    const auto at = std::ranges::find(members, p);
    double outer = 1.0, inner = 0.0;
    if (members.size() > 1 && at != members.end()) {
      const std::vector<double> shares = inner_shares(run.patches, members);
      const auto n = static_cast<std::size_t>(at - members.begin());
      outer = n == 0 ? 1.0 : shares[n - 1];
      inner = shares[n];
    }
    add_inset(pieces[p], outer, inner, run.patches.normal[p], shapes);
  }
  shapes.first_ring.push_back(static_cast<std::uint32_t>(shapes.rings.size()));
}

}  // namespace

double area_of(const Shapes& shapes, std::size_t patch) {
  double area = 0.0;
  for (const Shapes::Ring& ring : shapes.of(patch)) {
    Outline outline;
    for (std::size_t n = ring.first; n < std::size_t{ring.first} + ring.count; ++n) {
      outline.push_back({shapes.xyz[3 * n], shapes.xyz[3 * n + 1], shapes.xyz[3 * n + 2]});
    }
    area += (ring.hole ? -0.5 : 0.5) * length(twice_area(outline));
  }
  return area;
}

void read_shapes(const std::string& geometry, RunModel& run) {
  Lines lines(geometry);
  if (lines.good()) {
    std::vector<std::vector<Piece>> pieces(run.patches.size());
    if (read_pieces(lines, run, pieces)) {
      run.shapes.true_shapes = true;
      for (std::size_t p = 0; p < pieces.size(); ++p) join(pieces[p], run.patches.normal[p]);
      return enter(run, pieces, run.shapes);
    }
    note(run,
         "geometry.txt does not fit the patches (line " + std::to_string(lines.number()) +
             "), so they are drawn as rectangles at their cells",
         "");
  }
  draw_rectangles(run);
}

}  // namespace townskin_view
