// View factors as a whole.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "check/doubts.hpp"

namespace check {

namespace {

using frame::items;

constexpr double kMostSum = 1.0001;
constexpr double kLeastSum = 0.9;
constexpr double kUp = 0.99;       // upward part of the normal of what lies flat
constexpr double kLacking = 0.05;  // of a row, that others say it should have
constexpr double kApart =
    0.05;  // of the larger power and of the smaller area: less is noise of rays
constexpr std::size_t kNamed = 10;

struct Entry {
  std::int32_t source;
  float factor;
};

/// View factors by destination: entries first[g] .. first[g + 1] - 1 are of group g.
struct Rows {
  std::vector<std::size_t> first;
  std::vector<Entry> entries;

  template <class Self>
  static auto of(Self& rows, std::size_t g) {
    return std::span(rows.entries).subspan(rows.first[g], rows.first[g + 1] - rows.first[g]);
  }
};

Rows rows_of(tsrf_module_raddat::Data& data) {
  Rows rows;
  rows.first.resize(data.PgID.size() + 2);  // counted one further on, so that filling moves them
  data.view_factors.each([&](std::size_t g, std::size_t, float) { ++rows.first[g + 2]; });
  std::inclusive_scan(rows.first.begin(), rows.first.end(), rows.first.begin());
  rows.entries.resize(rows.first.back());
  data.view_factors.each([&](std::size_t g, std::size_t source, float factor) {
    rows.entries[rows.first[g + 1]++] = {static_cast<std::int32_t>(source), factor};
  });
  rows.first.pop_back();
  return rows;
}

struct Table {
  const tsrf_module_raddat::Data& data;
  const Rows& rows;
  std::vector<double> area;  // by group
  std::vector<double> sky;   // by group: sky view factor as the file has it
  std::vector<bool> flat;    // by group: all its patches look up, where sky is behind the rim
  bool reversed;             // the rows were given in the reverse sense

