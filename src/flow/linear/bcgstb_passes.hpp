// The passes over memory that an iteration of Bi-CGSTAB takes.
//
// As in iccg_passes.hpp, a substitution goes together with what stands before or behind it: the
// forward sweep with the vector that it starts from, the backward sweep with the product, one layer
// behind. Used by flw_bcgstb.
#pragma once

#include <array>
#include <cstddef>

#include "flow/linear/diagonals.hpp"
#include "flow/linear/instruction_set.hpp"

namespace flow {

/// What the passes work on. All couplings of a row stand at its point.
struct BcgstbArrays {
  const DiagonalRow* rows = nullptr;
  std::size_t row_count = 0;
  std::size_t layers = 0;
  std::size_t layer = 0;  ///< slots of a layer
  std::size_t nu = 0, nv = 0;
  std::array<const double*, 3> lower{}, upper{};  ///< couplings along u, v, w
  const double* d = nullptr;                      ///< factor
  /// Couplings of the points (u, 0) and (u, last) with each other; null: v does not repeat itself.
  /// The factor does not know them.
  const double* wrap_lower = nullptr;
  const double* wrap_upper = nullptr;
};

/// Sums by lanes.
struct alignas(64) BcgstbSums {
  std::array<double, kLanes> norm{}, with{};
};

struct BcgstbPasses {
  /// p = r + beta (p - omega v); y = the forward sweep of p.
  void (*direct)(const BcgstbArrays& arrays, double beta, double omega, const double* r,
                 const double* v, double* p, double* y);
  /// r -= alpha v; z = the forward sweep of r.
  void (*reduce)(const BcgstbArrays& arrays, double alpha, const double* v, double* r, double* z);
  /// The backward sweep of z; q = A z. Collects q q as `norm` and q f as `with`.
  void (*backward)(const BcgstbArrays& arrays, double* z, double* q, const double* f,
                   BcgstbSums& sums);
  /// q = A z.
  void (*product)(const BcgstbArrays& arrays, const double* z, double* q);
  /// x += alpha y + omega z; r -= omega t. Collects r r, or the largest |r|, and r f as `with`.
  void (*advance)(const BcgstbArrays& arrays, double alpha, double omega, bool largest,
                  std::array<const double*, 4> yztf, double* x, double* r, BcgstbSums& sums);
};

BcgstbPasses bcgstb_passes(InstructionSet set);

}  // namespace flow
