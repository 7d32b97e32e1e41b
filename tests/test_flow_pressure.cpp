// The pressure step: what it leaves of the divergence, and closed domains.
#include <gtest/gtest.h>

#include <cmath>

#include "../bench/sample_surfaces.hpp"
#include "flow/halo.hpp"
#include "flow/pressure/cldiv.hpp"
#include "flow/pressure/closed_domain.hpp"
#include "flow/pressure/clprs.hpp"
#include "recorded_log.hpp"

namespace {

using flow::End;
using flow::Field;
using flow::Group;
using flow::PressureAt;
using flow::Triple;
using flow::VelocityAt;

Group sheet(int axis, std::int32_t node, const Triple& cells, PressureAt ip, VelocityAt iv) {
  Group group;
  group.axis = axis;
  group.last = cells;
  group.first[static_cast<std::size_t>(axis)] = node;
  group.last[static_cast<std::size_t>(axis)] = node;
  group.idir = node == 0 ? 1 : -1;
  group.ip = ip;
  group.iv = iv;
  return group;
}

/// A flow of draws on a stretched grid: fluxes, densities, walls all around.
struct Case {
  explicit Case(const Triple& cells, std::uint32_t seed = 1) : draw(seed) {
    grid.box.n = cells;
    for (std::size_t a = 0; a < 3; ++a) {
      for (const std::int32_t node : {0, cells[a]}) {
        boundary.groups.push_back(
            sheet(static_cast<int>(a), node, cells, PressureAt::free, VelocityAt::no_slip));
      }
    }
    openings = flow::Openings(grid.box);
    settings.control.epscg = 1e-13;
    settings.control.itercg = 500;
    settings.control.gsfcg = 0.8;
  }
  /// The group of an end.
  Group& end(std::size_t axis, std::size_t side) { return boundary.groups[2 * axis + side]; }
  /// Takes the groups of the ends of an axis away.
  void end_as(std::size_t axis, End end) {
    boundary.ends[axis] = {end, end};
    kept_[axis] = false;
  }
  void solid(const Triple& first, const Triple& last) {
    for (std::int32_t k = first[2]; k <= last[2]; ++k) {
      for (std::int32_t j = first[1]; j <= last[1]; ++j) {
        for (std::int32_t i = first[0]; i <= last[0]; ++i) openings.fluid(i, j, k) = 0;
      }
    }
  }
  /// Spreads the conditions, draws the fields and makes the step; what that tells.
  std::string start() {
    std::vector<Group> groups;
    for (std::size_t g = 0; g < boundary.groups.size(); ++g) {
      if (g >= 6 || kept_[g / 2]) groups.push_back(boundary.groups[g]);
    }
    Group block;  // of the obstacles
    block.last = grid.box.n;
    block.iv = VelocityAt::no_slip;
    groups.push_back(block);
    boundary.groups = groups;
    for (std::size_t a = 0; a < 3; ++a) {
      std::vector<double> nodes{0.0};
      for (std::int32_t i = 0; i < grid.box.n[a]; ++i) {
        nodes.push_back(nodes.back() + draw(0.5, 1.5));
      }
      grid.axis[a] = flow::make_axis(nodes, boundary.ends[a][0] == End::periodic);
    }
    faces = flow::list_faces(boundary, openings);
    draw_fields();
    return out.lines_of([&] {
      step = flow::make_pressure_step(out.log, settings, grid, openings, boundary, faces);
    });
  }
  void draw_fields() {
    for (Field& r : state.r) r = Field(grid.box, 1.2);
    state.p = Field(grid.box);
    for (std::size_t a = 0; a < 3; ++a) {
      state.ru[a] = Field(grid.box);
      if (!grid.box.computed(static_cast<int>(a))) continue;
      for (double& ru : state.ru[a].all()) ru = draw(-1.0, 1.0);
      flow::fill_face_halos(state.ru[a], static_cast<int>(a), boundary.ends);
      for (const flow::BoundaryFace& face : faces.of[a]) {
        if (!group_of(face).holds_pressure()) state.ru[a][face.face] = given(face, a);
      }
    }
  }
  [[nodiscard]] const Group& group_of(const flow::BoundaryFace& face) const {
    return boundary.groups[static_cast<std::size_t>(face.group)];
  }
  [[nodiscard]] double given(const flow::BoundaryFace& face, std::size_t axis) const {
    return 1.2 * group_of(face).velocity[axis];
  }
  std::string advance() {
    return out.lines_of([&] {
      flow::flw_clprs(
          out.log, crew, step, 0.1, nullptr, [&] { set_density(); }, state);
    });
  }
  void set_density() {
    for (double& r : state.r[0].all()) r = state.pt / 1e5 * 1.2;
  }
  /// Largest divergence in cells [kg/s], the cell `except` left out.
  [[nodiscard]] double divergence(const Triple& except = {}) {
    Field div(grid.box);
    flow::flw_cldiv(crew, grid, openings, state, 0.1, nullptr, div);
    if (except[0] > 0) div(except[0], except[1], except[2]) = 0.0;
    double worst = 0.0;
    for (const double value : div.all()) worst = std::max(worst, std::abs(value));
    return worst;
  }

