// What the flow solver makes of its inputs: nodes beyond the ends, faces with a condition, outputs
// that are due, fields from a coarser mesh.
#include <gtest/gtest.h>

#include "flow/boundary.hpp"
#include "flow/input/schedule.hpp"
#include "flow/output/restart.hpp"
#include "recorded_log.hpp"

namespace {

using namespace flow;

TEST(FlowAxis, EndsMirrorOrRepeat) {
  const std::vector<double> nodes{1.0, 2.0, 4.0, 7.0, 11.0};
  const std::vector<double> mirrored{-2, 0, 1, 2, 4, 7, 11, 15, 18};
  const std::vector<double> repeated{-6, -3, 1, 2, 4, 7, 11, 12, 14};
  EXPECT_EQ(make_axis(nodes, false).node, mirrored);
  EXPECT_EQ(make_axis(nodes, true).node, repeated);
  EXPECT_EQ(make_axis({0.0, 2.0}, false).node, (std::vector<double>{-4, -2, 0, 2, 4, 6}));
  const AxisTable axis = make_axis(nodes, false);
  EXPECT_EQ(axis.dx(4), 4.0);
  EXPECT_EQ(axis.xc(0), 0.5);
  EXPECT_EQ(axis.dxc(1), 1.5);
}

/// Sheets and blocks on a grid of 3 x 2 x 1 cells, of which (2, 1, 1) may be solid.
struct Faces : testing::Test {
  void sheet(int axis, std::int32_t at, std::int32_t first, std::int32_t last, std::int32_t idir) {
    Group group;
    group.axis = axis;
    group.idir = idir;
    const std::size_t a = static_cast<std::size_t>(axis);
    group.first = {first, first, 0};
    group.last = {last, last, 1};
    group.first[a] = group.last[a] = at;
    boundary.groups.push_back(group);
  }
  /// Group of the face at a side of a cell, -1 without one.
  std::int32_t at(const Triple& cell, std::size_t axis, std::int32_t side) const {
    const BoundaryFaces faces = list_faces(boundary, openings);
    Triple below = cell;
    if (side < 0) --below[axis];
    for (const BoundaryFace& face : faces.of[axis]) {
      if (face.index != cell || face.side != side) continue;
      EXPECT_EQ(face.face, fluid.box().at(below[0], below[1], below[2]));
      EXPECT_EQ(face.cell, fluid.box().at(cell[0], cell[1], cell[2]));
      return face.group;
    }
    return -1;
  }