  /// The factor that the file has for an entry of destination g.
  [[nodiscard]] double factor(std::size_t g, const Entry& entry) const {
    const double value = static_cast<double>(entry.factor);
    const auto s = static_cast<std::size_t>(entry.source);
    return reversed ? value * area[s] / area[g] : value;
  }
  /// Whose row an entry of destination g stands in.
  [[nodiscard]] std::size_t row(std::size_t g, const Entry& entry) const {
    return reversed ? g : static_cast<std::size_t>(entry.source);
  }
};

void add(frame::Findings& findings, std::vector<std::string> lines, std::string hint) {
  findings.add({.fault = false, .lines = std::move(lines), .hint = std::move(hint)});
}

std::string name_of(const Table& table, std::size_t g) {
  return items("SrcPgID of FormFactor data =", table.data.PgID[g]);
}

/// Sum of each row, and whether a group has any entry.
void look_at_rows(const Table& table, frame::Findings& findings) {
  std::vector<double> sum(table.sky);
  std::vector<double> lacks(sum.size());  // what the rows of its partners say beyond its own
  std::vector<bool> seen(sum.size());
  for (std::size_t g = 0; g < sum.size(); ++g) {
    for (const Entry& entry : Rows::of(table.rows, g)) {
      const std::size_t row = table.row(g, entry);
      const std::size_t partner = row == g ? static_cast<std::size_t>(entry.source) : g;
      const double factor = table.factor(g, entry);
      sum[row] += factor;
      lacks[row] -= factor;
      lacks[partner] += factor * table.area[row] / table.area[partner];
      seen[g] = true;
      seen[static_cast<std::size_t>(entry.source)] = true;
    }
  }
  const bool given = table.data.settings.LVFSKY > 0;
  for (std::size_t g = 0; g < sum.size(); ++g) {
    const bool open = table.data.c[g] <= 0.0 && seen[g];  // it was given the whole sky
    if (open) continue;
    if (!seen[g] && (!given || sum[g] < kLeastSum)) {
      add(findings,
          {items("PgID in PatchIndex data =", table.data.PgID[g]), "it has no view factors"},
          "its patches see the sky alone");
    } else if (sum[g] > kMostSum) {
      add(findings, {name_of(table, g), items("sum of view factor =", sum[g]), "it must be <= 1"},
          "more is seen than there is");
    } else if (given && sum[g] < kLeastSum && (lacks[g] > kLacking || table.flat[g])) {
      // An upright patch whose partners agree looks out over the rim of the district.
      add(findings, {name_of(table, g), items("sum of view factor =", sum[g]), "it must be near 1"},
          "the rest of its view is scaled to close");
    }
  }
}

/// Entries of each row in the order of their sources, as most files have them.
void put_in_order(frame::Crew& crew, Rows& rows) {
  const std::size_t groups = rows.first.size() - 1;
  crew.each(groups, 256, [&](std::size_t g) {
    const auto row = Rows::of(rows, g);
    constexpr auto by_source = &Entry::source;
    if (!std::ranges::is_sorted(row, {}, by_source)) std::ranges::sort(row, {}, by_source);
  });
}

struct Pair {
  double apart;
  std::size_t a, b;
  double power_a, power_b;
};

/// Keeps the worst pairs.
void keep(std::vector<Pair>& worst, const Pair& pair) {
  const auto at = std::ranges::upper_bound(worst, pair.apart, std::greater<>(), &Pair::apart);
  if (at == worst.end() && worst.size() == kNamed) return;
  worst.insert(at, pair);
  if (worst.size() > kNamed) worst.pop_back();
}

/// Area times factor must be the same both ways. The rows are walked once: the place in the row of
/// each partner only goes forward as the rows come in their order.
void look_at_pairs(const Table& table, frame::Findings& findings) {
  const Rows& factors = table.rows;
  std::vector<std::size_t> next(factors.first.begin(), factors.first.end() - 1);
  std::vector<Pair> worst;
  std::int64_t count = 0;
  const auto compare = [&](std::size_t g, std::size_t s, double here, double there) {
    const double most = std::max(here, there);
    const double least = kApart * std::min(table.area[g], table.area[s]);
    if (std::abs(here - there) <= std::max(kApart * most, least)) return;
    ++count;
    keep(worst, {std::abs(here - there), g, s, here, there});
  };
  for (std::size_t g = 0; g + 1 < factors.first.size(); ++g) {
    for (const Entry& entry : Rows::of(factors, g)) {
      const auto s = static_cast<std::size_t>(entry.source);
      const double here = table.factor(g, entry) * table.area[table.row(g, entry)];
      std::size_t& at = next[s];
      const std::size_t end = factors.first[s + 1];
      while (at < end && factors.entries[at].source < static_cast<std::int32_t>(g)) ++at;
      const bool there = at < end && factors.entries[at].source == static_cast<std::int32_t>(g);
      if (there && s <= g) continue;  // its partner has compared it
      const std::size_t row = table.row(g, entry);
      compare(row, row == g ? s : g, here,
              there ? table.factor(s, factors.entries[at]) *
                          table.area[table.row(s, factors.entries[at])]
                    : 0.0);
    }
  }
  for (const Pair& pair : worst) {
    add(findings,
        {items("SrcPgID,DstPgID of FormFactor data =", table.data.PgID[pair.a],
               table.data.PgID[pair.b]),
         items("area x view factor =", pair.power_a, "and back", pair.power_b),
         "they must be the same to 5 %"},
        static_cast<std::size_t>(count) > worst.size()
            ? items("one of", count, "pairs; the worst", worst.size(), "are named")
            : "");
  }
}

}  // namespace

void doubt_exchange(const Parts& parts, tsrf_main01::Run& run) {
  tsrf_module_raddat::Data& data = run.radiation.raddat;
  if (!parts.exchange || !parts.whole_list || data.view_factors.empty()) return;
  frame::Findings& findings = run.desk.log.findings();
  Rows rows = rows_of(data);
  put_in_order(run.desk.crew, rows);
  Table table{.data = data,
              .rows = rows,
              .area = tsrf_module_raddat::group_sums(data, run.inputs.patch.area),
              .sky = {},
              .flat = std::vector<bool>(data.PgID.size(), true),
              .reversed = data.settings.LVFSWP > 0};
  for (std::size_t p = 0; p < data.pgx.size(); ++p) {
    if (run.inputs.patch.nz[p] < kUp) table.flat[static_cast<std::size_t>(data.pgx[p])] = false;
  }
  table.sky.assign(data.PgID.size(), 0.0);
  if (data.settings.LVFSKY > 0) {
    for (std::size_t p = 0; p < data.pgx.size(); ++p) {
      // What nothing sees was given the whole sky behind the reading.
      const auto g = static_cast<std::size_t>(data.pgx[p]);
      table.sky[g] = run.surface.data.skyvf0[p];
    }
  }
  look_at_rows(table, findings);
  look_at_pairs(table, findings);
}

}  // namespace check
