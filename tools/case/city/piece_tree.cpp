#include "city/piece_tree.hpp"

#include <algorithm>
#include <numeric>

namespace townskin_case {

PieceTree::PieceTree(const Geos& geos, const std::vector<RoofPiece>& pieces)
    : geos_(geos), tree_(GEOSSTRtree_create_r(geos.context(), 10)), indices_(pieces.size()) {
  std::iota(indices_.begin(), indices_.end(), 0);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    shapes_.push_back(geos.polygon(pieces[i].rings));
    prepared_.emplace_back(GEOSPrepare_r(geos.context(), shapes_.back().get()),
                           FreePrepared{geos.context()});
    GEOSSTRtree_insert_r(geos.context(), tree_, shapes_.back().get(), &indices_[i]);
  }
}

PieceTree::~PieceTree() { GEOSSTRtree_destroy_r(geos_.context(), tree_); }

std::vector<std::int32_t> PieceTree::query(const GEOSGeometry* box) const {
  std::vector<std::int32_t> found;
  GEOSSTRtree_query_r(
      geos_.context(), tree_, box,
      [](void* item, void* into) {
        static_cast<std::vector<std::int32_t>*>(into)->push_back(*static_cast<std::int32_t*>(item));
      },
      &found);
  std::sort(found.begin(), found.end());
  return found;
}

std::vector<std::int32_t> PieceTree::over(const Point2& at) const {
  const auto point = geos_.point(at);
  auto found = query(point.get());
  std::erase_if(found, [&](std::int32_t piece) {
    return GEOSPreparedIntersects_r(
               geos_.context(), prepared_[static_cast<std::size_t>(piece)].get(), point.get()) != 1;
  });
  return found;
}

std::vector<std::int32_t> PieceTree::beside(std::int32_t piece) const {
  return query(shape(piece));
}

}  // namespace townskin_case
