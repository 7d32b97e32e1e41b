// The outdoor faces of buildings out of the arrangement: roofs over cells, walls between them.
#pragma once

#include "city/arrangement.hpp"

namespace townskin_case {

/// Fills faces, footprint, floor area, height and volume of the drafts' buildings.
void add_faces(const Geos& geos, const Arrangement& arrangement,
               const std::vector<RoofPiece>& pieces, std::vector<Draft>& drafts);

/// The walls of one building, cut out strip by strip and put together again in their planes.
class Walls {
 public:
  /// A strip from `from` to `to` with the outside on its right: between `low` and `high` at its two
  /// ends, which may meet at one of them.
  void add(const Point2& from, const Point2& to, const std::array<double, 2>& low,
           const std::array<double, 2>& high);
  [[nodiscard]] std::vector<Face> faces(const Geos& geos) const;

 private:
  struct Line {
    Point2 origin, along;
    std::vector<std::vector<Ring2>> strips;  ///< in distance along the line and height
  };
  std::size_t line_of(const Point2& from, const Point2& to);
  std::vector<Line> lines_;
  std::map<std::pair<std::int64_t, std::int64_t>, std::size_t> by_direction_;
};

}  // namespace townskin_case
