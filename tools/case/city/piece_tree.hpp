// Finds the pieces of roof over a place.
#pragma once

#include "city/roof_piece.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {

class PieceTree {
 public:
  PieceTree(const Geos& geos, const std::vector<RoofPiece>& pieces);
  ~PieceTree();
  PieceTree(const PieceTree&) = delete;
  PieceTree& operator=(const PieceTree&) = delete;

  /// Indices of the pieces whose outline holds the point, rising.
  [[nodiscard]] std::vector<std::int32_t> over(const Point2& point) const;
  /// Indices of the pieces whose box meets that of the piece, rising.
  [[nodiscard]] std::vector<std::int32_t> beside(std::int32_t piece) const;
  [[nodiscard]] const GEOSGeometry* shape(std::int32_t piece) const {
    return shapes_[static_cast<std::size_t>(piece)].get();
  }

 private:
  [[nodiscard]] std::vector<std::int32_t> query(const GEOSGeometry* box) const;
  struct FreePrepared {
    GEOSContextHandle_t context;
    void operator()(const GEOSPreparedGeometry* p) const { GEOSPreparedGeom_destroy_r(context, p); }
  };
  const Geos& geos_;
  GEOSSTRtree* tree_;
  std::vector<std::int32_t> indices_;
  std::vector<Geos::Shape> shapes_;
  std::vector<std::unique_ptr<const GEOSPreparedGeometry, FreePrepared>> prepared_;
};

}  // namespace townskin_case
