// The passes of a cycle over the cells of a level: down to the coarser level and up from it.
//
// Each goes through memory once. The steps of a pass follow one another row by row, each one layer
// behind the step before it, which is when the neighbours that it needs are ready and still near.
// The way down of the finest level begins with the step of the conjugate gradient, the way up ends
// with the product with the matrix: an iteration goes twice through the finest level.
//
// So within a turn of a pass, in which each step has the layer behind that of the step before, rows
// do not depend on one another: the hands of a crew share them, and meet before the next turn.
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

/// Sums of a row, by lanes.
struct alignas(64) AmgRowSums {
  std::array<float, kAmgLanes> norm, rz, zaz;
};

/// Part of a turn of a pass: the rows of some bundles, `first` up to, not including, `last`.
struct AmgPart {
  std::size_t turn;
  std::size_t first, last;
  AmgRowSums* sums;  ///< for each row of a layer; null on coarse levels
};

struct AmgPasses {
  /// The step, the smoothing from a start of 0, and the residual summed into coarse.between. The
  /// norms of the rows of layer `turn` are set unless the step is `none`.
  void (*down)(AmgLevel& level, AmgLevel& coarse, const AmgStep& step, const AmgPart& part);
  /// Corrects z by coarse.between and smooths in the opposite order. With `w` set it becomes A z
  /// and the other two sums are set, of the layer that is last; else z goes to level.between.
  void (*up)(AmgLevel& level, const AmgLevel& coarse, float* w, const AmgPart& part);
  /// exact.x += taken * found in some layers.
  void (*take)(const AmgLevel& level, AmgExact& exact, double taken, const float* found,
               std::size_t first, std::size_t last);
  /// r = (b - A x)/scale in some layers; before that what `take` does in these, if `found` is not
  /// null: then they have to be all. The sums of the squares of b - A x by weight go to `norms`,
  /// kLanes for each layer.
  void (*renew)(AmgLevel& level, AmgExact& exact, double taken, const float* found, double scale,
                double* norms, std::size_t first, std::size_t last);
};

/// Turns that a pass takes.
inline std::size_t turns_down(const AmgLevel& level, bool alone) {
  const std::int32_t turns = level.n[2] + (alone ? 0 : level.sweeps);
  return static_cast<std::size_t>(turns);
}
inline std::size_t turns_up(const AmgLevel& level) {
  const std::int32_t turns = level.n[2] + level.sweeps + 1;
  return static_cast<std::size_t>(turns);
}

AmgPasses amg_passes(InstructionSet set);

}  // namespace flow
