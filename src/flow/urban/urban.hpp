// What the city brings into the air of each cell: the drag of leaves, the heat and the vapour that
// surfaces and buildings give off.
//
// Filled at the start from the files of the surface model (mkofrac) and owned by the run; the drag
// is read by the momentum and turbulence steps, the rest by the temperature step. A field that no
// file asks for stays empty.
#pragma once

#include "flow/box.hpp"

namespace flow {

struct Urban {
  Field adrg;  ///< drag coefficient times leaf area, per volume of the cell [1/m]
};

}  // namespace flow