  flow::Openings openings{Box{{3, 2, 1}}};
  Flags& fluid = openings.fluid;
  Boundary boundary;
};

TEST_F(Faces, TheLaterOfTwoSheetsHolds) {
  sheet(0, 0, 0, 2, 1);
  sheet(0, 0, 1, 2, 1);
  EXPECT_EQ(at({1, 1, 1}, 0, -1), 0);
  EXPECT_EQ(at({1, 2, 1}, 0, -1), 1);
  EXPECT_EQ(list_faces(boundary, openings).of[0].size(), 2U);
}

TEST_F(Faces, AnInnerSheetHoldsTheSideOfItsFluid) {
  sheet(0, 1, 0, 1, 1);
  sheet(0, 2, 1, 2, 0);
  sheet(1, 1, 0, 3, -1);
  EXPECT_EQ(at({2, 1, 1}, 0, -1), 0);
  EXPECT_EQ(at({1, 1, 1}, 0, 1), -1);
  EXPECT_EQ(at({2, 2, 1}, 0, 1), 1);
  EXPECT_EQ(at({3, 2, 1}, 0, -1), 1);
  EXPECT_EQ(at({2, 1, 1}, 1, 1), 2);
  EXPECT_EQ(at({2, 2, 1}, 1, -1), -1);
}

TEST_F(Faces, ABlockHoldsItsSolidsButNoEnd) {
  fluid(2, 1, 1) = 0;
  fluid(3, 1, 1) = 0;
  sheet(0, 1, 0, 1, 0);
  Group block;
  block.last = {3, 2, 1};
  boundary.groups.push_back(block);
  EXPECT_EQ(at({1, 1, 1}, 0, 1), 1);
  EXPECT_EQ(at({2, 2, 1}, 1, -1), 1);
  EXPECT_EQ(at({3, 2, 1}, 1, -1), 1);
  const BoundaryFaces faces = list_faces(boundary, openings);
  EXPECT_EQ(faces.of[0].size(), 1U);
  EXPECT_EQ(faces.of[1].size(), 2U);
  EXPECT_TRUE(faces.of[2].empty());
}

/// Iterations (of steps of 0.5 s) at which a schedule is due, from `first` to 12, without a stop.
std::vector<std::int32_t> due(Schedule schedule, std::int32_t first) {
  std::vector<std::int32_t> found;
  for (std::int32_t iter = first; iter <= 12; ++iter) {
    if (is_due(schedule, iter, 0.5 * iter, 0.5, false)) found.push_back(iter);
  }
  return found;
}

TEST(FlowSchedule, IsDueAtItsTimes) {
  using Iterations = std::vector<std::int32_t>;
  EXPECT_EQ(due({2, 9, 3}, 1), (Iterations{2, 5, 8}));
  EXPECT_EQ(due({2, 9, 3}, 6), (Iterations{8}));
  EXPECT_EQ(due({-7, 9, 4}, 6), (Iterations{9}));
  EXPECT_EQ(due({10, 20, 0}, 1), (Iterations{10, 11, 12}));
  EXPECT_EQ(due({1.04, 3.0, 1.0, true}, 1), (Iterations{2, 4, 6}));
  EXPECT_EQ(due({0.0, 1.5, 0.0, true}, 1), (Iterations{1, 2, 3}));
  EXPECT_EQ(due({0.6, 9.0, 1.0, true}, 7), (Iterations{8, 10, 12}));
  EXPECT_EQ(due({-999, -999, 1}, 1), Iterations{});
  Schedule far{100, 200, 1};
  EXPECT_TRUE(is_due(far, 1, 0.5, 0.5, true));
  Schedule none{-999, -999, 1};
  EXPECT_FALSE(is_due(none, 1, 0.5, 0.5, true));
}

// A flow without divergence on the coarse mesh has none on the fine one: fluxes are linear along
// their normal by length, however the cells are divided.
TEST(FlowInitial, SpreadsWithoutDivergence) {
  GridTables grid;
  grid.box.n = {6, 4, 2};
  grid.axis = {make_axis({0, 1, 3, 4, 8, 9, 12}, false), make_axis({0, 2, 3, 7, 8}, false),
               make_axis({0, 1, 4}, false)};
  FlowSet set;
  set.head.cells = {2, 2, 1};
  set.head.ns = 1;
  set.p = {1, 2, 3, 4};
  set.t = {301, 302, 303, 304};
  set.ys = {0.1, 0.2, 0.3, 0.4};
  // Coarse cells of 4 x 3 (8 x 5) m: what enters along x leaves along y and z.
  set.ru = {
      std::vector<double>{0, 8, 24, 0, -4, 4}, {0, 0, -3, -6, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0}};
  const std::array<double, 2> width{4, 8};
  const std::array<double, 2> height{3, 5};
  for (std::size_t cell = 0; cell < 4; ++cell) {
    const std::size_t i = cell % 2;
    const std::size_t j = cell / 2;
    const double along_x = (set.ru[0][cell + j + 1] - set.ru[0][cell + j]) / width[i];
    const double along_y = (set.ru[1][cell + 2] - set.ru[1][cell]) / height[j];
    set.ru[2][cell + 4] = -4.0 * (along_x + along_y);
  }
  State state;
  for (Field* field : {&state.p, &state.t}) *field = Field(grid.box);
  state.ys.assign(1, Field(grid.box));
  for (Field& ru : state.ru) ru = Field(grid.box);
  spread(set, grid, state);
  EXPECT_EQ(state.t(3, 2, 2), 301.0);
  EXPECT_EQ(state.t(4, 2, 2), 302.0);
  EXPECT_EQ(state.ys[0](6, 3, 1), 0.4);
  EXPECT_EQ(state.ru[0](3, 4, 1), -4.0);
  for (std::int32_t k = 1; k <= 2; ++k) {
    for (std::int32_t j = 1; j <= 4; ++j) {
      for (std::int32_t i = 1; i <= 6; ++i) {
        const double divergence =
            (state.ru[0](i, j, k) - state.ru[0](i - 1, j, k)) / grid.axis[0].dx(i) +
            (state.ru[1](i, j, k) - state.ru[1](i, j - 1, k)) / grid.axis[1].dx(j) +
            (state.ru[2](i, j, k) - state.ru[2](i, j, k - 1)) / grid.axis[2].dx(k);
        EXPECT_NEAR(divergence, 0.0, 1e-13) << i << ' ' << j << ' ' << k;
      }
    }
  }
}

TEST(FlowInitial, ValuesThatNoAirHasAreTold) {
  const auto words = [](double t, double pressure) {
    RecordedLog out;
    FlowSet set;
    set.t = {300.0, t};
    set.has_pressure = true;
    set.pressure = {pressure, 1.0};
    return out.lines_of([&] { check_values(out.log, "### heading", set); });
  };
  EXPECT_EQ(words(1e-3, 1.0), "");
  EXPECT_EQ(words(0.0, 1.0), "### heading\nt <= 0\nvalue no. of t = 2\n");
  EXPECT_EQ(words(300.0, 0.0), "### heading\nthermodynamic pressure <= 0\n");
}

}  // namespace
