#include "radiation/radref.hpp"

#include <algorithm>
#include <bit>
#include <utility>

namespace tsrf_module_radref {

namespace {

using tsrf_module_raddat::ViewFactors;

template <std::size_t Bands>
using Powers = std::array<double, Bands>;

/// The bands of a group as one value of the processor: two bands take one instruction each where
/// one does. Sums and products go element by element, so the bits are those of the bands apart.
template <std::size_t Bands>
struct LaneOf;
template <>
struct LaneOf<1> {
  using Type = double;
};
template <>
struct LaneOf<2> {
  using Type = double __attribute__((vector_size(2 * sizeof(double))));
};
template <std::size_t Bands>
using Lane = typename LaneOf<Bands>::Type;

template <std::size_t Bands>
Lane<Bands> lane(const Powers<Bands>& powers) {
  return std::bit_cast<Lane<Bands>>(powers);
}

/// Area-weighted sums over the patches of each group.
template <std::size_t Bands>
void merge(const std::vector<std::int32_t>& pgx, std::span<const std::int32_t> surface_row,
           std::span<const double> patch_area, std::span<const Band> bands,
           std::vector<double>& area, Work::OfBands<Bands>& group) {
  std::fill(area.begin(), area.end(), 0.0);
  for (auto* powers : {&group.absorptivity, &group.source, &group.incident, &group.J}) {
    std::fill(powers->begin(), powers->end(), Powers<Bands>{});
  }
  for (std::size_t i = 0; i < pgx.size(); ++i) {
    const auto g = static_cast<std::size_t>(pgx[i]);
    const auto row = static_cast<std::size_t>(surface_row[i]);
    const double w = patch_area[i];
    area[g] += w;
    for (std::size_t b = 0; b < Bands; ++b) {
      group.absorptivity[g][b] += bands[b].absorptivity[row] * w;
      group.source[g][b] += bands[b].source[i] * w;
      group.incident[g][b] += bands[b].incident[i] * w;
      group.J[g][b] += bands[b].radiosity[i] * w;
    }
  }
  for (std::size_t g = 0; g < area.size(); ++g) {
    for (double& a : group.absorptivity[g]) a /= area[g];
  }
}

/// One Jacobi step of destination g. A destination's chain of additions is long, but the next one
/// does not wait for it: the processor runs several chains at once by itself, and faster than with
/// destinations interleaved in the loop, which spoils the stream of the table.
template <std::size_t Bands>
void update(const tsrf_module_raddat::Data& raddat, std::size_t g, Work::OfBands<Bands>& group) {
  Lane<Bands> sum{};
  for (const ViewFactors::Entry& entry : raddat.view_factors.of(g)) {
    const auto factor = static_cast<double>(entry.factor);
    sum += factor * lane<Bands>(group.J[static_cast<std::size_t>(entry.source)]);
  }
  const Lane<Bands> G = raddat.c[g] * sum + lane<Bands>(group.incident[g]);
  const Lane<Bands> J =
      (1.0 - lane<Bands>(group.absorptivity[g])) * G + lane<Bands>(group.source[g]);
  group.gathered[g] = std::bit_cast<Powers<Bands>>(G);
  group.J_next[g] = std::bit_cast<Powers<Bands>>(J);
}

template <std::size_t Bands>
void sweep(const tsrf_module_raddat::Data& raddat, Work::OfBands<Bands>& group) {
  for (std::size_t g = 0; g < group.J.size(); ++g) update<Bands>(raddat, g, group);
  std::swap(group.J, group.J_next);
  // What leaves through one side of a periodic area enters through the other in the next sweep.
  for (const auto& [p, q] : raddat.prd) {
    std::swap(group.J[static_cast<std::size_t>(p)], group.J[static_cast<std::size_t>(q)]);
  }
}

/// Gives every patch the fluxes of its group.
template <std::size_t Bands>
void split(const std::vector<std::int32_t>& pgx, const std::vector<double>& area,
           std::span<const Band> bands, Work::OfBands<Bands>& group) {
  for (std::size_t g = 0; g < area.size(); ++g) {
    for (double& J : group.J[g]) J /= area[g];
    for (double& G : group.gathered[g]) G /= area[g];
  }
  for (std::size_t i = 0; i < pgx.size(); ++i) {
    const auto g = static_cast<std::size_t>(pgx[i]);
    for (std::size_t b = 0; b < Bands; ++b) {
      bands[b].incident[i] = group.gathered[g][b];
      bands[b].radiosity[i] = group.J[g][b];
    }
  }
}

template <std::size_t Bands>
void solve(const tsrf_module_raddat::Data& raddat, std::span<const std::int32_t> surface_row,
           std::span<const double> patch_area, std::span<const Band> bands,
           std::vector<double>& area, Work::OfBands<Bands>& group) {
  merge<Bands>(raddat.pgx, surface_row, patch_area, bands, area, group);
  for (std::int32_t n = 0; n < raddat.settings.LOPREF; ++n) sweep<Bands>(raddat, group);
  split<Bands>(raddat.pgx, area, bands, group);
}

template <std::size_t Bands>
void resize_bands(std::size_t groups, Work::OfBands<Bands>& group) {
  for (auto* powers : {&group.absorptivity, &group.source, &group.incident, &group.gathered,
                       &group.J, &group.J_next}) {
    powers->resize(groups);
  }
}

}  // namespace

void Work::resize(std::int32_t groups, std::size_t bands) {
  const auto n = static_cast<std::size_t>(groups);
  area.resize(n);
  if (bands == 1) resize_bands(n, one);
  if (bands == 2) resize_bands(n, two);
}

void tsrf_cal_radref(const tsrf_module_raddat::Data& raddat,
                     std::span<const std::int32_t> surface_row, std::span<const double> area,
                     std::span<const Band> bands, Work& work) {
  if (bands.size() == 2) {
    solve<2>(raddat, surface_row, area, bands, work.area, work.two);
  } else {
    solve<1>(raddat, surface_row, area, bands, work.area, work.one);
  }
}

}  // namespace tsrf_module_radref
