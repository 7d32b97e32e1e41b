#include "trees/jumoku_settings.hpp"

#include "frame/namelist.hpp"

namespace tsrf_module_jumoku {

void inputdata(frame::Log& log, frame::TextInput& control, Settings& settings) {
  const frame::Tag tag(log, "(tsrf_module_jumoku)(inputdata)");
  frame::Group group("TSRF_JUMOKU",
                     {{"NDIV", settings.NDIV, frame::positive("ndiv =", settings.NDIV)},
                      {"NSKIP_SUNDIR", settings.NSKIP_SUNDIR,
                       frame::positive("nskip_sundir =", settings.NSKIP_SUNDIR)}});
  group.read(log, control);
}

}  // namespace tsrf_module_jumoku
