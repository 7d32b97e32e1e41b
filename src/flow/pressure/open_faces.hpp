// The faces through which the pressure acts: between two fluid cells, open, without a condition.
//
// They couple the cells in the pressure equation, and the gradient of its solution corrects their
// fluxes. Listed once, when openings and conditions are known. Used by the matrix and the
// correction.
#pragma once

#include <cstdint>

#include "flow/boundary.hpp"
#include "flow/box.hpp"
#include "flow/state.hpp"

namespace flow {

/// Bit `axis` of a cell stands for its upper face along that axis. The face between the last and
/// the first cell of a periodic y belongs to the last.
using OpenFaces = FieldOf<std::uint8_t>;

inline bool is_open(std::uint8_t faces, int axis) { return ((faces >> axis) & 1U) != 0; }

OpenFaces list_open_faces(const Openings& openings, const Boundary& boundary,
                          const BoundaryFaces& faces);

/// Distance in a field from a cell to the cell behind its upper face along an axis.
inline std::ptrdiff_t step_over(const Box& box, int axis, std::int32_t index) {
  const auto stride = static_cast<std::ptrdiff_t>(box.stride(axis));
  const std::int32_t n = box.n[static_cast<std::size_t>(axis)];
  return index < n ? stride : (1 - std::ptrdiff_t{n}) * stride;
}

}  // namespace flow
