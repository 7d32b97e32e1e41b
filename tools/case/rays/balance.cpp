#include "rays/balance.hpp"

#include <algorithm>
#include <cmath>

namespace townskin_case {

namespace {

constexpr int kSweeps = 200;
constexpr double kClosed = 1e-7;    // as a share of a group's area
constexpr double kLargest = 100.0;  // of a scale: rows that need more do not fit the rest
constexpr double kNothing = 1e-12;  // likewise: pairs below it are left out

/// One sweep over the rows; returns the largest change of a row, as a share of the group's area.
double sweep(const PairTable& table, const std::vector<double>& area,
             const std::vector<double>& target, std::vector<double>& d) {
  double change = 0.0;
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
    // The positive solution of own d^2 + others d = target.
    const double root = std::sqrt(others * others + 4.0 * own * target[i]);
    const double scale = std::min(2.0 * target[i] / (others + root), kLargest);
    const double step = std::abs(scale - d[i]) * (others + own * (scale + d[i]));
    change = std::max(change, step / area[i]);
    d[i] = scale;
  }
  return change;
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
  for (double change = 1.0; change > kClosed && done.sweeps < kSweeps; ++done.sweeps) {
    change = sweep(table, area, target, d);
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
