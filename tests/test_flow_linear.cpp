// The linear solvers of the flow: against elimination and against the plain form.
#include <gtest/gtest.h>

#include <algorithm>

#include "../bench/plain_bcgstb.hpp"
#include "flow/linear/iccg.hpp"
#include "flow/linear/imdqdt.hpp"
#include "random_systems.hpp"
#include "recorded_log.hpp"

namespace {

using flow::Field;
using flow::Triple;

struct Shape {
  Triple cells;
  bool periodic_y;
};

/// Rows of all lengths, the three choices of axes, directions of one and two cells.
const std::vector<Shape> kShapes{{{5, 4, 3}, false},  {{3, 9, 4}, false},   {{1, 6, 5}, false},
                                 {{7, 1, 4}, false},  {{1, 1, 9}, false},   {{1, 1, 1}, false},
                                 {{18, 2, 3}, false}, {{33, 34, 2}, false}, {{4, 5, 3}, true},
                                 {{3, 2, 4}, true},   {{2, 9, 1}, true},    {{1, 4, 9}, true},
                                 {{5, 1, 3}, true}};

/// The plain form for the same system.
flow::SolveResult solve_plain(const RandomSymmetric& x, double gsfcg,
                              const flow::SolveLimits& limits) {
  const plain::Iccg s = plain::flw_iccg_pre(x.blocks, x.fluid, gsfcg);
  std::vector<double> b(s.h.size());
  x.each([&](const Triple& cell) {
    const auto l = static_cast<std::size_t>(s.h.at(cell[0], cell[1], cell[2]));
    b[l] = x.right[x.at(cell)] * s.scale[l];
  });
  plain::IccgVectors vectors(s.h.size());
  return plain::flw_iccg(s, limits, b, vectors);
}

void expect_solution(const RandomCells& x, const std::vector<double>& expected,
                     const Field& found) {
  double worst = 0.0;
  double size = 0.0;
  x.each([&](const Triple& cell) {
    const double value = expected[x.number(cell)];
    worst = std::max(worst, std::abs(found[x.at(cell)] - value));
    size = std::max(size, std::abs(value));
  });
  EXPECT_LE(worst, 1e-9 * size);
}

TEST(Iccg, SolvesWhatEliminationSolvesAsThePlainFormDoes) {
  RecordedLog out;
  std::uint32_t seed = 0;
  for (const Shape& shape : kShapes) {
    const RandomSymmetric x(shape.cells, shape.periodic_y, ++seed);
    const bool small = x.box.cells() < 400;
    const std::vector<double> expected = small ? x.matrix().solve() : std::vector<double>{};
    for (const double gsfcg : {0.0, 0.5, 1.2}) {
      SCOPED_TRACE(testing::Message() << "box " << seed << ", gsfcg " << gsfcg);
      const auto limits = limits_of(x.box, 1e-12);
      const flow::SolveResult plain = solve_plain(x, gsfcg, limits);
      Field first;
      for (const flow::InstructionSet set : flow::kInstructionSets) {
        if (!flow::has(set)) continue;
        flow::IccgSystem s;
        flow::flw_iccg_pre(out.log, x.blocks, x.fluid, x.periodic, gsfcg, s, set);
        flow::gather_scaled(s.points, x.right, s.scale, s.b);
        const flow::SolveResult result = flow::flw_iccg(out.log, limits, s);
        EXPECT_TRUE(result.converged);
        EXPECT_LE(result.ratio, 1e-12);
        EXPECT_EQ(result.iterations, plain.iterations);
        EXPECT_NEAR(result.norm, plain.norm, 0.1 * plain.norm + 1e-14);
        Field found(x.box);
        flow::scatter_scaled(s.points, s.x, s.scale, found);
        if (small) expect_solution(x, expected, found);
        if (set == flow::InstructionSet::common) first = found;
        EXPECT_TRUE(std::ranges::equal(first.all(), found.all()))
            << "set " << static_cast<int>(set);
      }
    }
  }
}

// With all of the dropped fill on the diagonal the factor keeps the sums of the scaled rows: what
// the matrix makes of ones is solved by the first direction.
TEST(Iccg, KeepsTheSumsOfRowsWhenFullyModified) {
  RecordedLog out;
  for (const Shape& shape : {Shape{{6, 5, 4}, false}, Shape{{4, 6, 3}, true}}) {
    const RandomSymmetric x(shape.cells, shape.periodic_y, 5);
    flow::IccgSystem s;
    flow::flw_iccg_pre(out.log, x.blocks, x.fluid, x.periodic, 1.0, s);
    for (std::size_t l = 0; l < s.x.size(); ++l) s.x[l] = s.scale[l] > 0.0 ? 1.0 : 0.0;
    s.passes.product(s.arrays());
    s.b = s.y;
    const flow::SolveResult result = flow::flw_iccg(out.log, limits_of(x.box, 1e-12), s);
    EXPECT_TRUE(result.converged);
    EXPECT_EQ(result.iterations, 0);
  }
}

// The first direction is (1, 2), and p A p = 1 + 4 - 2.5 * 2 = 0: the solution steps along it and
// starts anew.
TEST(Iccg, StartsAnewFromTheTrueResidualAfterABreakdown) {
  RecordedLog out;
  const flow::Box box{{2, 1, 1}};
  const flow::Flags fluid(box, 1);
  flow::IccgSystem s;
  flow::flw_iccg_pre(out.log, pair_of(-1.25), fluid, false, 2.0, s);
  s.b[s.points.slot(0, 0, 0)] = -0.5;
  s.b[s.points.slot(1, 0, 0)] = 2.75;
  s.r = s.b;
  flow::IccgSums sums;
  s.passes.forward(s.arrays(), 0.0, false, sums);
  s.passes.backward(s.arrays(), 0.0, 0.0, sums);
  double pq = 0.0;
  for (const double lane : sums.pq) pq += lane;
  ASSERT_EQ(pq, 0.0) << "the case does not break down";
  const flow::SolveResult result = flow::flw_iccg(out.log, limits_of(box, 1e-12), s);
  EXPECT_TRUE(result.converged);
  EXPECT_GE(result.iterations, 1);
  const double determinant = 1.0 - 1.25 * 1.25;
  EXPECT_NEAR(s.x[s.points.slot(0, 0, 0)], (-0.5 + 1.25 * 2.75) / determinant, 1e-12);
  EXPECT_NEAR(s.x[s.points.slot(1, 0, 0)], (2.75 - 1.25 * 0.5) / determinant, 1e-12);
}

// Air without any held pressure and no fix point: the right side sums to 0 but for rounding.
TEST(Iccg, ConvergesOnASingularSystem) {
  RecordedLog out;
  const flow::Box box{{6, 5, 4}};
  RandomSymmetric x(box.n, false, 3);
  x.fluid = flow::Flags(box, 1);
  x.blocks = flow::FiveBlocks(box);
  double mean = 0.0;
  x.each([&](const Triple& cell) { mean += x.right[x.at(cell)] / 120.0; });
  x.each([&](const Triple& cell) { x.right[x.at(cell)] -= mean; });
  for (std::size_t axis = 0; axis < 3; ++axis) {
    x.each_pair(axis, [&](const Triple& cell, const Triple& next, bool) {
      x.blocks.diagonal[x.at(cell)] += 1.0;
      x.blocks.diagonal[x.at(next)] += 1.0;
      x.blocks.lower[axis][x.at(next)] = -1.0;
    });
  }
  for (const double size : {1.0, 1e-17, 1e-90}) {
    flow::IccgSystem s;
    flow::flw_iccg_pre(out.log, x.blocks, x.fluid, false, 0.5, s);
    flow::gather_scaled(s.points, x.right, s.scale, s.b);
    for (double& b : s.b) b *= size;
    EXPECT_TRUE(flow::flw_iccg(out.log, limits_of(box, 1e-10), s).converged) << size;
  }
}

/// Count of the plain form for the same system.
std::int32_t count_plain(const RandomGeneral& x, double epsrel) {
  const plain::Bcgstb s = plain::flw_bcgstb_pre(x.rows, x.fluid, x.periodic);
  std::vector<double> b(s.h.size());
  x.each([&](const Triple& cell) {
    const auto l = static_cast<std::size_t>(s.h.at(cell[0], cell[1], cell[2]));
    b[l] = x.right[x.at(cell)] * s.scale[l];
  });
  std::vector<double> solution(b.size());
  return plain::flw_bcgstb(s, limits_of(x.box, epsrel), b, solution).iterations;
}

TEST(Bcgstb, SolvesWhatEliminationSolvesAsThePlainFormDoes) {
  RecordedLog out;
  std::uint32_t seed = 100;
  for (const Shape& shape : kShapes) {
    const RandomGeneral x(shape.cells, shape.periodic_y, ++seed);
    SCOPED_TRACE(testing::Message() << "box " << seed - 100);
    const bool small = x.box.cells() < 400;
    Field first;
    for (const flow::InstructionSet set : flow::kInstructionSets) {
      if (!flow::has(set)) continue;
      flow::BcgstbSystem work;
      flow::flw_bcgstb_size(out.log, x.fluid, x.periodic, work, set);
      Field q = x.right;
      const double before = q[0];  // in the halo
      const std::string line = out.lines_of([&] {
        flow::flw_imdqdt(out.log, x.rows, {500, 1e-12}, work, q);
      });
      EXPECT_TRUE(line.starts_with("bcgstb " + std::to_string(count_plain(x, 1e-12)) + " L2 "))
          << line;
      EXPECT_TRUE(line.ends_with(" 0\n")) << line;
      EXPECT_EQ(q[0], before);
      if (small) expect_solution(x, x.matrix().solve(), q);
      if (set == flow::InstructionSet::common) first = q;
      EXPECT_TRUE(std::ranges::equal(first.all(), q.all())) << "set " << static_cast<int>(set);
    }
  }
}

// On a periodic y of two cells the factor does not see the couplings: r . A r = 0 at the start.
TEST(Bcgstb, StartsAnewFromTheTrueResidualAfterABreakdown) {
  RecordedLog out;
  const flow::Box box{{1, 2, 1}};
  flow::SevenPoint rows(box);
  rows.lower[1](1, 1, 1) = -3.0;
  rows.upper[1](1, 2, 1) = 1.0;
  flow::BcgstbSystem work = flow::make_implicit_work(out.log, flow::Flags(box, 1), true);
  Field q(box, 1.0);
  const std::string line = out.lines_of([&] {
    flow::flw_imdqdt(out.log, rows, {20, 1e-13}, work, q);
  });
  EXPECT_TRUE(line.starts_with("bcgstb 3 ")) << line;  // two starts anew, then two steps
  EXPECT_NEAR(q(1, 1, 1), 1.0, 1e-12);
  EXPECT_NEAR(q(1, 2, 1), 0.0, 1e-12);
}

}  // namespace
