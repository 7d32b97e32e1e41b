#include "trees/expfnx.hpp"

#include <array>
#include <cmath>
#include <cstddef>

namespace jmk {

namespace {

constexpr double kSeriesBelow = 0.01;
constexpr std::size_t kFactorials = 11;

/// 1/n! at position n.
constexpr std::array<double, kFactorials + 1> kInverseFactorial = [] {
  std::array<double, kFactorials + 1> table{1.0};
  double factorial = 1.0;
  for (std::size_t n = 1; n < table.size(); ++n) {
    factorial *= static_cast<double>(n);
    table[n] = 1.0 / factorial;
  }
  return table;
}();

/// Sum of x^n / (n + order)!.
double series(std::size_t order, double x) {
  double sum = 0.0;
  for (std::size_t n = kFactorials; n >= order; --n) sum = sum * x + kInverseFactorial[n];
  return sum;
}

/// Each order takes the first term of the series off the order before and divides by x.
double expfn(int order, double x) {
  if (std::fabs(x) <= kSeriesBelow) return series(static_cast<std::size_t>(order), x);
  double value = std::expm1(x) / x;
  if (order >= 2) value = (value - 1.0) / x;
  if (order >= 3) value = (value - 0.5) / x;
  return value;
}

}  // namespace

double expfn1(double x) { return expfn(1, x); }

void jmk_utl_expfnx(frame::Log& log, int order, std::span<double> x) {
  if (order < 1 || order > 3) log.program_error("### program error -1- (jmk_utl_expfnx)");
  for (double& value : x) value = expfn(order, value);
}

}  // namespace jmk
