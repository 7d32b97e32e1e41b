// Any bytes as boundary data of the flow: groups that lie on the grid, faces with one condition a
// side, or a reported fault. The first byte chooses the grid and its solid cells.
#include <cmath>
#include <cstdlib>
#include <set>
#include <sstream>

#include "flow/boundary.hpp"

namespace {

void expect(bool holds) {
  if (!holds) std::abort();
}

void check_group(const flow::Group& group, const flow::Triple& cells) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    expect(group.first[axis] >= 0 && group.first[axis] <= group.last[axis]);
    expect(group.last[axis] <= cells[axis]);
  }
  expect(group.holds_pressure() == (group.iv == flow::VelocityAt::free));
  expect(group.idir >= -1 && group.idir <= 1 && group.gas > 0.0);
}

void check_faces(const flow::BoundaryFaces& faces, const flow::Flags& fluid) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    std::set<std::pair<std::size_t, std::int32_t>> met;
    for (const flow::BoundaryFace& face : faces.of[axis]) {
      const auto& [i, j, k] = face.index;
      expect(fluid(i, j, k) > 0 && fluid.box().at(i, j, k) == face.cell);
      const std::size_t shift = face.side < 0 ? fluid.box().stride(static_cast<int>(axis)) : 0;
      expect(face.face + shift == face.cell);
      expect(met.emplace(face.face, face.side).second);
    }
  }
}

void read(frame::Log& log, frame::TextInput& file, unsigned char choice) {
  const flow::Box box{{1 + choice % 4, 1 + choice / 4 % 4, 1 + choice / 16 % 4}};
  flow::Species species;
  species.wm = {0.029, 0.018};
  flow::Ambient ambient;
  ambient.aklw = ambient.aelw = 1e-4;
  const flow::Boundary boundary = flow::flw_read_bndcnd(log, file, box.n, species, ambient);
  for (const flow::Group& group : boundary.groups) check_group(group, box.n);
  flow::Openings openings(box);
  if (choice >= 128) openings.fluid(1, 1, 1) = 0;
  const flow::BoundaryFaces faces = flow::list_faces(boundary, openings);
  check_faces(faces, openings.fluid);
  flow::flw_prep_ckbnd1(log, boundary, openings, faces);
  flow::flw_prep_ckbnd2(log, boundary, openings.fluid, faces);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (size == 0) return 0;
  std::ostringstream screen;
  frame::Log log(screen, screen);
  frame::TextInput file("fuzz", std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  try {
    read(log, file, data[0]);
  } catch (const frame::Failure&) {
    expect(screen.str().find("### ") != std::string::npos);
  } catch (const frame::Stop&) {
    expect(screen.str().find("### program error") != std::string::npos);
  }
  return 0;
}
