// The exchange of radiation in the plain form in which one would write it down: entries in the
// order of the file, one band after the other. The yardstick of the fast form, in bits and in time.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "radiation/raddat.hpp"

namespace plain {

/// One view factor: what part of the source's power the destination gets.
struct Triple {
  std::int32_t source, destination;
  float factor;
};

/// One band: absorptivities by row of the surface properties, the rest by patch.
struct Band {
  std::span<const double> absorptivity, source;
  std::span<double> J, incident;
};

/// The sweeps of a step over the groups of `raddat`, whose table is `triples`.
inline void exchange(const tsrf_module_raddat::Data& raddat, std::span<const Triple> triples,
                     std::span<const std::int32_t> row, std::span<const double> area,
                     const Band& band) {
  const auto n = static_cast<std::size_t>(raddat.NPGID);
  std::vector<double> A(n), a(n), S(n), E(n), G(n), P(n);
  for (std::size_t i = 0; i < area.size(); ++i) {
    const auto g = static_cast<std::size_t>(raddat.pgx[i]);
    const double w = area[i];
    A[g] += w;
    a[g] += band.absorptivity[static_cast<std::size_t>(row[i])] * w;
    S[g] += band.source[i] * w;
    E[g] += band.incident[i] * w;
    P[g] += band.J[i] * w;
  }
  for (std::size_t g = 0; g < n; ++g) a[g] = a[g] / A[g];
  for (int sweep = 0; sweep < raddat.settings.LOPREF; ++sweep) {
    G.assign(n, 0.0);
    for (const Triple& t : triples) {
      G[static_cast<std::size_t>(t.destination)] +=
          static_cast<double>(t.factor) * P[static_cast<std::size_t>(t.source)];
    }
    for (std::size_t g = 0; g < n; ++g) {
      G[g] = raddat.c[g] * G[g] + E[g];
      P[g] = (1.0 - a[g]) * G[g] + S[g];
    }
    for (const auto& [p, q] : raddat.prd) {
      std::swap(P[static_cast<std::size_t>(p)], P[static_cast<std::size_t>(q)]);
    }
  }
  for (std::size_t i = 0; i < area.size(); ++i) {
    const auto g = static_cast<std::size_t>(raddat.pgx[i]);
    band.incident[i] = G[g] / A[g];
    band.J[i] = P[g] / A[g];
  }
}

}  // namespace plain
