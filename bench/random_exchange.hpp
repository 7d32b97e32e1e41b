// A random exchange of radiation, and the plain form of its solution that the fast one must equal
// to the last bit: entries in the order of the file, one band after the other.
#pragma once

#include <array>
#include <random>
#include <utility>
#include <vector>

#include "radiation/radref.hpp"
#include "radiation/view_factor_table.hpp"

struct RandomExchange {
  struct Triple {
    std::int32_t source, destination;
    float factor;
  };
  tsrf_module_raddat::Data raddat;
  std::vector<Triple> triples;  // the table in the order of the file
  std::vector<double> area;
  std::vector<std::int32_t> row;
  std::array<std::vector<double>, 2> absorptivity, source, sky, J;  // per band

  /// `groups` groups of `patches` patches each, around `factors` view factors a group.
  RandomExchange(std::int32_t groups, int factors, int patches) {
    std::mt19937 random(42);
    const auto real = [&](double low, double high) {
      return std::uniform_real_distribution<double>(low, high)(random);
    };
    raddat.NPGID = groups;
    raddat.settings.LOPREF = 10;
    tsrf_module_raddat::ViewFactorGatherer gatherer(groups);
    for (std::int32_t g = 0; g < groups; ++g) {
      for (int k = static_cast<int>(real(0.8 * factors, 1.2 * factors)); k > 0; --k) {
        const Triple t{g, static_cast<std::int32_t>(random() % static_cast<unsigned>(groups)),
                       static_cast<float>(real(0.0, 1.0 / factors))};
        triples.push_back(t);
        gatherer.add(t.source, t.destination, t.factor);
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
    for (std::size_t b = 0; b < 2; ++b) solve_plain(x, b);
  }

 private:
  void solve_plain(const RandomExchange& x, std::size_t b) {
    const auto n = static_cast<std::size_t>(x.raddat.NPGID);
    std::vector<double> A(n), a(n), S(n), E(n), G(n), P(n);
    for (std::size_t i = 0; i < x.area.size(); ++i) {
      const auto g = static_cast<std::size_t>(x.raddat.pgx[i]);
      const double w = x.area[i];
      A[g] += w;
      a[g] += x.absorptivity[b][static_cast<std::size_t>(x.row[i])] * w;
      S[g] += x.source[b][i] * w;
      E[g] += incident[b][i] * w;
      P[g] += J[b][i] * w;
    }
    for (std::size_t g = 0; g < n; ++g) a[g] = a[g] / A[g];
    for (int sweep = 0; sweep < x.raddat.settings.LOPREF; ++sweep) {
      G.assign(n, 0.0);
      for (const auto& t : x.triples) {
        G[static_cast<std::size_t>(t.destination)] +=
            static_cast<double>(t.factor) * P[static_cast<std::size_t>(t.source)];
      }
      for (std::size_t g = 0; g < n; ++g) {
        G[g] = x.raddat.c[g] * G[g] + E[g];
        P[g] = (1.0 - a[g]) * G[g] + S[g];
      }
      for (const auto& [p, q] : x.raddat.prd) {
        std::swap(P[static_cast<std::size_t>(p)], P[static_cast<std::size_t>(q)]);
      }
    }
    for (std::size_t i = 0; i < x.area.size(); ++i) {
      const auto g = static_cast<std::size_t>(x.raddat.pgx[i]);
      incident[b][i] = G[g] / A[g];
      J[b][i] = P[g] / A[g];
    }
  }
};
