#include "radiation/radref.hpp"

#include <algorithm>
#include <bit>
#include <numeric>
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

/// Groups of a stretch where each takes little work, and entries of a stretch of the table: some 20
/// microseconds each.
constexpr std::size_t kGroups = 1024;
constexpr std::size_t kEntries = 1 << 14;

/// Area-weighted sums over the patches of group g.
template <std::size_t Bands>
void merge(const Work& work, std::span<const std::int32_t> surface_row,
           std::span<const double> patch_area, std::span<const Band> bands, std::size_t g,
           double& area, Work::OfBands<Bands>& group) {
  double A = 0.0;
  Powers<Bands> absorptivity{}, source{}, incident{}, J{};
  for (std::uint32_t n = work.first_member[g]; n < work.first_member[g + 1]; ++n) {
    const std::size_t i = work.members[n];
    const auto row = static_cast<std::size_t>(surface_row[i]);
    const double w = patch_area[i];
    A += w;
    for (std::size_t b = 0; b < Bands; ++b) {
      absorptivity[b] += bands[b].absorptivity[row] * w;
      source[b] += bands[b].source[i] * w;
      incident[b] += bands[b].incident[i] * w;
      J[b] += bands[b].radiosity[i] * w;
    }
  }
  area = A;
  for (double& a : absorptivity) a /= A;
  group.absorptivity[g] = absorptivity;
  group.source[g] = source;
  group.incident[g] = incident;
  group.J[g] = J;
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
void sweep(frame::Crew& crew, const tsrf_module_raddat::Data& raddat,
           std::span<const std::uint32_t> cuts, Work::OfBands<Bands>& group) {
  crew.share(cuts.size() - 1, 1, [&](frame::Crew::Stretch part) {
    for (std::size_t g = cuts[part.first]; g < cuts[part.last]; ++g)
      update<Bands>(raddat, g, group);
  });
  std::swap(group.J, group.J_next);
  // What leaves through one side of a periodic area enters through the other in the next sweep.
  for (const auto& [p, q] : raddat.prd) {
    std::swap(group.J[static_cast<std::size_t>(p)], group.J[static_cast<std::size_t>(q)]);
  }
}

/// Gives the patches of group g its fluxes.
template <std::size_t Bands>
void split(const Work& work, std::span<const Band> bands, std::size_t g,
           const Work::OfBands<Bands>& group) {
  for (std::size_t b = 0; b < Bands; ++b) {
    const double incident = group.gathered[g][b] / work.area[g];
    const double radiosity = group.J[g][b] / work.area[g];
    for (std::uint32_t n = work.first_member[g]; n < work.first_member[g + 1]; ++n) {
      bands[b].incident[work.members[n]] = incident;
      bands[b].radiosity[work.members[n]] = radiosity;
    }
  }
}

template <std::size_t Bands>
void solve(frame::Crew& crew, const tsrf_module_raddat::Data& raddat,
           std::span<const std::int32_t> surface_row, std::span<const double> patch_area,
           std::span<const Band> bands, Work& work, Work::OfBands<Bands>& group) {
  crew.each(work.area.size(), kGroups, [&](std::size_t g) {
    merge<Bands>(work, surface_row, patch_area, bands, g, work.area[g], group);
  });
  for (std::int32_t n = 0; n < raddat.settings.LOPREF; ++n) {
    sweep<Bands>(crew, raddat, work.cuts, group);
  }
  crew.each(work.area.size(), kGroups, [&](std::size_t g) { split<Bands>(work, bands, g, group); });
}

template <std::size_t Bands>
void resize_bands(std::size_t groups, Work::OfBands<Bands>& group) {
  for (auto* powers : {&group.absorptivity, &group.source, &group.incident, &group.gathered,
                       &group.J, &group.J_next}) {
    powers->resize(groups);
  }
}

}  // namespace

void Work::prepare(const tsrf_module_raddat::Data& raddat, std::size_t bands) {
  const auto groups = static_cast<std::size_t>(raddat.NPGID);
  area.resize(groups);
  if (bands == 1) resize_bands(groups, one);
  if (bands == 2) resize_bands(groups, two);

  first_member.assign(groups + 1, 0);
  for (const std::int32_t g : raddat.pgx) ++first_member[static_cast<std::size_t>(g) + 1];
  std::partial_sum(first_member.begin(), first_member.end(), first_member.begin());
  members.resize(raddat.pgx.size());
  std::vector<std::uint32_t> next(first_member.begin(), first_member.end() - 1);
  for (std::size_t i = 0; i < raddat.pgx.size(); ++i) {
    members[next[static_cast<std::size_t>(raddat.pgx[i])]++] = static_cast<std::uint32_t>(i);
  }

  cuts.assign(1, 0);
  std::size_t taken = 0;
  for (std::size_t g = 0; g < groups; ++g) {
    taken += raddat.view_factors.of(g).size() + 1;
    if (taken < kEntries && g + 1 < groups) continue;
    cuts.push_back(static_cast<std::uint32_t>(g + 1));
    taken = 0;
  }
}

void tsrf_cal_radref(frame::Crew& crew, const tsrf_module_raddat::Data& raddat,
                     std::span<const std::int32_t> surface_row, std::span<const double> area,
                     std::span<const Band> bands, Work& work) {
  if (bands.size() == 2) {
    solve<2>(crew, raddat, surface_row, area, bands, work, work.two);
  } else {
    solve<1>(crew, raddat, surface_row, area, bands, work, work.one);
  }
}

}  // namespace tsrf_module_radref
