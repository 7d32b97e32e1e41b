// Whether every face that needs a condition has one, and no other has.

#include <string>

#include "flow/boundary.hpp"

namespace flow {

namespace {

constexpr std::array<std::array<std::string_view, 2>, 3> kFaceNames{
    {{"(i-1/2)", "(i+1/2)"}, {"(j-1/2)", "(j+1/2)"}, {"(k-1/2)", "(k+1/2)"}}};
constexpr std::array<char, 3> kAxes{'i', 'j', 'k'};

/// Per axis, which faces have a condition: bit 0 for the cell below, bit 1 for the one above.
class Held {
 public:
  Held(const Flags& fluid, const BoundaryFaces& faces) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      held_[axis] = FieldOf<std::uint8_t>(fluid.box(), 0);
      for (const BoundaryFace& face : faces.of[axis]) {
        held_[axis][face.face] |= face.side > 0 ? 1 : 2;
      }
    }
  }
  /// Conditions on the face at a side (0 lower, 1 upper) of a cell: one for the cell itself, and
  /// any at all.
  struct Answer {
    bool own, any;
  };
  [[nodiscard]] Answer at(std::size_t axis, const Triple& cell, std::size_t side) const {
    Triple face = cell;
    if (side == 0) --face[axis];
    const std::uint8_t bits = held_[axis](face[0], face[1], face[2]);
    return {(bits & (side == 1 ? 1 : 2)) != 0, bits != 0};
  }

 private:
  std::array<FieldOf<std::uint8_t>, 3> held_;
};

[[noreturn]] void refuse(frame::Log& log, std::string_view words, std::size_t axis,
                         std::size_t side, const Triple& cell) {
  log.fail("### data error (flw_prep_ckbnd1)",
           frame::items(words, std::string(kFaceNames[axis][side]) + " cell face"),
           frame::items("index of cell =", cell[0], cell[1], cell[2]));
}

void check_face(frame::Log& log, const Boundary& boundary, const Openings& openings,
                const Held& held, std::size_t axis, std::size_t side, const Triple& cell) {
  const Flags& fluid = openings.fluid;
  const std::int32_t n = fluid.box().n[axis];
  const bool at_end = side == 0 ? cell[axis] == 1 : cell[axis] == n;
  const Held::Answer found = held.at(axis, cell, side);
  const End end = at_end ? boundary.ends[axis][side] : End::open;
  Triple beyond = cell;
  beyond[axis] += side == 0 ? -1 : 1;
  const Triple face = side == 0 ? beyond : cell;
  if (end == End::periodic) beyond[axis] = side == 0 ? n : 1;
  const bool shut = fluid(beyond[0], beyond[1], beyond[2]) <= 0 ||
                    openings.gm[axis](face[0], face[1], face[2]) < kClosedFace;
  if (end == End::symmetric || (end == End::periodic && !shut)) {
    if (found.own) refuse(log, "no boundary condition can be specified at", axis, side, cell);
    return;
  }
  const bool closed = at_end || shut || found.any;
  if (closed && !found.own) refuse(log, "no boundary condition specified at", axis, side, cell);
}

}  // namespace

void flw_prep_ckbnd1(frame::Log& log, const Boundary& boundary, const Openings& openings,
                     const BoundaryFaces& faces) {
  const frame::Tag tag(log, "(flw_prep_ckbnd1)");
  const Flags& fluid = openings.fluid;
  const Held held(fluid, faces);
  const Box& box = fluid.box();
  for_rows(box, [&](std::size_t place, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= box.n[0]; ++i) {
      if (fluid[place + static_cast<std::size_t>(i - 1)] <= 0) continue;
      for (std::size_t face = 0; face < 6; ++face) {
        if (!box.computed(static_cast<int>(face / 2))) continue;
        check_face(log, boundary, openings, held, face / 2, face % 2, {i, j, k});
      }
    }
  });
}

void flw_prep_ckbnd2(frame::Log& log, const Boundary& boundary, const Flags& fluid,
                     const BoundaryFaces& faces) {
  const frame::Tag tag(log, "(flw_prep_ckbnd2)");
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (const BoundaryFace& face : faces.of[axis]) {
      const std::int32_t at = face.index[axis] - (face.side < 0 ? 1 : 0);
      if (at == 0 || at == fluid.box().n[axis]) continue;
      Triple beyond = face.index;
      beyond[axis] += face.side;
      if (fluid(beyond[0], beyond[1], beyond[2]) <= 0) continue;
      const Group& group = boundary.groups[static_cast<std::size_t>(face.group)];
      const bool flows = group.gives_velocity() && group.velocity[axis] != 0.0;
      if (!group.holds_pressure() && !flows) continue;
      Triple index = face.index;
      index[axis] = at;
      log.fail("### data error (flw_prep_ckbnd2)",
               std::string(group.holds_pressure() ? "pressure" : "velocity") +
                   " fixed boundary condition",
               "can not be specified on inner plate",
               frame::items("index of " + std::string(1, kAxes[axis]) + "-cell-face =", index[0],
                            index[1], index[2]));
    }
  }
}

}  // namespace flow
