// The coarsest level of the multigrid solver: a few cells, solved at once.
//
// Used by flw_amgcg.
#pragma once

#include <vector>

#include "flow/linear/amg_grid.hpp"

namespace flow {

/// The inverse of a grid's matrix, by Cholesky's factor. Of cells that nothing holds, a part that
/// is coupled to no other, one keeps the value 0: the others have what they are above it.
class AmgDirect {
 public:
  AmgDirect() = default;
  explicit AmgDirect(const AmgGrid& grid);

  /// Solves for the right side in `between`, rows of `natural` numbers, and leaves the solution
  /// there.
  void solve(std::size_t natural, std::vector<double>& work, float* between) const;

  [[nodiscard]] std::size_t cells() const { return n_; }

 private:
  std::size_t nx_ = 0;
  std::size_t n_ = 0;
  std::vector<double> inverse_;
};

}  // namespace flow
