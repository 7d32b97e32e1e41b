// tsrf_module_grdindx: the place of the model's area in the grid (group DUMMYGRID).
#pragma once

#include <cstdint>

#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace tsrf_module_grdindx {

struct Data {
  std::int32_t NXF = 0;   ///< global x index of the first cell of the model's area
  std::int32_t NYF = 0;   ///< the same for y
  std::int32_t NXB = -1;  ///< for the boundary part; negative takes NXF
  std::int32_t NYB = -1;  ///< negative takes NYF
  double DXF = 0.0;       ///< read and dropped
  std::int32_t ox = 0;    ///< NXF - ixs + 1: offset of local x indices
  std::int32_t oy = 0;    ///< NYF - iys + 1
};

/// Reads group DUMMYGRID; `ixs`, `iys` are the first cell indices of this process.
void inputdata(frame::Log& log, frame::TextInput& control, std::int32_t ixs, std::int32_t iys,
               Data& data);

}  // namespace tsrf_module_grdindx
