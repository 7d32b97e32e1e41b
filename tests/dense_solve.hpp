// A small linear system solved by elimination with pivots: the truth for the iterative solvers.
#pragma once

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

struct DenseSystem {
  explicit DenseSystem(std::size_t count) : n(count), a(count * count, 0.0), b(count, 0.0) {}

  double& at(std::size_t row, std::size_t column) { return a[row * n + column]; }

  /// The solution; the system is used up.
  std::vector<double> solve() {
    for (std::size_t p = 0; p < n; ++p) {
      std::size_t best = p;
      for (std::size_t r = p + 1; r < n; ++r) {
        if (std::abs(at(r, p)) > std::abs(at(best, p))) best = r;
      }
      for (std::size_t c = 0; c < n; ++c) std::swap(at(p, c), at(best, c));
      std::swap(b[p], b[best]);
      for (std::size_t r = p + 1; r < n; ++r) {
        const double factor = at(r, p) / at(p, p);
        for (std::size_t c = p; c < n; ++c) at(r, c) -= factor * at(p, c);
        b[r] -= factor * b[p];
      }
    }
    for (std::size_t p = n; p-- > 0;) {
      for (std::size_t c = p + 1; c < n; ++c) b[p] -= at(p, c) * b[c];
      b[p] /= at(p, p);
    }
    return b;
  }

  std::size_t n;
  std::vector<double> a, b;
};
