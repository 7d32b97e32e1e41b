// flw_prep_init: the first fields of a run.
//
// They are uniform, or come from a coarser (or equal) mesh, or continue a run from its restart
// file, as `iters` says. Called once by the start-up.
#pragma once

#include <cstdint>
#include <string>

#include "flow/run.hpp"
#include "frame/log.hpp"

namespace flow {

/// The fields of a run, with their sizes.
State make_state(frame::Log& log, const Box& box, const Control& control, std::size_t ns);

/// A file of sets: as the user named it, and where it is.
struct SetFile {
  std::string name, path;
};

/// Fills the fields of `run.state`, halos included, its clock and its thermodynamic pressure; k
/// and epsilon are held above their lower limits. Prepares the step in between, as the fluxes of a
/// uniform start need the density; they are put on their conditions at once. Returns the bytes of
/// the restart file that the run keeps: 0 unless it goes on from a set in it.
std::uint64_t flw_prep_init(frame::Log& log, Run& run, const SetFile& restart,
                            const SetFile& initial);

}  // namespace flow
