// The linear solvers of the flow at their ends: nothing to do, no convergence, what stops them.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>

#include "flow/linear/iccg.hpp"
#include "flow/linear/imdqdt.hpp"
#include "random_systems.hpp"
#include "recorded_log.hpp"

namespace {

using flow::Field;

// Right sides of nothing, and what is left when the air has come to rest.
TEST(LinearSolvers, TakeNoStepForARightSideOfNothing) {
  RecordedLog out;
  const RandomSymmetric x({4, 3, 3}, false, 1);
  const RandomGeneral y({4, 3, 3}, false, 1);
  for (const double size : {0.0, 1e-101, -1e-120}) {
    flow::IccgSystem s;
    flow::flw_iccg_pre(out.log, x.blocks, x.fluid, false, 0.5, s);
    flow::gather_scaled(s.points, x.right, s.scale, s.b);
    for (double& b : s.b) b *= size;
    const flow::SolveResult result = flow::flw_iccg(out.log, limits_of(x.box, 1e-8), s);
    EXPECT_TRUE(result.converged && result.iterations == 0 && result.ratio == 1.0) << size;
    EXPECT_EQ(*std::ranges::max_element(s.x), 0.0);

    flow::BcgstbSystem work = flow::make_implicit_work(out.log, y.fluid, false);
    Field q(y.box, size);
    EXPECT_EQ(out.lines_of([&] {
      flow::flw_imdqdt(out.log, y.rows, {10, 1e-8}, work, q);
    }),
              "bcgstb 0 L2 1 0 0\n");
    EXPECT_EQ(q(1, 1, 1), 0.0);
  }
}

// A residual that is as small as it has to be is not made smaller.
TEST(LinearSolvers, TakeNoStepWhereTheToleranceIsMetExactly) {
  RecordedLog out;
  const RandomGeneral x({4, 3, 3}, false, 1);
  flow::BcgstbSystem work = flow::make_implicit_work(out.log, x.fluid, false);
  Field q(x.box, 0.5);
  const std::string lines = out.lines_of([&] {
    flow::flw_imdqdt(out.log, x.rows, {10, 1.0}, work, q);
  });
  EXPECT_TRUE(lines.starts_with("bcgstb 0 L2 1 ")) << lines;
}

// Another solve in between leaves no trace.
TEST(LinearSolvers, HaveNoMemoryOfEarlierSolutions) {
  RecordedLog out;
  const RandomSymmetric x({6, 5, 4}, true, 9);
  flow::IccgSystem s;
  flow::flw_iccg_pre(out.log, x.blocks, x.fluid, true, 0.95, s);
  flow::gather_scaled(s.points, x.right, s.scale, s.b);
  const flow::Values right = s.b;
  const auto limits = limits_of(x.box, 1e-9);
  flow::flw_iccg(out.log, limits, s);
  const flow::Values once = s.x;
  std::ranges::fill(s.b, 3.0e5);
  flow::flw_iccg(out.log, limits, s);
  s.b = right;
  flow::flw_iccg(out.log, limits, s);
  EXPECT_EQ(once, s.x);
}

/// What a call ends with: its lines, and the status of a stop on the spot (0: none).
struct Ending {
  std::string lines;
  int status = 0;
};

Ending ending_of(RecordedLog& out, const std::function<void()>& work) {
  Ending end;
  end.lines = out.lines_of([&] {
    try {
      work();
    } catch (const frame::Stop& stop) {
      end.status = stop.status;
    }
  });
  return end;
}

TEST(LinearSolvers, StopWithTheirWords) {
  RecordedLog out;
  const RandomSymmetric x({4, 3, 3}, false, 2);
  const RandomGeneral y({4, 3, 3}, false, 2);
  flow::IccgSystem good;
  flow::flw_iccg_pre(out.log, x.blocks, x.fluid, false, 0.5, good);
  flow::BcgstbSystem work = flow::make_implicit_work(out.log, y.fluid, false);
  const auto cg = [&](double eps, std::int32_t itmax, auto&& spoil) {
    return [&, eps, itmax, spoil] {
      flow::IccgSystem s = good;
      spoil(s);
      flow::flw_iccg(out.log, limits_of(x.box, eps, itmax), s);
    };
  };
  const auto stab = [&](double eps, std::int32_t itmax, auto&& spoil) {
    return [&, eps, itmax, spoil] {
      flow::BcgstbSystem s = work;
      spoil(s);
      flow::flw_bcgstb(out.log, limits_of(y.box, eps, itmax), s);
    };
  };
  const auto factor = [&](auto&& spoil) {
    return [&, spoil] {
      flow::BcgstbSystem s = work;
      flow::SevenPoint rows = y.rows;
      spoil(s, rows);
      flow::flw_bcgstb_pre(out.log, rows, s);
    };
  };
  const auto nothing = [](auto&...) {};
  const auto shorten = [](auto& s, auto&...) { (s.d = s.b).pop_back(), s.b.pop_back(); };
  const auto narrow = [](auto& s, auto&...) {
    s.points.layer -= 8, s.b.resize(s.points.size()), s.x.resize(s.points.size()),
        s.d.resize(s.points.size());
  };
  const auto hollow = [](auto&, flow::SevenPoint& rows) { rows.diagonal(1, 1, 1) = 0.0; };
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<std::tuple<std::string, int, std::function<void()>>> table{
      {"### interface error -1- (flw_iccg)", 231, cg(1e-9, 5, shorten)},
      {"### interface error -2- (flw_iccg)", 231, cg(1e-9, 5, narrow)},
      {"### interface error -3- (flw_iccg)", 231, cg(0.0, 5, nothing)},
      {"### interface error -3- (flw_iccg)", 231, cg(nan, 5, nothing)},
      {"### interface error -4- (flw_iccg)", 231, cg(1e-9, 0, nothing)},
      {"### interface error -1- (flw_bcgstb)", 231, stab(1e-9, 5, shorten)},
      {"### interface error -2- (flw_bcgstb)", 231, stab(1e-9, 5, narrow)},
      {"### interface error -3- (flw_bcgstb)", 231, stab(-1.0, 5, nothing)},
      {"### interface error -4- (flw_bcgstb)", 231, stab(1e-9, -1, nothing)},
      {"### interface error -1- (flw_bcgstb_pre)", 231, factor(shorten)},
      {"### interface error -2- (flw_bcgstb_pre)", 231, factor(narrow)},
      {"### interface error -3- (flw_bcgstb_pre)", 231, factor(hollow)},
      {"%%% smallest pivot = -0.5625 ; a smaller gsfcg may help, gsfcg = 0.5\n"
       "### interface error -1- (flw_iccg_pre)",
       231,
       [&] {
         flow::IccgSystem s;
         flow::flw_iccg_pre(out.log, pair_of(-1.25), flow::Flags(flow::Box{{2, 1, 1}}, 1), false,
                            0.5, s);
       }},
      {"### program error -1- (flw_list_hypln)", 1,
       [&] { flow::flw_list_hypln(out.log, x.box, false, 2); }},
  };
  for (const auto& [words, status, work_of] : table) {
    const Ending end = ending_of(out, work_of);
    EXPECT_EQ(end.lines, words + "\n");
    EXPECT_EQ(end.status, status) << words;
  }
}

TEST(LinearSolvers, TellThatTheLimitIsReached) {
  RecordedLog out;
  const RandomSymmetric x({6, 5, 4}, false, 2);
  flow::IccgSystem s;
  flow::flw_iccg_pre(out.log, x.blocks, x.fluid, false, 0.5, s);
  flow::gather_scaled(s.points, x.right, s.scale, s.b);
  const flow::SolveResult result = flow::flw_iccg(out.log, limits_of(x.box, 1e-12, 2), s);
  EXPECT_FALSE(result.converged);
  EXPECT_EQ(result.iterations, 3);
  s.b[s.points.slot(0, 0, 0)] = std::numeric_limits<double>::infinity();
  EXPECT_FALSE(flow::flw_iccg(out.log, limits_of(x.box, 1e-12, 2000000000), s).converged);

  const RandomGeneral y({6, 5, 4}, false, 2);
  flow::BcgstbSystem work = flow::make_implicit_work(out.log, y.fluid, false);
  Field q = y.right;
  const std::string lines = out.lines_of([&] {
    flow::flw_imdqdt(out.log, y.rows, {1, 1e-13}, work, q);
  });
  EXPECT_TRUE(lines.starts_with("bcgstb 2 L2 ")) << lines;
  EXPECT_TRUE(lines.ends_with(" 1\n### error : bcgstb (flw_imdqdt)\nnot converged\n(flw_imdqdt)\n"))
      << lines;
}

}  // namespace
