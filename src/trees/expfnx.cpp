#include "trees/expfnx.hpp"

#include <array>
#include <cmath>
#include <cstddef>

namespace jmk {

namespace {

constexpr double kSeriesBelow = 0.01;

/// 1/(n + 1)! at position n.
constexpr std::array<double, 11> kInverseFactorial = [] {
  std::array<double, 11> table{};
  double factorial = 1.0;
  for (std::size_t n = 0; n < table.size(); ++n) {
    factorial *= static_cast<double>(n + 1);
    table[n] = 1.0 / factorial;
  }
  return table;
}();

}  // namespace

double jmk_utl_expfnx(double x) {
  if (!(std::fabs(x) <= kSeriesBelow)) return std::expm1(x) / x;
  double sum = 0.0;
  for (std::size_t n = kInverseFactorial.size(); n-- > 0;) sum = sum * x + kInverseFactorial[n];
  return sum;
}

}  // namespace jmk
