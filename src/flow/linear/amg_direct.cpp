#include "flow/linear/amg_direct.hpp"

#include <cmath>

namespace flow {

namespace {

/// A pivot below this part of its diagonal is 0 but for rounding.
constexpr double kNoPivot = 1e-12;

/// The matrix, row by row.
std::vector<double> dense(const AmgGrid& grid) {
  const std::size_t n = grid.size();
  std::vector<double> a(n * n, 0.0);
  const std::vector<double> diagonal = grid.diagonal();
  std::size_t cell = 0;
  for (std::int32_t k = 0; k < grid.n[2]; ++k) {
    for (std::int32_t j = 0; j < grid.n[1]; ++j) {
      for (std::int32_t i = 0; i < grid.n[0]; ++i, ++cell) {
        a[cell * n + cell] = diagonal[cell];
        for (std::size_t axis = 0; axis < 3; ++axis) {
          if (grid.c[axis][cell] == 0.0) continue;
          Triple at{i, j, k};
          at[axis] = at[axis] > 0 ? at[axis] - 1 : grid.n[axis] - 1;
          const std::size_t other = grid.at(at[0], at[1], at[2]);
          a[cell * n + other] -= grid.c[axis][cell];
          a[other * n + cell] -= grid.c[axis][cell];
        }
      }
    }
  }
  return a;
}

/// The lower factor in the place of the matrix; on its diagonal the inverses, 0 for no pivot.
void factorise(std::size_t n, std::vector<double>& a) {
  for (std::size_t j = 0; j < n; ++j) {
    const double whole = a[j * n + j];
    double pivot = whole;
    for (std::size_t m = 0; m < j; ++m) pivot -= a[j * n + m] * a[j * n + m];
    const double inverse = pivot > kNoPivot * whole ? 1.0 / std::sqrt(pivot) : 0.0;
    a[j * n + j] = inverse;
    for (std::size_t i = j + 1; i < n; ++i) {
      double sum = a[i * n + j];
      for (std::size_t m = 0; m < j; ++m) sum -= a[i * n + m] * a[j * n + m];
      a[i * n + j] = sum * inverse;
    }
  }
}

}  // namespace

AmgDirect::AmgDirect(const AmgGrid& grid)
    : nx_(static_cast<std::size_t>(grid.n[0])), n_(grid.size()), inverse_(n_ * n_, 0.0) {
  std::vector<double> a = dense(grid);
  factorise(n_, a);
  std::vector<double> x(n_);
  for (std::size_t column = 0; column < n_; ++column) {
    for (std::size_t i = 0; i < n_; ++i) {
      double sum = i == column ? 1.0 : 0.0;
      for (std::size_t m = 0; m < i; ++m) sum -= a[i * n_ + m] * x[m];
      x[i] = sum * a[i * n_ + i];
    }
    for (std::size_t i = n_; i-- > 0;) {
      double sum = x[i];
      for (std::size_t m = i + 1; m < n_; ++m) sum -= a[m * n_ + i] * x[m];
      x[i] = sum * a[i * n_ + i];
    }
    for (std::size_t i = column; i < n_; ++i) {
      inverse_[i * n_ + column] = inverse_[column * n_ + i] = x[i];
    }
  }
}

void AmgDirect::solve(std::size_t natural, std::vector<double>& work, float* between) const {
  for (std::size_t cell = 0; cell < n_; ++cell) {
    float* row = between + cell / nx_ * natural;
    work[cell] = double{row[cell % nx_]};
    // What stands behind the end belongs to the last cell.
    if (cell % nx_ + 1 == nx_ && nx_ < natural) work[cell] += double{row[nx_]};
  }
  for (std::size_t cell = 0; cell < n_; ++cell) {
    double sum = 0.0;
    for (std::size_t m = 0; m < n_; ++m) sum += inverse_[cell * n_ + m] * work[m];
    float* row = between + cell / nx_ * natural;
    row[cell % nx_] = static_cast<float>(sum);
    if (cell % nx_ + 1 == nx_ && nx_ < natural) row[nx_] = static_cast<float>(sum);
  }
}

}  // namespace flow
