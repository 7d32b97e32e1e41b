#include "inputs/grid_index.hpp"

#include <string>
#include <vector>

#include "frame/namelist.hpp"

namespace tsrf_module_grdindx {

namespace {

frame::Group group_of(Data& data) {
  const frame::Check not_negative = [&data]() -> std::vector<std::string> {
    if (data.NXF >= 0 && data.NYF >= 0) return {};
    return {frame::items("nxf,nyf =", data.NXF, data.NYF), "they must be >= 0"};
  };
  return {"DUMMYGRID",
          {{"NXF", data.NXF, not_negative},
           {"NYF", data.NYF},
           {"NXB", data.NXB},
           {"NYB", data.NYB},
           {"DXF", data.DXF}}};
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, std::int32_t ixs, std::int32_t iys,
               Data& data) {
  const frame::Tag tag(log, "(tsrf_module_grdindx)(inputdata)");
  group_of(data).read(log, control);
  if (data.NXB < 0) data.NXB = data.NXF;
  if (data.NYB < 0) data.NYB = data.NYF;
  data.ox = data.NXF - (ixs - 1);
  data.oy = data.NYF - (iys - 1);
}

}  // namespace tsrf_module_grdindx