  sample::Draws draw;
  RecordedLog out;
  flow::Settings settings;
  flow::GridTables grid;
  flow::Boundary boundary;
  flow::BoundaryFaces faces;
  flow::Openings openings;
  flow::State state;
  frame::Crew crew;
  flow::PressureStep step;

 private:
  std::array<bool, 3> kept_{true, true, true};
};

void hold(Group& group) {
  group.ip = PressureAt::held;
  group.iv = VelocityAt::free;
}

// Whatever the openings and the ends are, the corrected fluxes keep the mass of each cell; those
// that a condition gives are left as they were.
TEST(PressureStep, LeavesNoDivergence) {
  struct Row {
    const char* name;
    Triple cells;
    void (*change)(Case&);
  };
  const std::vector<Row> table{{"one side held", {6, 5, 4}, [](Case& x) { hold(x.end(0, 1)); }},
                               {"an inlet and two held sides",
                                {6, 5, 4},
                                [](Case& x) {
                                  x.end(0, 0).iv = VelocityAt::given;
                                  x.end(0, 0).velocity = {2.0, 0.0, 0.0};
                                  hold(x.end(0, 1));
                                  hold(x.end(2, 1));
                                  x.end(2, 1).ip = PressureAt::column;
                                }},
                               {"obstacles",
                                {8, 6, 5},
                                [](Case& x) {
                                  hold(x.end(1, 0));
                                  x.solid({2, 2, 1}, {3, 3, 3});
                                  x.solid({6, 4, 1}, {6, 6, 5});
                                }},
                               {"partly open cells and faces",
                                {6, 5, 4},
                                [](Case& x) {
                                  hold(x.end(0, 0));
                                  for (double& part : x.openings.gmc.all()) part = x.draw(0.2, 1.0);
                                  for (Field& gm : x.openings.gm) {
                                    for (double& part : gm.all())
                                      part = x.draw.chance(0.1) ? 0.0 : x.draw(0.2, 1.0);
                                  }
                                }},
                               {"periodic y, symmetric z",
                                {5, 6, 4},
                                [](Case& x) {
                                  hold(x.end(0, 0));
                                  x.end_as(1, End::periodic);
                                  x.end_as(2, End::symmetric);
                                }},
                               {"a plane", {6, 1, 7}, [](Case& x) { hold(x.end(2, 1)); }},
                               {"a periodic line of two", {1, 2, 3}, [](Case& x) {
                                  hold(x.end(2, 0));
                                  x.end_as(1, End::periodic);
                                }}};
  for (const Row& row : table) {
    for (const bool multigrid : {false, true}) {
      SCOPED_TRACE(testing::Message() << row.name << ", iamg " << multigrid);
      Case x(row.cells);
      x.settings.records.iamg = multigrid ? 1 : 0;
      row.change(x);
      EXPECT_EQ(x.start(), "");
      ASSERT_GT(x.divergence(), 0.1);
      const std::string line = x.advance();
      EXPECT_TRUE(line.starts_with(multigrid ? "amgcg " : "iccg  ")) << line;
      EXPECT_TRUE(line.ends_with(" 0\n")) << line;
      EXPECT_LT(x.divergence(), 1e-11);
      for (std::size_t a = 0; a < 3; ++a) {
        for (const flow::BoundaryFace& face : x.faces.of[a]) {
          if (x.group_of(face).holds_pressure()) continue;
          EXPECT_EQ(x.state.ru[a][face.face], x.given(face, a));
        }
      }
    }
  }
}

// Parts that walls shut in, each with its own fix point: the multigrid finds the `phi` of the ICCG.
TEST(PressureStep, FindsTheSameWithBothSolvers) {
  for (const bool closed : {false, true}) {
    std::array<Field, 2> phi;
    for (const std::int32_t iamg : {0, 1}) {
      Case x({13, 9, 11}, 5);
      if (!closed) hold(x.end(2, 1));
      x.solid({1, 1, 1}, {7, 5, 6});
      for (const Triple& inside : {Triple{2, 2, 2}, Triple{4, 3, 2}, Triple{5, 3, 2}}) {
        x.openings.fluid(inside[0], inside[1], inside[2]) = 1;
      }
      x.settings.records.iamg = iamg;
      x.start();
      x.state.pt = 1e5;
      EXPECT_EQ(x.step.solver.fixed.size(), closed ? 3U : 2U);
      x.advance();
      EXPECT_LT(x.divergence(), 1e-10);
      for (const std::size_t cell : x.step.solver.fixed) EXPECT_EQ(x.step.div[cell], 0.0);
      phi[static_cast<std::size_t>(iamg)] = x.step.div;
    }
    for (std::size_t cell = 0; cell < phi[0].all().size(); ++cell) {
      EXPECT_NEAR(phi[0][cell], phi[1][cell], 1e-10);
    }
  }
}

// The pressure takes up phi/dt: a second step finds nothing to correct, and the kept pressure's
// gradient is what the fluxes lost in the first.
TEST(PressureStep, PutsTheCorrectionIntoThePressure) {
  Case x({6, 1, 1});
  hold(x.end(0, 1));
  x.start();
  const Field before = x.state.ru[0];
  x.advance();
  for (std::int32_t i = 1; i < 6; ++i) {
    const double slope = (x.state.p(i + 1, 1, 1) - x.state.p(i, 1, 1)) / x.grid.axis[0].dxc(i);
    EXPECT_NEAR(x.state.ru[0](i, 1, 1), before(i, 1, 1) - 0.1 * slope, 1e-12);
  }
  const double half = 0.5 * x.grid.axis[0].dx(6);
  EXPECT_NEAR(x.state.ru[0](6, 1, 1), before(6, 1, 1) + 0.1 * x.state.p(6, 1, 1) / half, 1e-12);
  const Field once = x.state.p;
  x.advance();
  for (std::int32_t i = 1; i <= 6; ++i) EXPECT_NEAR(x.state.p(i, 1, 1), once(i, 1, 1), 1e-11);
}

// Walls all around: one fix point, told once, the first of the largest cells. A cell behind walls
// gets a point of its own, and the run goes on.
TEST(PressureStep, FixesThePressureOfClosedParts) {
  Case x({5, 4, 4});
  x.solid({1, 1, 1}, {2, 2, 2});
  x.openings.fluid(1, 1, 1) = 1;  // shut in
  const std::string lines = x.start();
  EXPECT_TRUE(x.step.closed);
  ASSERT_EQ(x.step.solver.fixed.size(), 2U);
  Triple largest{};
  double volume = 0.0;
  flow::for_rows(x.grid.box, [&](std::size_t, std::int32_t j, std::int32_t k) {
    for (std::int32_t i = 1; i <= 5; ++i) {
      if (x.openings.fluid(i, j, k) > 0 && x.grid.volume(i, j, k) > volume) {
        largest = {i, j, k};
        volume = x.grid.volume(i, j, k);
      }
    }
  });
  EXPECT_EQ(lines, "pressure fix point ; (i,j,k)= " + std::to_string(largest[0]) + " " +
                       std::to_string(largest[1]) + " " + std::to_string(largest[2]) +
                       "\n%%% enclosed parts of the air, each with a pressure fix point of its "
                       "own = 1\n");
  x.state.pt = 1e5;
  x.advance();
  EXPECT_LT(x.divergence(largest), 1e-11);
  // Walls let nothing through, so the fixed cell has nothing left either.
  EXPECT_LT(x.divergence(), 1e-10);

  Case ring({2, 4, 2});  // joined through the periodic ends only
  ring.end_as(1, End::periodic);
  ring.solid({1, 1, 1}, {2, 3, 1});
  ring.solid({1, 2, 2}, {2, 3, 2});
  ring.start();
  EXPECT_EQ(ring.step.solver.fixed.size(), 1U);

  Case none({2, 2, 2});
  none.solid({1, 1, 1}, {2, 2, 2});
  EXPECT_EQ(none.start(), "### program error -1- (flw_matrix)\n");
}

// What enters a domain without held pressure stays in it: its pressure rises by that, and the
// continuity equation agrees with it in every cell.
TEST(PressureStep, KeepsTheMassOfAClosedDomain) {
  Case x({5, 4, 3});
  x.end(0, 0).iv = VelocityAt::given;
  x.end(0, 0).velocity = {3.0, 0.0, 0.0};
  x.end(0, 1).iv = VelocityAt::given;
  x.end(0, 1).velocity = {1.0, 0.0, 0.0};
  x.start();
  x.state.pt = 1e5;
  const double mass = flow::air_mass(x.crew, x.grid, x.openings, x.state.r[0], x.step.rows);
  const double area = x.grid.axis[1].x(5) * x.grid.axis[2].x(4);
  x.advance();
  EXPECT_NEAR(x.state.reference_mass, mass + 0.1 * 1.2 * 2.0 * area, 1e-9 * mass);
  EXPECT_NEAR(flow::air_mass(x.crew, x.grid, x.openings, x.state.r[0], x.step.rows),
              x.state.reference_mass, 1e-12 * mass);
  EXPECT_NEAR(x.state.pt, 1e5 * x.state.reference_mass / mass, 1e-7);
  EXPECT_LT(x.divergence(), 1e-10);
}

// Air at rest needs no iteration; what rounding leaves of a right side is solved as any other.
TEST(PressureStep, GoesOnWhenTheAirComesToRest) {
  for (const std::int32_t kind : {0, 1, 2, 3}) {
    const bool closed = kind % 2 == 1;
    Case x({6, 5, 4});
    if (!closed) hold(x.end(0, 1));
    x.settings.records.iamg = kind / 2;
    x.start();
    x.state.pt = 1e5;
    for (const double size : {0.0, 1e-20, 1e-110}) {
      x.draw_fields();
      for (Field& ru : x.state.ru) {
        for (double& value : ru.all()) value *= size;
      }
      const std::string line = x.advance();
      EXPECT_TRUE(line.ends_with(" 0\n")) << line;
      EXPECT_EQ(line.starts_with(kind < 2 ? "iccg  0 L2 1 0 " : "amgcg 0 L2 1 0 "), size < 1e-100)
          << line;
    }
  }
}

TEST(PressureStep, EndsWhenItDoesNotConverge) {
  for (const std::int32_t iamg : {0, 1}) {
    Case x({6, 5, 4});
    hold(x.end(0, 1));
    x.settings.control.itercg = 1;
    x.settings.records.iamg = iamg;
    x.start();
    const std::string lines = x.advance();
    EXPECT_TRUE(lines.starts_with(iamg == 0 ? "iccg  2 L2 " : "amgcg 2 L2 ")) << lines;
    EXPECT_TRUE(
        lines.ends_with(" 1\n### error : cg solver (flw_clslvp)\nnot converged\n(flw_clslvp)\n"))
        << lines;
  }
}

}  // namespace
