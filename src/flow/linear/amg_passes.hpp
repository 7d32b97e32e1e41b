// The passes of a cycle over the cells of a level: down to the coarser level and up from it.
//
// Each goes through memory once. The steps of a pass follow one another row by row, each one layer
// behind the step before it, which is when the neighbours that it needs are ready and still near.
// The way down of the finest level begins with the step of the conjugate gradient, the way up ends
// with the product with the matrix: an iteration goes twice through the finest level.
//
// Behind the last sweep of the way down the residual of the black cells is 0 and is left out.
// Used by flw_amgcg.
#pragma once

#include <array>

#include "flow/linear/amg_level.hpp"
#include "flow/linear/diagonals.hpp"
#include "flow/linear/instruction_set.hpp"

namespace flow {

/// What the conjugate gradient carries on the finest level.
struct AmgVectors {
  float* x = nullptr;  ///< what was found since the solution took it up
  float* p = nullptr;  ///< direction
  float* s = nullptr;  ///< A p
  float* w = nullptr;  ///< A z
};

/// The system in double precision, in the slots of the finest level.
struct AmgExact {
  std::array<Values, 3> c;  ///< couplings, also those of wrapped rows
  Values d;
  Values b, x;    ///< right side, solution
  Floats weight;  ///< 1/diagonal, by which a residual counts; 0 for cells that do not
};

/// A step: p = z + beta p, s = A z + beta s, x += alpha p, r -= alpha s.
struct AmgStep {
  enum class Kind {
    none,     ///< coarse levels: r is what came down
    begin,    ///< r stands already
    first,    ///< beta is 0; x, p and s hold nothing
    renewed,  ///< x holds nothing
    next,
  };
  Kind kind = Kind::none;
  bool alone = false;  ///< nothing goes down behind the step
  double alpha = 0.0;
  double beta = 0.0;
  AmgVectors of{};
};

/// Sums of a layer, by lanes.
struct alignas(64) AmgSums {
  std::array<double, kAmgLanes> norm{};  ///< r r/diagonal
  std::array<double, kAmgLanes> rz{};
  std::array<double, kAmgLanes> zaz{};
};

struct AmgPasses {
  /// The step, the smoothing from a start of 0, and the residual summed into coarse.between.
  /// `sums` holds one for each layer; its norms are set unless the step is `none`.
  void (*down)(AmgLevel& level, AmgLevel& coarse, const AmgStep& step, AmgSums* sums);
  /// Corrects z by coarse.between and smooths in the opposite order. With `w` set it becomes A z
  /// and the other two sums are set; else z goes to level.between.
  void (*up)(AmgLevel& level, const AmgLevel& coarse, float* w, AmgSums* sums);
  /// exact.x += taken * found, unless that is null; r = (b - A x)/scale. The sums of the squares of
  /// b - A x by weight go to `norms`, kLanes for each layer.
  void (*renew)(AmgLevel& level, AmgExact& exact, double taken, const float* found, double scale,
                double* norms);
};

AmgPasses amg_passes(InstructionSet set);

}  // namespace flow
