#include "radiation/radref.hpp"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

namespace tsrf_module_radref {

namespace {

using tsrf_module_raddat::Octet;
using tsrf_module_raddat::Panel;
using tsrf_module_raddat::place_of;

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

/// Groups of a stretch where each takes little work, and octets of a stretch of the table: some 20
/// microseconds each.
constexpr std::size_t kGroups = 1024;
constexpr std::size_t kOctets = 1 << 11;

/// Octets that the table is asked for in advance, beyond what the processor foresees itself.
constexpr std::size_t kAhead = 32;

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
  group.J[place_of(g)] = J;
}

/// Sums of eight destinations, and what a slice of a panel adds to them.
template <std::size_t Bands>
using Sums = std::array<Lane<Bands>, tsrf_module_raddat::kAbreast>;
template <std::size_t Bands, class Index>
void add(std::span<const Octet<Index>> octets, const Powers<Bands>* J, Sums<Bands>& result) {
  Sums<Bands> sums = result;
  for (const Octet<Index>& octet : octets) {
    __builtin_prefetch(&octet + kAhead);
    for (std::size_t n = 0; n < sums.size(); ++n) {
      sums[n] += static_cast<double>(octet.factor[n]) * lane<Bands>(J[octet.source[n]]);
    }
  }
  result = sums;
}

template <std::size_t Bands, class Index>
using Add = void (*)(std::span<const Octet<Index>>, const Powers<Bands>*, Sums<Bands>&);

#if defined(__x86_64__)
/// The same for two bands with two destinations in a register: 0 and 2, 1 and 3, 4 and 6, 5 and 7,
/// as factors that are doubled where they stand come to lie so.
template <class Index>
[[gnu::target("avx2")]] void add_avx2(std::span<const Octet<Index>> octets, const Powers<2>* J,
                                      Sums<2>& result) {
  using Two = Lane<2>;
  using Four [[gnu::vector_size(4 * sizeof(double))]] = double;
  constexpr std::size_t kHalf = tsrf_module_raddat::kAbreast / 2;
  std::array<Four, kHalf> sums;
  for (std::size_t k = 0; k < kHalf; ++k) {
    const std::size_t n = k / 2 * kHalf + k % 2;
    sums[k] = __builtin_shufflevector(result[n], result[n + 2], 0, 1, 2, 3);
  }
  for (const Octet<Index>& octet : octets) {
    __builtin_prefetch(&octet + kAhead);
    for (std::size_t n = 0; n < tsrf_module_raddat::kAbreast; n += kHalf) {
      const Four factors = _mm256_cvtps_pd(_mm_loadu_ps(octet.factor.data() + n));
      const Two* const lanes = reinterpret_cast<const Two*>(J);
      const auto& source = octet.source;
      sums[n / 2] += __builtin_shufflevector(factors, factors, 0, 0, 2, 2) *
                     __builtin_shufflevector(lanes[source[n]], lanes[source[n + 2]], 0, 1, 2, 3);
      sums[n / 2 + 1] +=
          __builtin_shufflevector(factors, factors, 1, 1, 3, 3) *
          __builtin_shufflevector(lanes[source[n + 1]], lanes[source[n + 3]], 0, 1, 2, 3);
    }
  }
  for (std::size_t k = 0; k < kHalf; ++k) {
    const std::size_t n = k / 2 * kHalf + k % 2;
    result[n] = __builtin_shufflevector(sums[k], sums[k], 0, 1);
    result[n + 2] = __builtin_shufflevector(sums[k], sums[k], 2, 3);
  }
}
#endif

template <std::size_t Bands, class Index>
Add<Bands, Index> add_for([[maybe_unused]] frame::InstructionSet set) {
#if defined(__x86_64__)
  if constexpr (Bands == 2) {
    if (set != frame::InstructionSet::common) return add_avx2<Index>;
  }
#endif
  return add<Bands, Index>;
}

/// The end of the Jacobi step of destination g.
template <std::size_t Bands>
void update(double c, std::size_t g, Lane<Bands> sum, Work::OfBands<Bands>& group) {
  const Lane<Bands> G = c * sum + lane<Bands>(group.incident[g]);
  const Lane<Bands> J =
      (1.0 - lane<Bands>(group.absorptivity[g])) * G + lane<Bands>(group.source[g]);
  group.gathered[g] = std::bit_cast<Powers<Bands>>(G);
  group.J_next[place_of(g)] = std::bit_cast<Powers<Bands>>(J);
}

/// Which of a table's panels one is.
struct Turn {
  bool first;
  bool last;
};

/// What a slice brings its destinations. Sums are kept in `gathered` from panel to panel.
template <std::size_t Bands, class Index>
void gather(const Panel<Index>& panel, std::size_t slice, Turn turn, Add<Bands, Index> add,
            std::span<const double> c, Work::OfBands<Bands>& group) {
  const auto octets = panel.of(slice);
  if (octets.empty() && !turn.first && !turn.last) return;
  const auto destinations = panel.destinations(slice);
  Sums<Bands> sums{};
  if (!turn.first) {
    for (std::size_t n = 0; n < sums.size(); ++n)
      sums[n] = lane<Bands>(group.gathered[destinations[n]]);
  }
  add(octets, group.J.data() + panel.first_place, sums);
  for (std::size_t n = 0; n < sums.size(); ++n) {
    const std::size_t g = destinations[n];
    if (!turn.last) {
      group.gathered[g] = std::bit_cast<Powers<Bands>>(sums[n]);
    } else if (g < c.size()) {
      update<Bands>(c[g], g, sums[n], group);
    }
  }
}

template <std::size_t Bands, class Index>
void gather(frame::Crew& crew, const std::vector<Panel<Index>>& panels, const Work& work,
            std::span<const double> c, Work::OfBands<Bands>& group) {
  const auto add = add_for<Bands, Index>(work.set);
  for (std::size_t p = 0; p < panels.size(); ++p) {
    const std::vector<std::uint32_t>& cuts = work.cuts[p];
    crew.share(cuts.size() - 1, 1, [&](frame::Crew::Stretch part) {
      for (std::size_t s = cuts[part.first]; s < cuts[part.last]; ++s)
        gather<Bands, Index>(panels[p], s, {p == 0, p + 1 == panels.size()}, add, c, group);
    });
  }
}

template <std::size_t Bands>
void sweep(frame::Crew& crew, const tsrf_module_raddat::Data& raddat, const Work& work,
           Work::OfBands<Bands>& group) {
  gather<Bands>(crew, raddat.view_factors.narrow, work, raddat.c, group);
  gather<Bands>(crew, raddat.view_factors.wide, work, raddat.c, group);
  std::swap(group.J, group.J_next);
  // What leaves through one side of a periodic area enters through the other in the next sweep.
  for (const auto& [p, q] : raddat.prd) {
    std::swap(group.J[place_of(static_cast<std::size_t>(p))],
              group.J[place_of(static_cast<std::size_t>(q))]);
  }
}

/// Gives the patches of group g its fluxes.
template <std::size_t Bands>
void split(const Work& work, std::span<const Band> bands, std::size_t g,
           const Work::OfBands<Bands>& group) {
  for (std::size_t b = 0; b < Bands; ++b) {
    const double incident = group.gathered[g][b] / work.area[g];
    const double radiosity = group.J[place_of(g)][b] / work.area[g];
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
    sweep<Bands>(crew, raddat, work, group);
  }
  crew.each(work.area.size(), kGroups, [&](std::size_t g) { split<Bands>(work, bands, g, group); });
}

template <std::size_t Bands>
void resize_bands(std::size_t groups, Work::OfBands<Bands>& group) {
  for (auto* powers : {&group.absorptivity, &group.source, &group.incident, &group.gathered}) {
    powers->resize(groups + 1);  // one for nobody, which fills the last slice of a panel
  }
  for (auto* powers : {&group.J, &group.J_next}) {
    powers->resize(tsrf_module_raddat::places_of(groups));  // the empty ones stay 0
  }
}

/// Stretches of about as many octets each.
template <class Index>
std::vector<std::uint32_t> cut(const Panel<Index>& panel) {
  std::vector<std::uint32_t> cuts(1, 0);
  std::size_t taken = 0;
  for (std::size_t s = 0; s < panel.slices(); ++s) {
    taken += panel.of(s).size() + 1;
    if (taken < kOctets && s + 1 < panel.slices()) continue;
    cuts.push_back(static_cast<std::uint32_t>(s + 1));
    taken = 0;
  }
  return cuts;
}

}  // namespace

void Work::prepare(const tsrf_module_raddat::Data& raddat, std::size_t bands,
                   frame::InstructionSet instruction_set) {
  set = instruction_set;
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

  cuts.clear();
  for (const auto& panel : raddat.view_factors.narrow) cuts.push_back(cut(panel));
  for (const auto& panel : raddat.view_factors.wide) cuts.push_back(cut(panel));
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

void list_arrays(const Work& work, frame::ArrayList& list) {
  const auto of_bands = [&](const auto& group) {
    list.add("powers of groups", group.absorptivity, group.source, group.incident, group.gathered,
             group.J, group.J_next);
  };
  of_bands(work.one);
  of_bands(work.two);
  list.add("members of groups", work.area, work.first_member, work.members);
}

}  // namespace tsrf_module_radref
