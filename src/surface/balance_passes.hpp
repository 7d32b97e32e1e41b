// Newton's method for the surface balance (surface/heat_balance.hpp), over stretches of patches.
//
// Patches go through a block at a time, which stays in the nearest caches: taken from the run's
// arrays, brought to their ends in chunks that fill the processor's registers, and handed back. Dry
// patches need no humidity; the wet ones of a block that has both are drawn together first.
#pragma once

#include <cstddef>
#include <span>

#include "frame/instruction_set.hpp"
#include "inputs/srfprp.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_therm1d {

/// The run's arrays, as far as the balance takes part in them.
struct Arrays {
  const tsrf_module_srfprp::Data& srfprp;
  std::span<const double> skyvf, Rl, Rs;
  tsrf_module_data::Data& state;
};

/// How patches came out: the first with an implausible temperature and the first whose search has
/// not come to rest; the number of all patches where there is none.
struct Verdict {
  std::size_t implausible;
  std::size_t unsettled;
};

/// Solves the patches from `first` to before `last`.
using Solve = Verdict (*)(const Arrays& arrays, std::size_t first, std::size_t last);
Solve solve_for(frame::InstructionSet set);

}  // namespace tsrf_therm1d
