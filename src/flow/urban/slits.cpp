#include "flow/urban/slits.hpp"

#include <algorithm>

namespace flow {

namespace {

/// Calls `use` for the faces of a sheet, each named by the cell below it.
template <class Use>
void for_faces_of(const Group& sheet, Use&& use) {
  Triple first = sheet.first;
  for (std::int32_t& node : first) ++node;
  --first[static_cast<std::size_t>(sheet.axis)];
  for (std::int32_t k = first[2]; k <= sheet.last[2]; ++k) {
    for (std::int32_t j = first[1]; j <= sheet.last[1]; ++j) {
      for (std::int32_t i = first[0]; i <= sheet.last[0]; ++i) use(i, j, k);
    }
  }
}

bool is_plate(const Box& box, const Group& group) {
  if (group.axis < 0 || !box.computed(group.axis)) return false;
  const auto axis = static_cast<std::size_t>(group.axis);
  return group.first[axis] > 0 && group.first[axis] < box.n[axis];
}

void keep_once(std::vector<std::size_t>& faces) {
  std::ranges::sort(faces);
  const auto again = std::ranges::unique(faces);
  faces.erase(again.begin(), again.end());
}

}  // namespace

Slits mkslits(frame::Log& log, const Box& box, const Boundary& boundary) {
  const frame::Tag tag(log, "(flw_module_slits)(mkslits)");
  Slits slits;
  for (const Group& group : boundary.groups) {
    if (!is_plate(box, group)) continue;
    auto& faces = slits.faces[static_cast<std::size_t>(group.axis)];
    for_faces_of(group, [&](std::int32_t i, std::int32_t j, std::int32_t k) {
      frame::allocating(log, "slits", frame::bytes_grown(faces),
                        [&] { faces.push_back(box.at(i, j, k)); });
    });
    if (faces.size() > box.size()) keep_once(faces);
  }
  return slits;
}

void mkslit1(const Slits& slits, Openings& openings) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (const std::size_t face : slits.faces[axis]) openings.gm[axis][face] = 0.0;
  }
}

}  // namespace flow
