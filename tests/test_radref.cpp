// The exchange of radiation, against enclosures whose answer is known.
#include <gtest/gtest.h>

#include <cmath>

#include "../bench/random_exchange.hpp"

namespace {

using Matrix = std::vector<std::vector<double>>;

constexpr double kSigma = 5.670374419e-8;

/// Surfaces that exchange radiation: F[i][j] is the share of what leaves i that reaches j.
struct Enclosure {
  std::vector<double> area, emissivity, temperature, sky;  // sky: incident from outside
  Matrix F;

  [[nodiscard]] double emitted(std::size_t i) const {
    return emissivity[i] * kSigma * std::pow(temperature[i], 4);
  }
  /// Incident flux of each surface after `sweeps` sweeps; `parts` patches share each surface.
  [[nodiscard]] std::vector<double> incident(std::int32_t sweeps, std::size_t parts = 1) const {
    const std::size_t n = area.size();
    tsrf_module_raddat::Data raddat;
    raddat.NPGID = static_cast<std::int32_t>(n);
    raddat.settings.LOPREF = sweeps;
    raddat.c.assign(n, 1.0);
    tsrf_module_raddat::ViewFactorGatherer gatherer(raddat.NPGID);
    std::vector<double> patch_area, source, J, E;
    std::vector<std::int32_t> row;
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) {
        gatherer.add(static_cast<std::int32_t>(i), static_cast<std::int32_t>(j),
                     static_cast<float>(F[i][j]));
      }
      for (std::size_t part = 1; part <= parts; ++part) {
        raddat.pgx.push_back(static_cast<std::int32_t>(i));
        patch_area.push_back(area[i] * 2.0 * double(part) / double(parts * (parts + 1)));
        source.push_back(emitted(i));
        E.push_back(sky[i]);
        J.push_back(405.0);
        row.push_back(static_cast<std::int32_t>(i));
      }
    }
    raddat.view_factors = gatherer.take_table();
    const tsrf_module_radref::Band band{emissivity, source, J, E};
    tsrf_module_radref::Work work;
    work.resize(raddat.NPGID, 1);
    tsrf_cal_radref(raddat, row, patch_area, std::span(&band, 1), work);
    std::vector<double> result;
    for (std::size_t i = 0; i < n; ++i) result.push_back(E[i * parts]);
    return result;
  }
  /// The same from the radiosity equations J = e + (1 - a) (F J + sky) by elimination.
  [[nodiscard]] std::vector<double> solved() const {
    const std::size_t n = area.size();
    Matrix m(n, std::vector<double>(n + 1));
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) m[i][j] = (i == j) - (1 - emissivity[i]) * F[i][j];
      m[i][n] = emitted(i) + (1 - emissivity[i]) * sky[i];
    }
    for (std::size_t k = 0; k < n; ++k) {  // Gauss-Jordan; the matrix is diagonally dominant
      for (std::size_t i = 0; i < n; ++i) {
        const double f = i == k ? 0.0 : m[i][k] / m[k][k];
        for (std::size_t j = k; j <= n; ++j) m[i][j] -= f * m[k][j];
      }
    }
    std::vector<double> G = sky;
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) G[i] += F[i][j] * m[j][n] / m[j][j];
    }
    return G;
  }
};

/// Infinite street of unit width and height h by crossed strings (Hottel): road, walls, sky plane.
Enclosure street(double h) {
  const double s = std::hypot(1.0, h) - h;              // road to sky
  const double w = std::hypot(1.0, 1.0 / h) - 1.0 / h;  // wall to wall
  const double r = (1 - s) / 2;                         // road to one wall
  const double o = (1 - w) / 2;                         // wall to road, wall to sky
  return {{1, h, h, 1},
          {0.95, 0.8, 0.6, 0.4},
          {315, 300, 290, 260},
          {0, 0, 0, 0},
          {{0, r, r, s}, {o, 0, w, o}, {o, w, 0, o}, {s, r, r, 0}}};
}

TEST(Exchange, ClosedGreyEnclosureEqualsTheDirectSolution) {
  for (const double h : {0.25, 1.0, 3.0}) {
    const auto expected = street(h).solved();
    const auto swept = street(h).incident(60);
    const auto of_parts = street(h).incident(60, 3);
    double gain = 0.0;  // no power is made or lost
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_NEAR(swept[i], expected[i], 1e-6 * expected[i]);
      EXPECT_NEAR(of_parts[i], swept[i], 1e-12 * swept[i]);
      gain += street(h).area[i] * (street(h).emissivity[i] * swept[i] - street(h).emitted(i));
    }
    EXPECT_NEAR(gain, 0.0, 1e-4);
  }
}

// Uniform sky of 1 W/m2, albedo of the road 0.1 and of the walls 0.3, exact to the digits given.
TEST(Exchange, MultipleReflectionInAStreet) {
  struct Row {
    double h, road, wall;
  };
  for (const Row& row :
       {Row{0.5, 0.6682874, 0.4385506}, {1, 0.4757856, 0.3503666}, {2, 0.2913654, 0.2412841}}) {
    Enclosure canyon = street(row.h);
    canyon.emissivity = {0.9, 0.7, 0.7, 1.0};
    canyon.temperature.assign(4, 0.0);
    canyon.sky = {canyon.F[0][3], canyon.F[1][3], canyon.F[2][3], 0.0};
    const auto G = canyon.incident(60);
    EXPECT_NEAR(G[0], row.road, 2e-7);
    EXPECT_NEAR(G[1], row.wall, 2e-7);
    EXPECT_NEAR(G[2], row.wall, 2e-7);
  }
}

TEST(Exchange, EqualsItsPlainFormToTheLastBit) {
  for (const auto& [groups, factors, patches] :
       std::vector<std::array<int, 3>>{{2, 0, 1}, {7, 3, 2}, {1001, 40, 3}}) {
    const RandomExchange exchange(groups, factors, patches);
    tsrf_module_radref::Work work;
    for (const std::size_t bands : {1U, 2U}) work.resize(groups, bands);
    ExchangeState plain(exchange), together(exchange), apart(exchange);
    for (int step = 0; step < 2; ++step) {  // the second step starts from the first one's J
      plain.solve_plain(exchange);
      together.solve(exchange, work, true);
      apart.solve(exchange, work, false);
      for (ExchangeState* fast : {&together, &apart}) {
        ASSERT_EQ(fast->incident, plain.incident);
        ASSERT_EQ(fast->J, plain.J);
      }
    }
  }
}

}  // namespace
