#include "rays/pair_table.hpp"

#include <algorithm>
#include <span>

namespace townskin_case {

namespace {

using Rows = std::vector<std::vector<Partner>>;

constexpr std::size_t kBlock = 4096;  // rows whose transposed entries are gathered at a time

bool by_number(const Partner& a, const Partner& b) { return a.to < b.to; }

/// The rows `first` .. `end`-1 of the transposed table, each by rising number.
Rows transposed(const Rows& rows, std::size_t first, std::size_t end) {
  Rows turned(end - first);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto begin = std::lower_bound(rows[i].begin(), rows[i].end(),
                                        Partner{static_cast<std::int32_t>(first), 0}, by_number);
    for (auto p = begin; p != rows[i].end() && static_cast<std::size_t>(p->to) < end; ++p) {
      turned[static_cast<std::size_t>(p->to) - first].push_back(
          {static_cast<std::int32_t>(i), p->rays});
    }
  }
  return turned;
}

/// Two rows as one; `both` tells the rays of a partner that stands in both.
template <class Both>
void unite(std::span<const Partner> a, std::span<const Partner> b, std::vector<Partner>& all,
           Both&& both) {
  all.clear();
  auto q = b.begin();
  for (const Partner& p : a) {
    for (; q != b.end() && q->to < p.to; ++q) all.push_back(*q);
    const bool twice = q != b.end() && q->to == p.to;
    all.push_back({p.to, twice ? both(p.rays, (q++)->rays) : p.rays});
  }
  all.insert(all.end(), q, b.end());
}

/// Works on all rows together with the transposed ones.
template <class Work>
void beside_transposed(const Rows& rows, unsigned threads, Work&& work) {
  in_parallel(threads, rows.size(), kBlock, [&](unsigned, std::size_t first, std::size_t end) {
    const Rows turned = transposed(rows, first, end);
    std::vector<Partner> all;
    for (std::size_t i = first; i < end; ++i) work(i, turned[i - first], all);
  });
}

/// Rays per area, which a group that sends none has not.
std::vector<double> densities(const RayCounts& counts, const std::vector<double>& area) {
  std::vector<double> density(area.size());
  for (std::size_t i = 0; i < area.size(); ++i) {
    if (area[i] > 0.0) density[i] = counts.fate[i].valid() / area[i];
  }
  return density;
}

}  // namespace

PairTable join_pairs(RayCounts& counts, const std::vector<double>& area, std::size_t partners,
                     std::int32_t far, unsigned threads) {
  const std::size_t groups = area.size();
  const std::vector<double> density = densities(counts, area);
  const auto exchange = [&](std::size_t i, const Partner& p) {
    return p.rays / (density[i] + density[static_cast<std::size_t>(p.to)]);
  };
  PairTable table;
  table.cut.assign(groups, 0.0);

  Rows chosen(groups);  // by each group for itself
  beside_transposed(counts.row, threads, [&](std::size_t i, const auto& turned, auto& all) {
    unite(counts.row[i], turned, all, [](std::uint32_t a, std::uint32_t b) { return a + b; });
    for (const Partner& p : all) table.cut[i] += exchange(i, p);
    if (all.size() > partners) {
      const auto larger = [&](const Partner& a, const Partner& b) {
        const double x = exchange(i, a);
        const double y = exchange(i, b);
        if ((a.to == far) != (b.to == far)) return a.to == far;
        return x != y ? x > y : a.to < b.to;
      };
      std::nth_element(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(partners), all.end(),
                       larger);
      all.resize(partners);
      std::ranges::sort(all, by_number);
    }
    chosen[i].assign(all.begin(), all.end());
  });
  Rows().swap(counts.row);

  Rows kept(groups);
  beside_transposed(chosen, threads, [&](std::size_t i, const auto& turned, auto& all) {
    unite(chosen[i], turned, all, [](std::uint32_t a, std::uint32_t) { return a; });
    kept[i].assign(all.begin(), all.end());
  });
  Rows().swap(chosen);

  table.start.assign(1, 0);
  for (const auto& row : kept) table.start.push_back(table.start.back() + row.size());
  table.to.reserve(table.start.back());
  table.exchange.reserve(table.start.back());
  for (std::size_t i = 0; i < groups; ++i) {
    double sum = 0.0;
    for (const Partner& p : kept[i]) {
      table.to.push_back(p.to);
      table.exchange.push_back(exchange(i, p));
      sum += table.exchange.back();
    }
    table.cut[i] = std::max(0.0, table.cut[i] - sum);
    std::vector<Partner>().swap(kept[i]);
  }
  return table;
}

}  // namespace townskin_case
