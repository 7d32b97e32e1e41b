// Probes in the beam: what leaves left of it where the patches beyond the canopy lie.
//
// A sweep keeps the faces of one layer at a time, so each layer is read before the next one goes
// over it.
#pragma once

#include <cstdint>

#include "inputs/patch.hpp"
#include "trees/canopy.hpp"
#include "trees/radiat.hpp"

namespace jmk {

/// Lists the patches that leaves may shade, by layer: all but the tree patches and those above the
/// highest leaves.
void place_probes(const tsrf_module_patch::Data& patch, tsrf_module_jumoku::Data& data);

/// Takes what the beam has left for the patches of layer `k` (from 0) into data.beam.left.
void read_probes(const jmk_module_radiat::Optics& optics, std::int32_t k,
                 tsrf_module_jumoku::Data& data);

}  // namespace jmk
