// The faces that the groups hold, and whether every face that needs a condition has one.

#include <algorithm>
#include <string>

#include "flow/boundary.hpp"

namespace flow {

namespace {

/// Neighbour of a cell along an axis.
Triple moved(Triple cell, int axis, std::int32_t by) {
  cell[static_cast<std::size_t>(axis)] += by;
  return cell;
}

bool is_fluid(const Flags& fluid, const Triple& cell) {
  return fluid(cell[0], cell[1], cell[2]) > 0;
}

/// Calls `use` for all cells from `first` to `last`, k outer.
template <class Use>
void for_cells(const Triple& first, const Triple& last, Use&& use) {
  for (std::int32_t k = first[2]; k <= last[2]; ++k) {
    for (std::int32_t j = first[1]; j <= last[1]; ++j) {
      for (std::int32_t i = first[0]; i <= last[0]; ++i) use(Triple{i, j, k});
    }
  }
}

/// Number (from 1) of the group that holds each face of an axis, seen from the fluid cell below it
/// and above it; 0: none. A face is named by the cell below.
class Holders {
 public:
  Holders(const Openings& openings, int axis, bool wraps)
      : fluid_(openings.fluid),
        open_(openings.gm[static_cast<std::size_t>(axis)]),
        axis_(axis),
        wraps_(wraps),
        below_(fluid_.box(), 0),
        above_(fluid_.box(), 0) {}

  void enter(const Group& group, std::int32_t number) {
    if (group.axis < 0) {
      enter_block(group, number);
    } else if (group.axis == axis_) {
      enter_sheet(group, number);
    }
  }

  /// Group of the face at a side (-1, +1) of a cell, for that cell.
  [[nodiscard]] std::int32_t of(const Triple& cell, std::int32_t side) const {
    if (side > 0) return below_(cell[0], cell[1], cell[2]);
    const Triple face = moved(cell, axis_, -1);
    return above_(face[0], face[1], face[2]);
  }

 private:
  [[nodiscard]] std::int32_t end() const { return fluid_.box().n[static_cast<std::size_t>(axis_)]; }
  [[nodiscard]] std::int32_t along(const Triple& cell) const {
    return cell[static_cast<std::size_t>(axis_)];
  }
  [[nodiscard]] bool fluid_at(const Triple& cell) const {
    return along(cell) >= 1 && along(cell) <= end() && is_fluid(fluid_, cell);
  }

  /// Cells whose upper faces the group's box holds; on a sheet one layer of them.
  [[nodiscard]] std::array<Triple, 2> cells_below(const Group& group) const {
    Triple first = group.first;
    for (std::int32_t& node : first) ++node;
    --first[static_cast<std::size_t>(axis_)];
    return {first, group.last};
  }

  void enter_sheet(const Group& group, std::int32_t number) {
    const auto [first, last] = cells_below(group);
    for_cells(first, last, [&](const Triple& face) {
      if (group.idir <= 0 && fluid_at(face)) below_(face[0], face[1], face[2]) = number;
      if (group.idir >= 0 && fluid_at(moved(face, axis_, 1))) {
        above_(face[0], face[1], face[2]) = number;
      }
    });
  }

  void enter_block(const Group& group, std::int32_t number) {
    const auto [first, last] = cells_below(group);
    for_cells(first, last, [&](const Triple& face) {
      const bool first_end = along(face) == 0;
      const bool last_end = along(face) == end();
      if ((first_end || last_end) && !wraps_) return;
      // Beyond a periodic end stand the cells of the other one.
      const Triple lower = first_end ? moved(face, axis_, end()) : face;
      const Triple under = last_end ? moved(face, axis_, -end()) : face;
      const bool below = fluid_at(lower);
      const bool above = fluid_at(moved(under, axis_, 1));
      if (below && above && open_(face[0], face[1], face[2]) >= kClosedFace) return;
      if (below) below_(lower[0], lower[1], lower[2]) = number;
      if (above) above_(under[0], under[1], under[2]) = number;
    });
  }

  const Flags& fluid_;
  const Field& open_;  // fractions of the faces
  int axis_;
  bool wraps_;  // the axis is periodic
  Flags below_, above_;
};

std::vector<BoundaryFace> faces_of(const Holders& holders, const Flags& fluid, int axis) {
  const Box& box = fluid.box();
  std::vector<BoundaryFace> faces;
  for_cells({1, 1, 1}, box.n, [&](const Triple& cell) {
    for (const std::int32_t side : {-1, 1}) {
      const std::int32_t number = holders.of(cell, side);
      if (number == 0) continue;
      const Triple face = side < 0 ? moved(cell, axis, -1) : cell;
      faces.push_back({box.at(face[0], face[1], face[2]), box.at(cell[0], cell[1], cell[2]), cell,
                       side, number - 1});
    }
  });
  return faces;
}

}  // namespace

Group slip_wall() {
  Group group;
  group.iv = VelocityAt::slip;
  return group;
}

BoundaryFaces list_faces(const Boundary& boundary, const Openings& openings) {
  const Flags& fluid = openings.fluid;
  BoundaryFaces faces;
  for (int axis = 0; axis < 3; ++axis) {
    if (!fluid.box().computed(axis)) continue;
    Holders holders(openings, axis, axis == 1 && boundary.periodic_y());
    for (std::size_t g = 0; g < boundary.groups.size(); ++g) {
      holders.enter(boundary.groups[g], static_cast<std::int32_t>(g) + 1);
    }
    faces.of[static_cast<std::size_t>(axis)] = faces_of(holders, fluid, axis);
  }
  return faces;
}

void close_faces(const Openings& openings, Boundary& boundary, BoundaryFaces& faces) {
  const auto wall = static_cast<std::int32_t>(boundary.groups.size());
  bool any = false;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (BoundaryFace& face : faces.of[axis]) {
      if (openings.gm[axis][face.face] >= kClosedFace) continue;
      const Group& group = boundary.groups[static_cast<std::size_t>(face.group)];
      const bool flows = group.gives_velocity() && group.velocity[axis] != 0.0;
      if (group.iv != VelocityAt::free && !flows) continue;
      face.group = wall;
      any = true;
    }
  }
  if (any) boundary.groups.push_back(slip_wall());
}

bool holds_pressure(const Boundary& boundary, const BoundaryFaces& faces) {
  return std::ranges::any_of(faces.of, [&](const std::vector<BoundaryFace>& of_axis) {
    return std::ranges::any_of(of_axis, [&](const BoundaryFace& face) {
      return boundary.groups[static_cast<std::size_t>(face.group)].holds_pressure();
    });
  });
}

}  // namespace flow
