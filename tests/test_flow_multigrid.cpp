// The multigrid of the pressure equation: against elimination and the ICCG, the count of its
// iterations, the symmetry of its cycle.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "../bench/sample_stretched.hpp"
#include "flow/linear/amgcg.hpp"
#include "flow/linear/iccg.hpp"
#include "random_systems.hpp"
#include "recorded_log.hpp"

namespace {

using flow::Field;
using flow::Triple;

struct Shape {
  Triple cells;
  bool periodic_y;
};

/// Odd and even counts, directions of one cell, periodic rows that have cells of one colour side by
/// side, rows longer than a pack.
const std::vector<Shape> kShapes{{{13, 7, 9}, false}, {{1, 6, 5}, false},  {{7, 1, 4}, false},
                                 {{1, 1, 9}, false},  {{1, 1, 1}, false},  {{40, 3, 2}, false},
                                 {{8, 9, 10}, false}, {{6, 10, 5}, true},  {{5, 9, 6}, true},
                                 {{4, 2, 6}, true},   {{3, 3, 3}, true},   {{67, 35, 1}, false},
                                 {{5, 1, 3}, true},   {{16, 15, 17}, true}};

flow::AmgGeometry even(const flow::Box& box, bool periodic_y) {
  flow::AmgGeometry geometry;
  geometry.periodic_y = periodic_y;
  for (std::size_t a = 0; a < 3; ++a) {
    geometry.width[a].assign(static_cast<std::size_t>(box.n[a]), 1.0);
  }
  return geometry;
}

Field solve(const RandomSymmetric& x, flow::InstructionSet set, RecordedLog& out,
            std::size_t hands = 1) {
  frame::Crew crew({hands, 4096});  // stretches are as short as they can be
  flow::AmgSystem s;
  flow::flw_amgcg_pre(out.log, x.blocks, x.fluid, even(x.box, x.periodic), s, set);
  flow::gather_rows(crew, x.right, s);
  const flow::SolveResult result = flow::flw_amgcg(out.log, crew, limits_of(x.box, 1e-12), s);
  EXPECT_TRUE(result.converged);
  EXPECT_LE(result.ratio, 1e-12);
  EXPECT_LT(result.iterations, 30);
  Field found(x.box);
  flow::scatter_rows(crew, s, found);
  return found;
}

TEST(Amgcg, SolvesWhatEliminationSolves) {
  RecordedLog out;
  std::uint32_t seed = 40;
  for (const Shape& shape : kShapes) {
    const RandomSymmetric x(shape.cells, shape.periodic_y, ++seed);
    SCOPED_TRACE(testing::Message() << "box " << seed - 40);
    const Field first = solve(x, flow::InstructionSet::common, out);
    if (x.box.cells() < 900) {
      const std::vector<double> expected = x.matrix().solve();
      double worst = 0.0;
      x.each([&](const Triple& cell) {
        worst = std::max(worst, std::abs(first[x.at(cell)] - expected[x.number(cell)]));
      });
      EXPECT_LT(worst, 1e-8);
    }
    for (const flow::InstructionSet set : flow::kInstructionSets) {
      if (!flow::has(set) || set == flow::InstructionSet::common) continue;
      EXPECT_TRUE(std::ranges::equal(first.all(), solve(x, set, out).all()))
          << "set " << static_cast<int>(set);
    }
    for (const std::size_t hands : {2U, 3U, 7U}) {
      const Field found = solve(x, flow::widest_set(), out, hands);
      EXPECT_TRUE(std::ranges::equal(first.all(), found.all())) << hands << " hands";
    }
  }
}

/// y . M x for right sides x, y of draws; the values of x . M y, x . M x go to the others.
std::array<double, 3> products(flow::AmgSystem& s, std::uint32_t seed) {
  frame::Crew crew;
  sample::Draws draw(seed);
  flow::AmgLevel& finest = s.finest();
  const auto right = [&] {
    flow::Floats r(finest.r.size());
    for (std::size_t l = 0; l < r.size(); ++l) {
      r[l] = finest.inverse[l] > 0.0F ? static_cast<float>(draw(-1.0, 1.0)) : 0.0F;
    }
    return r;
  };
  const auto dot = [](const flow::Floats& a, const flow::Floats& b) {
    double sum = 0.0;
    for (std::size_t l = 0; l < a.size(); ++l) sum += double{a[l]} * double{b[l]};
    return sum;
  };
  const flow::Floats x = right();
  const flow::Floats y = right();
  finest.r = x;
  flow::apply_cycle(crew, s);
  const flow::Floats of_x = finest.z;
  finest.r = y;
  flow::apply_cycle(crew, s);
  return {dot(y, of_x), dot(x, finest.z), dot(x, of_x)};
}

TEST(Amgcg, TakesASymmetricPositiveCycle) {
  RecordedLog out;
  std::uint32_t seed = 70;
  for (const Shape& shape : kShapes) {
    SCOPED_TRACE(testing::Message() << "box " << seed - 70);
    const RandomSymmetric x(shape.cells, shape.periodic_y, ++seed);
    flow::AmgSystem s;
    flow::flw_amgcg_pre(out.log, x.blocks, x.fluid, even(x.box, x.periodic), s);
    const auto [one, other, energy] = products(s, seed);
    EXPECT_GT(energy, 0.0);
    EXPECT_NEAR(one, other, 1e-5 * energy);
  }
}

// Districts, a third of the cells solid in blocks or by draws, cells that widen up to 20 times.
TEST(Amgcg, TakesFewIterationsWhateverTheGrid) {
  frame::Crew crew;
  RecordedLog out;
  for (const sample::Stretched& row : sample::kStretched) {
    for (const std::int32_t n : {32, 45}) {
      SCOPED_TRACE(testing::Message() << row.name << ", " << n << " cells");
      const sample::StretchedEquation e = sample::stretched_equation(n, row);
      flow::AmgSystem s;
      flow::flw_amgcg_pre(out.log, e.blocks, e.fluid, e.geometry, s);
      flow::gather_rows(crew, e.right, s);
      const auto result = flow::flw_amgcg(out.log, crew, limits_of(e.fluid.box(), 1e-8), s);
      EXPECT_TRUE(result.converged);
      EXPECT_LT(result.iterations, 16);
    }
  }
}

// A right side of any size; nothing is left of the solution before.
TEST(Amgcg, KnowsNoSizes) {
  frame::Crew crew;
  RecordedLog out;
  const RandomSymmetric x({9, 8, 7}, false, 3);
  flow::AmgSystem s;
  flow::flw_amgcg_pre(out.log, x.blocks, x.fluid, even(x.box, false), s);
  std::int32_t count = -1;
  flow::Values first;
  for (const double size : {1.0, 1e-90, 1e80, 1.0}) {
    flow::gather_rows(crew, x.right, s);
    for (double& b : s.exact.b) b *= size;
    const auto result = flow::flw_amgcg(out.log, crew, limits_of(x.box, 1e-10), s);
    EXPECT_TRUE(result.converged) << size;
    if (count < 0) count = result.iterations;
    EXPECT_EQ(result.iterations, count) << size;
    if (first.empty()) first = s.exact.x;
  }
  EXPECT_EQ(s.exact.x, first);  // bit by bit, so that a run that is taken up goes on as the whole
  std::ranges::fill(s.exact.b, 0.0);
  const auto nothing = flow::flw_amgcg(out.log, crew, limits_of(x.box, 1e-10), s);
  EXPECT_TRUE(nothing.converged);
  EXPECT_EQ(nothing.ratio, 1.0);
  EXPECT_TRUE(std::ranges::all_of(s.exact.x, [](double v) { return v == 0.0; }));
  s.exact.b[s.finest().slot(0, 0, 0)] = std::nan("");
  EXPECT_FALSE(flow::flw_amgcg(out.log, crew, limits_of(x.box, 1e-10), s).converged);
}

}  // namespace
