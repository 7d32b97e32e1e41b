// What the city brings into the air of each cell: the drag of leaves, the heat and the vapour that
// surfaces and buildings give off.
//
// Filled at the start from the files of the surface model (mkofrac) and owned by the run; the drag
// is read by the momentum and turbulence steps, the rest by the temperature step. A field that no
// file asks for stays empty.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "flow/box.hpp"

namespace flow {

/// What a file tells of a cell at an hour.
using CityValues = std::array<double, 3>;

/// Values of some fluid cells at the hours of a file.
struct HourTable {
  std::vector<std::int32_t> hours;  ///< ascending
  std::vector<std::size_t> cells;   ///< places in a field, ascending
  std::vector<CityValues> values;   ///< hour by hour, the cells of each in their order

  [[nodiscard]] bool empty() const { return values.empty(); }
  /// The values of the hour at a place of `hours`.
  [[nodiscard]] const CityValues* at_hour(std::size_t place) const {
    return values.data() + place * cells.size();
  }
};

struct Urban {
  Field adrg;          ///< drag coefficient times leaf area, per volume of the cell [1/m]
  double TIME0 = 0.0;  ///< second of the day at time 0 of the run [s]
  /// tdrg of the surfaces in a cell, per volume of the cell: the sums of exchange coefficient times
  /// area [W/m3 K], of that times the surface's temperature [W/m3], and of the first times the
  /// surface's wetness [W/m3 K].
  HourTable tdrg;
  HourTable heat;  ///< of buildings, per volume of the cell: sensible and latent [W/m3], and 0

  /// Surfaces or buildings heat the air.
  [[nodiscard]] bool heats() const { return !tdrg.empty() || !heat.empty(); }
};

}  // namespace flow
