// The faces of a body that are not upright, made flat.
#pragma once

#include "city/features.hpp"
#include "city/roof_piece.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {

/// A face with its plane.
struct FlatFace {
  std::vector<Ring3> rings;
  FaceRole role = FaceRole::unknown;
  Vector3 normal;  ///< of length 1, as the ring turns
  double size = 0.0;
};

/// Its rings seen from above.
std::vector<Ring2> plan_of(const std::vector<Ring3>& rings);

/// The plane through the middle of its corners.
Plane plane_of(const FlatFace& face);

/// The faces of the feature, largest first. A face more than a centimetre off its plane comes as
/// triangles.
std::vector<FlatFace> flat_faces(const Geos& geos, const Feature& feature, Report& report);

}  // namespace townskin_case
