// The layers of building surfaces (part of tsrf_module_lyrstrct).
//
// Stands with the buildings, because it also ties each surface to its building. Called once at the
// start, behind the ground and the Building file.
#pragma once

#include "buildings/bldng.hpp"
#include "frame/log.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/matprp.hpp"
#include "inputs/patch.hpp"

namespace tsrf_module_lyrstrct {

/// Gives each building surface (type 1) its material, its building and the layers of its wall, each
/// cut into equal cells of about `dz` [m]. Every building must have a surface, and one of a
/// material with `pos` 1, which carries its heat capacity.
void lyrstrct_set_bldng(frame::Log& log, double dz, const tsrf_module_patch::Data& patch,
                        const tsrf_module_matprp::Data& matprp,
                        const tsrf_module_bldng::Data& bldng, Data& data);

}  // namespace tsrf_module_lyrstrct
