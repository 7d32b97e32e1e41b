#include "balance.hpp"

#include <algorithm>
#include <cmath>

namespace townskin_case {

namespace {

constexpr int kSweeps = 200;
constexpr double kClosed = 1e-7;    // as a share of a group's area
constexpr double kLargest = 1e30;   // of a scale, where no scaling closes the rows
constexpr double kNothing = 1e-12;  // likewise: pairs below it are left out

/// One sweep over the rows; returns the largest gap that a row had when its turn came.
double sweep(const PairTable& table, const std::vector<double>& area,
             const std::vector<double>& target, std::vector<double>& d) {
  double gap = 0.0;
  for (std::size_t i = 0; i < target.size(); ++i) {
    if (target[i] < 0.0) continue;
    double others = 0.0;
    double own = 0.0;
    for (std::size_t e = table.start[i]; e < table.start[i + 1]; ++e) {
      const auto j = static_cast<std::size_t>(table.to[e]);
      if (j == i) {
        own = table.exchange[e];
      } else {
        others += table.exchange[e] * d[j];
      }
    }
    if (!(others + own > 0.0)) continue;
    gap = std::max(gap, std::abs(d[i] * (others + own * d[i]) - target[i]) / area[i]);
    // The positive solution of own d^2 + others d = target.
    const double root = std::sqrt(others * others + 4.0 * own * target[i]);
    d[i] = std::min(2.0 * target[i] / (others + root), kLargest);
  }
  return gap;
}

std::vector<double> row_sums(const PairTable& table) {
  std::vector<double> sums(table.start.size() - 1);
  for (std::size_t i = 0; i < sums.size(); ++i) {
    for (std::size_t e = table.start[i]; e < table.start[i + 1]; ++e) sums[i] += table.exchange[e];
  }
  return sums;
}

/// Lowers the rows that give off too much.
void lower(PairTable& table, const std::vector<double>& target) {
  std::vector<double> share = row_sums(table);
  for (std::size_t i = 0; i < share.size(); ++i) {
    const bool above = target[i] >= 0.0 && share[i] > target[i];
    share[i] = above ? target[i] / share[i] : 1.0;
  }
  for (std::size_t i = 0; i < share.size(); ++i) {
    for (std::size_t e = table.start[i]; e < table.start[i + 1]; ++e) {
      table.exchange[e] *= std::min(share[i], share[static_cast<std::size_t>(table.to[e])]);
    }
  }
}

/// The table without pairs that have come to nothing, and with what a group lacks given to itself.
double give_to_itself(PairTable& table, const std::vector<double>& area,
                      const std::vector<double>& target) {
  const std::vector<double> sums = row_sums(table);
  PairTable all{{0}, {}, {}, std::move(table.cut)};
  all.to.reserve(table.to.size());
  all.exchange.reserve(table.to.size());
  double largest = 0.0;
  for (std::size_t i = 0; i < sums.size(); ++i) {
    double own = target[i] - sums[i];
    if (!(own > kClosed * area[i])) own = 0.0;
    largest = std::max(largest, own > 0.0 ? own / area[i] : 0.0);
    const auto self = static_cast<std::int32_t>(i);
    const auto give = [&] {
      all.to.push_back(self);
      all.exchange.push_back(own);
      own = 0.0;
    };
    for (std::size_t e = table.start[i]; e < table.start[i + 1]; ++e) {
      if (table.to[e] == self) {
        own += table.exchange[e];
        continue;
      }
      if (own > 0.0 && table.to[e] > self) give();
      const double least = std::min(area[i], area[static_cast<std::size_t>(table.to[e])]);
      if (!(table.exchange[e] > kNothing * least)) continue;
      all.to.push_back(table.to[e]);
      all.exchange.push_back(table.exchange[e]);
    }
    if (own > 0.0) give();
    all.start.push_back(all.to.size());
  }
  table = std::move(all);
  return largest;
}

}  // namespace

Balance balance(PairTable& table, const std::vector<double>& area,
                const std::vector<double>& target) {
  Balance done;
  const std::vector<double> sums = row_sums(table);
  for (std::size_t i = 0; i < sums.size(); ++i) {
    if (target[i] < 0.0 || !(area[i] > 0.0)) continue;
    done.before = std::max(done.before, std::abs(sums[i] - target[i]) / area[i]);
  }
  std::vector<double> d(target.size(), 1.0);
  for (double gap = 1.0; gap > kClosed && done.sweeps < kSweeps; ++done.sweeps) {
    gap = sweep(table, area, target, d);
  }
  for (std::size_t i = 0; i < d.size(); ++i) {
    for (std::size_t e = table.start[i]; e < table.start[i + 1]; ++e) {
      table.exchange[e] *= d[i] * d[static_cast<std::size_t>(table.to[e])];
    }
  }
  lower(table, target);
  done.on_itself = give_to_itself(table, area, target);
  return done;
}

}  // namespace townskin_case
