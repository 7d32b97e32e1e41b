// The two passes over memory that an iteration of the conjugate gradient takes.
//
// A plain iteration reads and writes its vectors once for each of its steps. Here the backward
// sweep, the new direction, the pending part of the solution and the product with the matrix go
// through memory together, the product one layer behind; and so do the new residual, its norm and
// the forward sweep. z and q take turns in one vector. With z = K^-T D^-1 y and y = K^-1 r, the sum
// of r z is the sum of y (K y - ...) over the forward sweep: of the residual behind the
// substitution times the swept value, so that it is known before the backward sweep starts.
// Used by flw_iccg.
#pragma once

#include <array>
#include <cstddef>

#include "flow/linear/diagonals.hpp"
#include "flow/linear/instruction_set.hpp"

namespace flow {

/// Couplings of the points (u, 0) and (u, last) of each layer where v repeats itself. A swept
/// point (u, last) waits for one more point than its row does: its factor stands here, and 0 among
/// the others.
struct Wrap {
  const double* coupling = nullptr;  ///< null: v does not repeat itself
  const double* factor = nullptr;
};

/// What the passes work on.
struct IccgArrays {
  const DiagonalRow* rows = nullptr;
  std::size_t row_count = 0;
  std::size_t layers = 0;
  std::size_t layer = 0;  ///< slots of a layer
  std::size_t nu = 0, nv = 0;
  std::array<const double*, 3> a{};  ///< coupling with the point at u - 1, v - 1, w - 1
  const double* d = nullptr;         ///< factor
  Wrap wrap;
  double* x = nullptr;
  double* r = nullptr;
  double* p = nullptr;
  double* y = nullptr;  ///< q = A p, then the swept residual
};

/// Sums by lanes, and those of the points of `Wrap`.
struct alignas(64) IccgSums {
  std::array<double, kLanes> norm{}, rho{}, pq{};
  double rho_wrapped = 0.0, pq_wrapped = 0.0;
};

struct IccgPasses {
  /// r -= alpha q; y = the forward sweep of r. Collects the sum of r r, or the largest |r|, and
  /// rho.
  void (*forward)(const IccgArrays& arrays, double alpha, bool largest, IccgSums& sums);
  /// x += alpha p; p = z + beta p with z the backward sweep of y; q = A p. Collects p q.
  void (*backward)(const IccgArrays& arrays, double alpha, double beta, IccgSums& sums);
  /// q = A x, and nothing else.
  void (*product)(const IccgArrays& arrays);
};

IccgPasses iccg_passes(InstructionSet set);

}  // namespace flow
