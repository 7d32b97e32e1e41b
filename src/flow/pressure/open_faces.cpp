#include "flow/pressure/open_faces.hpp"

namespace flow {

OpenFaces list_open_faces(const Openings& openings, const Boundary& boundary,
                          const BoundaryFaces& faces) {
  const Box& box = openings.fluid.box();
  OpenFaces open(box, 0);
  for (int axis = 0; axis < 3; ++axis) {
    if (!box.computed(axis)) continue;
    const auto a = static_cast<std::size_t>(axis);
    const auto bit = static_cast<std::uint8_t>(1U << static_cast<unsigned>(axis));
    const bool periodic = boundary.ends[a][0] == End::periodic;
    for (std::int32_t k = 1; k <= box.n[2]; ++k) {
      for (std::int32_t j = 1; j <= box.n[1]; ++j) {
        for (std::int32_t i = 1; i <= box.n[0]; ++i) {
          const std::int32_t index = Triple{i, j, k}[a];
          if (index == box.n[a] && !periodic) continue;
          const std::size_t here = box.at(i, j, k);
          const auto next = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(here) +
                                                     step_over(box, axis, index));
          if (openings.fluid[here] > 0 && openings.fluid[next] > 0 &&
              openings.gm[a][here] >= kClosedFace) {
            open[here] |= bit;
          }
        }
      }
    }
    for (const BoundaryFace& face : faces.of[a]) {
      open[face.face] = static_cast<std::uint8_t>(open[face.face] & ~bit);
    }
  }
  return open;
}

}  // namespace flow
