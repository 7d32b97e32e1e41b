// The exchange of radiation: a street whose answer is known, and the bits of the plain form.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "../bench/random_exchange.hpp"
#include "../bench/sample_street_canyon.hpp"

namespace {

using Reals = std::vector<double>;

// Infinite street of unit width and height h by crossed strings (Hottel): road, walls, sky plane.
// Uniform sky of 1 W/m2, albedo of the road 0.1 and of the walls 0.3, exact to the digits given.
TEST(Exchange, MultipleReflectionInAStreet) {
  struct Row {
    double h, road, wall;
  };
  for (const Row& row :
       {Row{0.5, 0.6682874, 0.4385506}, {1, 0.4757856, 0.3503666}, {2, 0.2913654, 0.2412841}}) {
    const double s = std::hypot(1.0, row.h) - row.h;              // road to sky
    const double w = std::hypot(1.0, 1.0 / row.h) - 1.0 / row.h;  // wall to wall
    const double r = (1 - s) / 2;                                 // road to one wall
    const double o = (1 - w) / 2;                                 // wall to road, wall to sky
    const Reals F{0, r, r, s, o, 0, w, o, o, w, 0, o, s, r, r, 0};
    tsrf_module_raddat::Data raddat;
    raddat.NPGID = 4;
    raddat.settings.LOPREF = 60;
    raddat.pgx = {0, 1, 2, 3};
    raddat.c.assign(4, 1.0);
    tsrf_module_raddat::ViewFactorGatherer gatherer(4);
    for (std::int32_t n = 0; n < 16; ++n) {
      gatherer.add(n / 4, n % 4, static_cast<float>(F[static_cast<std::size_t>(n)]));
    }
    frame::Crew crew;
    raddat.view_factors = gatherer.take_table(crew);
    const Reals emissivity{0.9, 0.7, 0.7, 1.0};
    const Reals emitted(4, 0.0);
    Reals J(4, 405.0);
    Reals G{s, o, o, 0.0};
    const tsrf_module_radref::Band band{emissivity, emitted, J, G};
    tsrf_module_radref::Work work;
    work.prepare(raddat, 1);
    tsrf_cal_radref(crew, raddat, raddat.pgx, Reals{1, row.h, row.h, 1}, std::span(&band, 1), work);
    EXPECT_NEAR(G[0], row.road, 2e-7);
    EXPECT_NEAR(G[1], row.wall, 2e-7);
    EXPECT_NEAR(G[2], row.wall, 2e-7);
  }
}

// Sweeps go to the direct solution, by at least the share that the surfaces keep each time; what
// the canyon does not absorb leaves it through its top.
TEST(Exchange, SweepsGoToTheDirectSolution) {
  for (const double h : {0.5, 4.0}) {
    sample::StreetCanyon canyon(h, 0.8, 10);
    const sample::StreetCanyon::Reals E = canyon.light(100.0, 700.0, 50.0);
    const auto truth = canyon.direct(E);
    double before = 100.0;
    for (int sweeps = 0; sweeps < 100; sweeps += 10) {
      const double error = sample::worst_error(canyon.swept(E, 10), truth);
      EXPECT_LT(error, std::max(before * std::pow(0.8, 9), 1e-5));
      before = error;
    }
    // The sky's share of the light through the top, and the beam's.
    double in = 100.0 + 700.0 * std::sin(50.0 * std::numbers::pi / 180.0);
    for (const double absorbed : truth) in -= absorbed;
    for (std::size_t s = 0; s < E.size(); ++s) in -= canyon.J[s] * canyon.sky[s] * canyon.area[s];
    EXPECT_NEAR(in, 0.0, 1e-4);
  }
}

/// The same numbers, or none in the same places.
bool same(const Reals& a, const Reals& b) {
  return std::ranges::equal(
      a, b, [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}

// Few groups make one panel; many make several, or one with wide sources where the file is
// shuffled. The second step starts from the first one's radiosities. In the third the first and
// last sources of panels are infinite: that reaches those who see them, and nobody else in the one
// sweep.
TEST(Exchange, EqualsItsPlainFormToTheLastBit) {
  for (const auto& [groups, factors, patches, order] :
       std::vector<std::tuple<int, int, int, FileOrder>>{{2, 0, 1, FileOrder::by_source},
                                                         {7, 3, 2, FileOrder::by_source},
                                                         {1001, 40, 3, FileOrder::shuffled},
                                                         {66001, 20, 1, FileOrder::by_destination},
                                                         {66001, 20, 1, FileOrder::shuffled}}) {
    RandomExchange exchange(groups, factors, patches, order);
    tsrf_module_radref::Work wide, common;
    for (const std::size_t bands : {1U, 2U}) {
      wide.prepare(exchange.raddat, bands);
      common.prepare(exchange.raddat, bands, frame::InstructionSet::common);
    }
    frame::Crew one, three({3});
    ExchangeState plain(exchange), together(exchange), narrow(exchange), apart(exchange);
    for (int step = 0; step < 3; ++step) {
      if (step == 2) {
        exchange.raddat.settings.LOPREF = 1;
        for (const std::size_t p : {std::size_t{0}, std::size_t{65534}, std::size_t{65535}}) {
          if (p >= plain.J[0].size()) continue;
          for (ExchangeState* state : {&plain, &together, &narrow, &apart}) {
            state->J[1][p] = std::numeric_limits<double>::infinity();
          }
        }
      }
      plain.solve_plain(exchange);
      together.solve(exchange, three, wide, true);
      narrow.solve(exchange, one, common, true);
      apart.solve(exchange, one, wide, false);
      const auto& groups_of = exchange.raddat.pgx;
      for (std::size_t i = 0; i < groups_of.size() && step == 0; ++i) {
        const auto g = static_cast<std::size_t>(groups_of[i]);
        ASSERT_EQ(wide.two.now(g)[1] / wide.area[g], plain.J[1][i]);
      }
      for (const ExchangeState* fast : {&together, &narrow, &apart}) {
        for (std::size_t b = 0; b < 2; ++b) {
          ASSERT_TRUE(same(fast->incident[b], plain.incident[b])) << groups << ' ' << step;
          ASSERT_TRUE(same(fast->J[b], plain.J[b])) << groups << ' ' << step;
        }
      }
    }
  }
}

}  // namespace
