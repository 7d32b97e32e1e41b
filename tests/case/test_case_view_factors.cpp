// View factors by rays: closed forms, rows that close and are the same both ways, the same bytes
// for any number of threads, and faces that lie on each other, start within walls or are none.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "../../bench/sample_town.hpp"
#include "rays/view_factors.hpp"

namespace {

using namespace townskin_case;
using sample::add_block;
using sample::add_face;

ViewFactors trace(const Scene& scene, const RaySettings& settings) {
  return view_factors(scene, RayScene(scene), settings);
}

/// What group i gives to the groups from `first` to `last`.
double share(const ViewFactors& f, std::int32_t i, std::int32_t first, std::int32_t last) {
  double sum = 0.0;
  for (std::size_t e = f.start[static_cast<std::size_t>(i)];
       e < f.start[static_cast<std::size_t>(i) + 1]; ++e) {
    if (f.to[e] >= first && f.to[e] <= last) sum += f.factor[e];
  }
  return sum;
}

void expect_rows_close_both_ways(const ViewFactors& f) {
  for (std::size_t i = 0; i < f.area.size(); ++i) {
    double sum = f.sky[i];
    for (std::size_t e = f.start[i]; e < f.start[i + 1]; ++e) {
      sum += f.factor[e];
      const double back =
          share(f, f.to[e], static_cast<std::int32_t>(i), static_cast<std::int32_t>(i));
      const double there = f.area[i] * f.factor[e];
      ASSERT_NEAR(there, f.area[static_cast<std::size_t>(f.to[e])] * back, 1e-6 * there);
      std::array<char, 32> text{};
      std::snprintf(text.data(), text.size(), "%.9g", f.factor[e]);
      ASSERT_EQ(std::strtod(text.data(), nullptr), f.factor[e]);
    }
    ASSERT_NEAR(sum, 1.0, 1e-6) << "row " << i;
  }
}

struct Pair {
  const char* name;
  std::array<Vector3, 3> one, other;  // corner and edges
  double factor;
};

// Values of the closed forms of opposed rectangles and of rectangles that share an edge (Howell's
// catalogue C-11, C-14).
const Pair kPairs[] = {
    {"opposed 1 1",
     {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
     {{{0, 0, 1}, {0, 1, 0}, {1, 0, 0}}},
     0.1998249},
    {"opposed 2 2",
     {{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}},
     {{{0, 0, 1}, {0, 2, 0}, {2, 0, 0}}},
     0.4152533},
    {"opposed .5 .5",
     {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
     {{{0, 0, 2}, {0, 1, 0}, {1, 0, 0}}},
     0.0685896},
    {"opposed 1 2",
     {{{0, 0, 0}, {1, 0, 0}, {0, 2, 0}}},
     {{{0, 0, 1}, {0, 2, 0}, {1, 0, 0}}},
     0.2858754},
    {"opposed 10 10",
     {{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}}},
     {{{0, 0, 1}, {0, 10, 0}, {10, 0, 0}}},
     0.8269945},
    {"edge 1 1",
     {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
     {{{0, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
     0.2000438},
    {"edge 2 1",
     {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
     {{{0, 0, 0}, {0, 1, 0}, {0, 0, 2}}},
     0.2328526},
    {"edge 1 2",
     {{{0, 0, 0}, {2, 0, 0}, {0, 1, 0}}},
     {{{0, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
     0.1164263},
    {"edge .5 1",
     {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
     {{{0, 0, 0}, {0, 1, 0}, {0, 0, 0.5}}},
     0.1461867},
};

TEST(CaseViewFactors, Rectangles) {
  for (const Pair& pair : kPairs) {
    Scene scene;
    add_face(scene, pair.one[0], pair.one[1], pair.one[2]);
    add_face(scene, pair.other[0], pair.other[1], pair.other[2]);
    const ViewFactors f = trace(scene, {.rays = 4096});
    EXPECT_NEAR(share(f, 0, 1, 1), pair.factor, std::max(0.01 * pair.factor, 3 * f.error[0]))
        << pair.name;
    EXPECT_EQ(f.summary.inside, 0U) << pair.name;
  }
}

TEST(CaseViewFactors, ClosedBox) {
  Scene scene;
  add_face(scene, {0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  add_face(scene, {0, 0, 1}, {0, 1, 0}, {1, 0, 0});
  add_face(scene, {0, 0, 0}, {0, 0, 1}, {1, 0, 0});
  add_face(scene, {0, 1, 0}, {1, 0, 0}, {0, 0, 1});
  add_face(scene, {0, 0, 0}, {0, 1, 0}, {0, 0, 1});
  add_face(scene, {1, 0, 0}, {0, 0, 1}, {0, 1, 0});
  const ViewFactors f = trace(scene, {.rays = 4096});
  for (std::int32_t i = 0; i < 6; ++i) {
    for (std::int32_t j = 0; j < 6; ++j) {
      const double exact = i == j ? 0.0 : i / 2 == j / 2 ? 0.1998249 : 0.2000438;
      EXPECT_NEAR(share(f, i, j, j), exact, 0.002) << i << " " << j;
    }
    EXPECT_EQ(f.sky[static_cast<std::size_t>(i)], 0.0);
  }
  EXPECT_EQ(f.summary.inside, 0U);
  expect_rows_close_both_ways(f);
}

/// A street of width 1 between walls of height h, so long that its ends do not count: its middle,
/// and to both sides of it the rest. Groups 0 to 2 are the road, 3 to 5 and 6 to 8 the walls; the
/// middles are 1, 4 and 7.
Scene street(double h) {
  constexpr double kReach = 300.0;
  Scene scene;
  struct Piece {
    double from, to;
  };
  const Piece pieces[] = {{-kReach, -0.5}, {-0.5, 0.5}, {0.5, kReach}};
  for (const auto& [y, to] : pieces) add_face(scene, {0, y, 0}, {1, 0, 0}, {0, to - y, 0});
  for (const auto& [y, to] : pieces) add_face(scene, {0, y, 0}, {0, to - y, 0}, {0, 0, h});
  for (const auto& [y, to] : pieces) add_face(scene, {1, y, 0}, {0, 0, h}, {0, to - y, 0});
  return scene;
}

TEST(CaseViewFactors, StreetByCrossedStrings) {
  for (const double h : {0.25, 0.5, 1.0, 2.0, 3.0}) {
    const double s = std::hypot(1.0, h) - h;              // road to sky
    const double w = std::hypot(1.0, 1.0 / h) - 1.0 / h;  // wall to wall
    const ViewFactors f = trace(street(h), {.rays = 4096});
    const auto near = [&](double factor, double exact, std::size_t group) {
      EXPECT_NEAR(factor, exact, std::max(0.01 * exact, 3 * f.error[group])) << h;
    };
    near(f.sky[1], s, 1);
    near(share(f, 1, 3, 5), (1 - s) / 2, 1);
    near(f.sky[4], (1 - w) / 2, 4);
    near(share(f, 4, 0, 2), (1 - w) / 2, 4);
    near(share(f, 4, 6, 8), w, 4);
    expect_rows_close_both_ways(f);
  }
}

TEST(CaseViewFactors, ErrorFallsWithTheSquareRootOfRaysOrFaster) {
  const Scene scene = street(1.0);
  const RayScene rays(scene);
  const double exact = std::sqrt(2.0) - 1.0;
  std::vector<double> errors;
  for (const std::uint32_t n : {64U, 256U, 1024U, 4096U}) {
    double found = 0.0;
    double stated = 0.0;
    constexpr int kSeeds = 16;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
      const ViewFactors f = view_factors(scene, rays, {.rays = n, .seed = seed, .threads = 1});
      found += (f.sky[1] - exact) * (f.sky[1] - exact) / kSeeds;
      stated += f.error[1] * f.error[1] / kSeeds;
    }
    errors.push_back(std::sqrt(found));
    RecordProperty("rms_error_" + std::to_string(n), std::to_string(errors.back()));
    EXPECT_LT(errors.back(), 1.2 * std::sqrt(stated)) << n;  // what is stated is true
  }
  EXPECT_LT(errors.back(), errors.front() / 8.0);
}

TEST(CaseViewFactors, TownClosesBothWaysAsWritten) {
  Scene scene = sample::town(3, 4.0);
  add_block(scene, {18, 2, 0}, {26, 10, 6}, 4.0, PatchKind::tree, true);  // a crown in a street
  for (const std::size_t partners : {10U, 1000U}) {
    const ViewFactors f = trace(scene, {.rays = 256, .partners = partners});
    expect_rows_close_both_ways(f);
    EXPECT_LT(f.summary.closure, 1e-6);
    EXPECT_GT(f.summary.below, 0U);
    EXPECT_EQ(f.summary.inside, 0U);
    EXPECT_LT(f.summary.on_itself, 0.02);
    if (partners == 1000) {
      EXPECT_EQ(f.summary.cut, 0.0);
      continue;
    }
    EXPECT_GT(f.summary.cut, 0.0);
    EXPECT_LE(f.to.size(), 2 * (partners + 1) * f.area.size());
  }
}

TEST(CaseViewFactors, AnyNumberOfThreadsGivesTheSameBytes) {
  Scene scene = sample::town(3, 2.0);
  add_block(scene, {18, 2, 0}, {26, 10, 6}, 2.0, PatchKind::tree, true);
  const ViewFactors one = trace(scene, {.rays = 128, .partners = 30, .threads = 1});
  for (const unsigned threads : {2U, 3U}) {
    const ViewFactors f = trace(scene, {.rays = 128, .partners = 30, .threads = threads});
    EXPECT_EQ(f.to, one.to);
    EXPECT_EQ(f.factor, one.factor);
    EXPECT_EQ(f.sky, one.sky);
    EXPECT_EQ(f.error, one.error);
  }
  const ViewFactors other = trace(scene, {.rays = 128, .seed = 2, .partners = 30});
  EXPECT_NE(other.sky, one.sky);
}

TEST(CaseViewFactors, ProgressRisesToTheEndAndItsFaultStopsTheRays) {
  const Scene scene = sample::town(2, 2.0);
  const RayScene rays(scene);
  std::size_t last = 0;
  view_factors(scene, rays, {.rays = 8, .threads = 3}, [&](std::size_t done, std::size_t total) {
    EXPECT_GT(done, last);
    EXPECT_EQ(total, scene.groups.size());
    last = done;
  });
  EXPECT_EQ(last, scene.groups.size());
  const auto fail = [](std::size_t, std::size_t) { throw std::runtime_error("no more"); };
  EXPECT_THROW(view_factors(scene, rays, {.rays = 8, .threads = 3}, fail), std::runtime_error);
}

TEST(CaseViewFactors, FacesThatLieOnOthersSeeThem) {
  Scene scene;
  const auto ground = add_face(scene, {0, 0, 0}, {20, 0, 0}, {0, 30, 0}, 2, 3);
  const auto wall = add_block(scene, {-10, 0, 0}, {0, 30, 10}, 10.0) + 8;  // towards x
  // A crown that stands on the ground and leans on the wall.
  const auto crown = add_block(scene, {0, 10, 0}, {10, 20, 10}, 0.0, PatchKind::tree, true);
  const ViewFactors f = trace(scene, {.rays = 256});
  EXPECT_DOUBLE_EQ(share(f, ground + 2, crown + 5, crown + 5), 1.0);
  EXPECT_DOUBLE_EQ(share(f, crown + 5, ground + 2, ground + 2), 1.0);
  EXPECT_DOUBLE_EQ(share(f, wall + 1, crown + 3, crown + 3), 1.0);
  EXPECT_DOUBLE_EQ(share(f, crown + 3, wall + 1, wall + 1), 1.0);
  EXPECT_EQ(f.summary.inside, 0U);
  EXPECT_EQ(f.summary.in_crown, 0U);
  expect_rows_close_both_ways(f);
}

TEST(CaseViewFactors, WhatStartsWithinIsCounted) {
  Scene scene;
  const auto block = add_block(scene, {10, 10, 0}, {20, 20, 10}, 0.0, PatchKind::building, true);
  const auto lost = add_face(scene, {15, 12, 2}, {0, 2, 0}, {0, 0, 2});  // within the block
  add_block(scene, {2, 2, 2}, {8, 8, 8}, 0.0, PatchKind::tree, true);
  const auto leafy = add_face(scene, {5, 4, 4}, {0, 2, 0}, {0, 0, 2});  // within the crown
  const ViewFactors f = trace(scene, {.rays = 256});
  EXPECT_EQ(f.summary.groups_inside, 1U);
  EXPECT_NEAR(static_cast<double>(f.summary.inside), 256.0, 8.0);  // and none of the others
  EXPECT_DOUBLE_EQ(share(f, lost, lost, lost), 1.0);
  EXPECT_EQ(share(f, block, lost, lost), 0.0);
  EXPECT_EQ(f.summary.in_crown, 256U);
  std::string told;
  for (const std::string& line : lines_of(f.summary)) told += line + "\n";
  EXPECT_NE(told.find("256 rays (7.14 %) started inside a crown\n"), told.npos) << told;
  EXPECT_EQ(f.sky[static_cast<std::size_t>(leafy)], 0.0);
  expect_rows_close_both_ways(f);
}

TEST(CaseViewFactors, FarBoundaryMeetsWhatLeavesBelowTheHorizon) {
  Scene scene;
  add_face(scene, {0, 0, 0}, {0, 1, 0}, {0, 0, 1});
  Group far;
  far.kind = PatchKind::far;
  scene.groups.push_back(far);
  const ViewFactors f = trace(scene, {.rays = 1024});
  EXPECT_NEAR(share(f, 0, 1, 1), 0.5, 0.005);
  EXPECT_NEAR(f.sky[0], 0.5, 0.005);
  EXPECT_NEAR(f.area[1], 2 * 0.5, 0.01);
  EXPECT_NEAR(f.sky[1], 0.5, 1e-9);
  EXPECT_EQ(f.summary.below, static_cast<std::uint64_t>(std::lround(share(f, 0, 1, 1) * 1024)));
  expect_rows_close_both_ways(f);
  scene.groups.pop_back();
  EXPECT_EQ(trace(scene, {.rays = 1024}).sky[0], 1.0);
}

TEST(CaseViewFactors, NothingAndNextToNothing) {
  const ViewFactors none = trace({}, {});
  EXPECT_TRUE(none.to.empty());
  EXPECT_EQ(none.start.size(), 1U);

  Scene scene;
  add_face(scene, {0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  const ViewFactors whole = trace(scene, {.rays = 64});
  const double nan = std::nan("");
  scene.mesh.points.push_back({nan, 0, 0});
  scene.mesh.triangles.insert(scene.mesh.triangles.end(), {{0, 0, 1}, {0, 1, 4}, {0, 1, 99}});
  scene.mesh.group.insert(scene.mesh.group.end(), {0, 0, 0});
  Group bare;  // nothing to start from
  bare.normal = {0, 0, 1};
  bare.area = 1.0;
  scene.groups.push_back(bare);
  const ViewFactors f = trace(scene, {.rays = 64});
  EXPECT_EQ(f.sky[0], whole.sky[0]);
  EXPECT_EQ(f.summary.bare, 1U);
  EXPECT_EQ(share(f, 1, 1, 1), 1.0);
}

}  // namespace
