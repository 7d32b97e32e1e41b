#include "city/arrangement.hpp"

#include <algorithm>
#include <unordered_map>

#include "city/crossings.hpp"
#include "city/piece_tree.hpp"

namespace townskin_case {
namespace {

constexpr double grid = 1e-6;  // [m] on which edges meet

std::vector<Segment2> edges_of(const std::vector<RoofPiece>& pieces) {
  std::vector<Segment2> edges;
  for (const RoofPiece& piece : pieces) {
    for (const Ring2& ring : piece.rings) {
      for (std::size_t i = 0; i < ring.size(); ++i) {
        edges.push_back({ring[i], ring[i + 1 < ring.size() ? i + 1 : 0]});
      }
    }
  }
  return edges;
}

/// The faces of the plan between the lines.
std::vector<Cell> cells_between(const Geos& geos, const std::vector<Segment2>& lines) {
  const auto drawn = geos.lines(lines);
  const auto noded = geos.own(GEOSUnaryUnionPrec_r(geos.context(), drawn.get(), grid));
  const GEOSGeometry* all = noded.get();
  const auto faces = geos.own(GEOSPolygonize_r(geos.context(), &all, 1));
  std::vector<Cell> cells;
  for (Polygon2& shape : geos.polygons(faces.get())) cells.push_back({std::move(shape), -1});
  return cells;
}

template <typename Visit>
void each_edge(const Polygon2& polygon, const Visit& visit) {
  const auto ring_edges = [&visit](const Ring2& ring) {
    for (std::size_t i = 0; i < ring.size(); ++i) {
      visit(ring[i], ring[i + 1 < ring.size() ? i + 1 : 0]);
    }
  };
  ring_edges(polygon.outer);
  for (const Ring2& hole : polygon.holes) ring_edges(hole);
}

/// Which cells lie left and right of each edge.
struct Neighbours {
  struct Edge {
    Point2 from, to;
    std::int32_t left = -1, right = -1;  // cells
  };
  std::vector<Edge> edges;

  explicit Neighbours(const std::vector<Cell>& cells) {
    std::unordered_map<Point2, std::uint32_t, PointHash> points;
    std::unordered_map<std::uint64_t, std::size_t> known;
    for (std::size_t c = 0; c < cells.size(); ++c) {
      each_edge(cells[c].shape, [&](const Point2& a, const Point2& b) {
        const std::uint64_t from = points.try_emplace(a, points.size()).first->second;
        const std::uint64_t to = points.try_emplace(b, points.size()).first->second;
        if (const auto found = known.find(to << 32U | from); found != known.end()) {
          edges[found->second].right = static_cast<std::int32_t>(c);
        } else {
          known.emplace(from << 32U | to, edges.size());
          edges.push_back({a, b, static_cast<std::int32_t>(c), -1});
        }
      });
    }
  }
};

/// Narrower than the tolerance.
bool is_sliver(const Polygon2& shape) {
  double around = perimeter(shape.outer);
  for (const Ring2& hole : shape.holes) around += perimeter(hole);
  return 2.0 * area(shape) < near_enough * around;
}

/// Gives each sliver the piece of the neighbour with the longest common edge; through slivers
/// beside slivers in rounds.
void give_slivers_away(std::vector<Cell>& cells, const Neighbours& neighbours) {
  std::vector<char> open(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) open[i] = is_sliver(cells[i].shape) ? 1 : 0;
  constexpr int rounds = 8;
  for (int round = 0; round < rounds && std::count(open.begin(), open.end(), 1) > 0; ++round) {
    std::vector<std::map<std::int32_t, double>> common(cells.size());
    const auto add = [&](std::int32_t sliver, std::int32_t other, double length) {
      if (sliver < 0 || open[static_cast<std::size_t>(sliver)] == 0) return;
      if (other >= 0 && open[static_cast<std::size_t>(other)] != 0) return;
      common[static_cast<std::size_t>(sliver)]
            [other < 0 ? -1 : cells[static_cast<std::size_t>(other)].piece] += length;
    };
    for (const auto& edge : neighbours.edges) {
      const double span = std::hypot(edge.to.x - edge.from.x, edge.to.y - edge.from.y);
      add(edge.left, edge.right, span);
      add(edge.right, edge.left, span);
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (common[i].empty()) continue;
      cells[i].piece =
          std::max_element(common[i].begin(), common[i].end(), [](const auto& a, const auto& b) {
            return a.second < b.second;
          })->first;
      open[i] = 0;
    }
  }
}

/// Looks up who covers the cell, keeps the highest and the account of the others.
void settle(const Geos& geos, const std::vector<RoofPiece>& pieces, const PieceTree& tree,
            Cell& cell, Arrangement& arrangement) {
  const auto shape = [&] {
    std::vector<Ring2> rings{cell.shape.outer};
    rings.insert(rings.end(), cell.shape.holes.begin(), cell.shape.holes.end());
    return geos.polygon(rings);
  }();
  const auto inside = geos.own(GEOSPointOnSurface_r(geos.context(), shape.get()));
  Point2 at;
  if (GEOSGeomGetX_r(geos.context(), inside.get(), &at.x) != 1 ||
      GEOSGeomGetY_r(geos.context(), inside.get(), &at.y) != 1) {
    return;
  }
  constexpr double higher = 1e-6;
  double top = near_enough;
  std::map<std::int32_t, std::int32_t> highest;  // of each building its piece
  for (const std::int32_t index : tree.over(at)) {
    const RoofPiece& piece = pieces[static_cast<std::size_t>(index)];
    const double z = piece.plane.at(at);
    if (z <= near_enough + higher) continue;
    const auto [mine, first] = highest.try_emplace(piece.building, index);
    if (!first && z > pieces[static_cast<std::size_t>(mine->second)].plane.at(at) + higher) {
      mine->second = index;
    }
    if (z > top + higher) {
      top = z;
      cell.piece = index;
    }
  }
  const double size = area(cell.shape);
  const Point2 centre = middle(cell.shape);
  for (const auto& [building, index] : highest) {
    const RoofPiece& piece = pieces[static_cast<std::size_t>(index)];
    arrangement.own_volume[static_cast<std::size_t>(building)] += size * piece.plane.at(centre);
    const std::int32_t winner = pieces[static_cast<std::size_t>(cell.piece)].building;
    if (building != winner) arrangement.overlaps[{building, winner}] += size;
  }
}

}  // namespace

Arrangement arrange(const Geos& geos, const std::vector<RoofPiece>& pieces, std::size_t buildings) {
  Arrangement arrangement;
  arrangement.own_volume.resize(buildings);
  if (pieces.empty()) return arrangement;
  const PieceTree tree(geos, pieces);
  auto lines = edges_of(pieces);
  const auto crossings = crossing_lines(geos, pieces, tree);
  lines.insert(lines.end(), crossings.begin(), crossings.end());
  arrangement.cells = cells_between(geos, lines);
  for (Cell& cell : arrangement.cells) settle(geos, pieces, tree, cell, arrangement);
  const Neighbours neighbours(arrangement.cells);
  give_slivers_away(arrangement.cells, neighbours);
  const auto piece_of = [&](std::int32_t cell) {
    return cell < 0 ? -1 : arrangement.cells[static_cast<std::size_t>(cell)].piece;
  };
  for (const auto& edge : neighbours.edges) {
    arrangement.borders.push_back({edge.from, edge.to, piece_of(edge.left), piece_of(edge.right)});
  }
  return arrangement;
}

}  // namespace townskin_case
