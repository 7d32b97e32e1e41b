// A random exchange of radiation, solved by the fast form and by the plain one, which must agree to
// the last bit.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "plain_exchange.hpp"
#include "radiation/radref.hpp"
#include "radiation/view_factor_table.hpp"

/// The order in which a file tells the factors.
enum class FileOrder { by_source, by_destination, shuffled };

struct RandomExchange {
  using Triple = plain::Triple;
  tsrf_module_raddat::Data raddat;
  std::vector<Triple> triples;  // the table in the order of the file
  std::vector<double> area;
  std::vector<std::int32_t> row;
  std::array<std::vector<double>, 2> absorptivity, source, sky, J;  // per band

  /// `groups` groups of `patches` patches each, in rows of a square as they stand, around `factors`
  /// view factors a group: half of them to groups at most five away, half to any.
  RandomExchange(std::int32_t groups, int factors, int patches,
                 FileOrder order = FileOrder::by_source) {
    std::mt19937 random(42);
    const auto real = [&](double low, double high) {
      return std::uniform_real_distribution<double>(low, high)(random);
    };
    const auto below = [&](std::int32_t n) {
      return static_cast<std::int32_t>(random() % static_cast<unsigned>(n));
    };
    const auto side = static_cast<std::int32_t>(std::sqrt(groups));
    raddat.NPGID = groups;
    raddat.settings.LOPREF = 10;
    for (std::int32_t g = 0; g < groups; ++g) {
      for (int k = static_cast<int>(real(0.8 * factors, 1.2 * factors)); k > 0; --k) {
        const std::int32_t near = g + below(11) - 5 + (below(11) - 5) * side;
        const std::int32_t to = k % 2 == 0 && near >= 0 && near < groups ? near : below(groups);
        triples.push_back({g, to, static_cast<float>(real(0.0, 1.0 / factors))});
      }
      raddat.c.push_back(real(0.8, 1.0));
      for (int i = 0; i < patches; ++i) {
        raddat.pgx.push_back((g + i) % groups);
        area.push_back(real(1.0, 20.0));
        row.push_back(static_cast<std::int32_t>(random() % 3));
        for (std::size_t b = 0; b < 2; ++b) {
          source[b].push_back(real(0.0, 400.0));
          sky[b].push_back(real(0.0, 300.0));
          J[b].push_back(real(300.0, 500.0));
        }
      }
    }
    if (order == FileOrder::shuffled) std::shuffle(triples.begin(), triples.end(), random);
    if (order == FileOrder::by_destination) {
      std::stable_sort(triples.begin(), triples.end(), [](const Triple& a, const Triple& b) {
        return a.destination < b.destination;
      });
    }
    tsrf_module_raddat::ViewFactorGatherer gatherer(groups);
    for (const Triple& t : triples) gatherer.add(t.source, t.destination, t.factor);
    absorptivity = {{{0.9, 0.5, 0.0}, {0.2, 0.7, 1.0}}};
    raddat.prd = {{0, groups - 1}, {1, groups / 2}};
    frame::Crew crew;
    raddat.view_factors = gatherer.take_table(crew);
  }
};

/// What a solution starts from and ends in, per band.
struct ExchangeState {
  explicit ExchangeState(const RandomExchange& x) : J(x.J), incident(x.sky) {}
  std::array<std::vector<double>, 2> J, incident;

  /// Both bands in one pass, or one after the other.
  void solve(const RandomExchange& x, frame::Crew& crew, tsrf_module_radref::Work& work,
             bool together) {
    std::array<tsrf_module_radref::Band, 2> bands;
    for (std::size_t b = 0; b < 2; ++b) {
      bands[b] = {x.absorptivity[b], x.source[b], J[b], incident[b]};
    }
    const std::span<const tsrf_module_radref::Band> all(bands);
    if (together) {
      tsrf_cal_radref(crew, x.raddat, x.row, x.area, all, work);
    } else {
      tsrf_cal_radref(crew, x.raddat, x.row, x.area, all.first(1), work);
      tsrf_cal_radref(crew, x.raddat, x.row, x.area, all.last(1), work);
    }
  }

  void solve_plain(const RandomExchange& x) {
    for (std::size_t b = 0; b < 2; ++b) {
      plain::exchange(x.raddat, x.triples, x.row, x.area,
                      {x.absorptivity[b], x.source[b], J[b], incident[b]});
    }
  }
};
