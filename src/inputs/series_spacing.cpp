#include "inputs/series_spacing.hpp"

#include <algorithm>
#include <cmath>

namespace dated_series {

namespace {

using tsrf_module_calendar::Date;
using tsrf_module_calendar::kSecondsPerDay;

constexpr double kDaysPerYear = 365.0;
constexpr double kSame = 0.5;        ///< dates are whole seconds
constexpr double kLinesAmiss = 2.0;  ///< so many lines early or late are near to a cycle
constexpr double kLeastLines = 4.0;  ///< of what counts as a day, a month, a year of lines

bool same(double a, double b) { return std::abs(a - b) < kSame; }

std::vector<double> months() {
  std::vector<double> lengths;
  for (int days = 28; days <= 31; ++days) lengths.push_back(days * kSecondsPerDay);
  return lengths;
}

/// The lengths that the cycle of the file may have: that of a month varies.
std::vector<double> own_cycles(const Date& first, const Date& last) {
  if (first[0] != last[0]) return {(last[0] + 1.0 - first[0]) * kDaysPerYear * kSecondsPerDay};
  if (first[1] != last[1]) return {kDaysPerYear * kSecondsPerDay};
  if (first[2] != last[2]) return months();
  return {kSecondsPerDay};
}

/// The lengths that a file may be meant to have.
std::vector<double> natural_cycles(const Date& first, const Date& last) {
  std::vector<double> lengths = months();
  const double years = last[0] - first[0];
  for (const double days : {1.0, kDaysPerYear, years * kDaysPerYear, (years + 1) * kDaysPerYear}) {
    lengths.push_back(days * kSecondsPerDay);
  }
  return lengths;
}

}  // namespace

Spacing spacing_of(std::vector<double> intervals) {
  if (intervals.empty()) return {};
  const auto middle = intervals.begin() + static_cast<std::ptrdiff_t>(intervals.size() / 2);
  std::nth_element(intervals.begin(), middle, intervals.end());
  const double usual = *middle;
  const auto count = std::ranges::count_if(intervals, [&](double x) { return same(x, usual); });
  const auto all = static_cast<std::ptrdiff_t>(intervals.size());
  return {usual, all >= 2 && 2 * count >= all};
}

std::optional<Misfit> misfit(const Spacing& spacing, const Date& first, const Date& last) {
  if (!spacing.regular) return std::nullopt;
  const tsrf_module_calendar::Data plain;
  const double filled = tsrf_module_calendar::date2sec(plain, last) -
                        tsrf_module_calendar::date2sec(plain, first) + spacing.usual;
  const auto amiss = [&](double cycle) { return std::abs(filled - cycle); };
  const std::vector<double> own = own_cycles(first, last);
  const double nearest = *std::ranges::min_element(own, {}, amiss);
  if (same(filled, nearest)) return std::nullopt;
  const bool near_to_one = std::ranges::any_of(natural_cycles(first, last), [&](double cycle) {
    return cycle >= kLeastLines * spacing.usual &&
           amiss(cycle) <= kLinesAmiss * spacing.usual + kSame;
  });
  if (!near_to_one) return std::nullopt;
  return Misfit{filled, nearest};
}

}  // namespace dated_series
