// Sunlit fractions: the shadow of a block, a street over a day, low and grazing suns, and who casts
// shadows at all.
#include <gtest/gtest.h>

#include <numbers>

#include "../../bench/sample_town.hpp"
#include "rays/sunlit.hpp"

namespace {

using namespace townskin_case;
using sample::add_block;
using sample::add_face;

constexpr double kDegree = std::numbers::pi / 180.0;

/// Towards the sun; azimuth from north to east.
Vector3 sun(double elevation, double azimuth) {
  const double flat = std::cos(elevation * kDegree);
  return {flat * std::sin(azimuth * kDegree), flat * std::cos(azimuth * kDegree),
          std::sin(elevation * kDegree)};
}

std::vector<float> light(const Scene& scene, const std::vector<Vector3>& suns,
                         const SunSettings& settings = {}) {
  return sunlit_fractions(scene, RayScene(scene), suns, settings);
}

TEST(CaseSunlit, BlockOnAPlane) {
  Scene scene;
  constexpr double kWide = 6.0;
  constexpr double kDeep = 4.0;
  constexpr double kHigh = 5.0;
  const auto block = static_cast<std::size_t>(add_block(scene, {0, 0, 0}, {kWide, kDeep, kHigh}));
  const auto ground =
      static_cast<std::size_t>(add_face(scene, {-40, -40, 0}, {80, 0, 0}, {0, 80, 0}, 80, 80));
  std::vector<Vector3> suns;
  suns.reserve(20);
  for (int n = 0; n < 20; ++n) suns.push_back(sun(10.0 + 4.0 * n, 17.0 + 43.0 * n));
  const std::vector<float> lit = light(scene, suns);
  for (std::size_t s = 0; s < suns.size(); ++s) {
    const float* here = lit.data() + s * scene.groups.size();
    double dark = 0.0;
    for (std::size_t g = ground; g < scene.groups.size(); ++g) {
      dark += (1.0 - static_cast<double>(here[g])) * scene.groups[g].area;
    }
    const double x = kHigh * std::abs(suns[s].x) / suns[s].z;  // how far the roof's shadow is moved
    const double y = kHigh * std::abs(suns[s].y) / suns[s].z;
    const double exact = kWide * kDeep + x * kDeep + y * kWide;
    EXPECT_NEAR(dark, exact, 0.01 * exact) << s;  // of the shadow, let alone of the sunlit rest
    for (std::size_t g = block; g < block + 5; ++g) {
      EXPECT_EQ(here[g], dot(scene.groups[g].normal, suns[s]) > 0.0 ? 1.0F : 0.0F);
    }
  }
}

TEST(CaseSunlit, StreetOverADay) {
  constexpr double kHigh = 2.0;  // of a street of width 1
  Scene scene;
  add_face(scene, {-0.5, -500, 0}, {1, 0, 0}, {0, 1000, 0});
  const auto west = static_cast<std::size_t>(
      add_face(scene, {-0.5, -500, 0}, {0, 1000, 0}, {0, 0, kHigh}, 3, 8, PatchKind::building));
  const auto east = static_cast<std::size_t>(
      add_face(scene, {0.5, -500, 0}, {0, 0, kHigh}, {0, 1000, 0}, 8, 3, PatchKind::building));
  // Of a wall to the street the part that the sun's profile angle leaves: the middle of its length.
  std::vector<Vector3> suns;
  for (int hour = 6; hour <= 18; ++hour) {  // declination 20, latitude 40
    const double angle = 15.0 * (hour - 12) * kDegree;
    const double d = 20 * kDegree;
    const double p = 40 * kDegree;
    suns.push_back({-std::cos(d) * std::sin(angle),
                    std::cos(p) * std::sin(d) - std::sin(p) * std::cos(d) * std::cos(angle),
                    std::sin(p) * std::sin(d) + std::cos(p) * std::cos(d) * std::cos(angle)});
  }
  suns.push_back({std::sqrt(0.5), std::sqrt(0.5) - 1e-5, 0.003});
  const std::vector<float> lit = light(scene, suns, {.points = 64});
  for (std::size_t s = 0; s < suns.size(); ++s) {
    const float* here = lit.data() + s * scene.groups.size();
    const double part = std::min(1.0, suns[s].z / std::abs(suns[s].x) / kHigh);
    double on_west = 0.0;
    double on_east = 0.0;
    for (std::size_t row = 0; row < 8; ++row) {
      on_west += here[west + 3 * row + 1] / 8.0;
      on_east += here[east + 8 + row] / 8.0;
    }
    EXPECT_NEAR(on_west, suns[s].x > 1e-9 ? part : 0.0, 0.005) << s;
    EXPECT_NEAR(on_east, suns[s].x < -1e-9 ? part : 0.0, 0.005) << s;
  }
}

TEST(CaseSunlit, LowAndGrazingSuns) {
  Scene scene;
  add_face(scene, {-1000, -1000, 0}, {2000, 0, 0}, {0, 2000, 0}, 20, 20);
  const auto wall = static_cast<std::size_t>(
      add_face(scene, {0, -500, 1}, {0, 1000, 0}, {0, 0, 10}, 100, 4, PatchKind::building));
  const std::vector<float> lit = light(scene, {sun(0.05, 0.01), sun(0.05, -90), sun(-0.1, 90)});
  for (std::size_t g = wall; g < scene.groups.size(); ++g) {
    EXPECT_EQ(lit[g], 1.0F);                            // along the wall
    EXPECT_EQ(lit[scene.groups.size() + g], 0.0F);      // from behind
    EXPECT_EQ(lit[2 * scene.groups.size() + g], 0.0F);  // at night
  }
  EXPECT_EQ(lit[0], 1.0F);
}

TEST(CaseSunlit, CrownsTakeShadowsButCastNone) {
  Scene scene;
  const auto ground =
      static_cast<std::size_t>(add_face(scene, {-5, -5, 0}, {30, 0, 0}, {0, 10, 0}, 3, 1));
  const auto crown =
      static_cast<std::size_t>(add_block(scene, {4, -1, 1}, {6, 1, 3}, 0.0, PatchKind::tree, true));
  const std::vector<Vector3> suns{sun(30, 90), sun(80, 90)};
  const std::vector<float> open = light(scene, suns);
  EXPECT_EQ(open[ground], 1.0F);
  EXPECT_EQ(open[crown], 1.0F);
  add_block(scene, {8, -5, 0}, {9, 5, 12});
  const std::vector<float> shaded = light(scene, suns);
  EXPECT_EQ(shaded[crown], 0.0F);
  EXPECT_EQ(shaded[scene.groups.size() + crown], 1.0F);
  EXPECT_EQ(light(scene, suns, {.threads = 1}), light(scene, suns, {.threads = 3}));
  EXPECT_TRUE(light({}, suns).empty());
  EXPECT_TRUE(light(scene, {}).empty());
}

}  // namespace
