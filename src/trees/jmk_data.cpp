#include "trees/jmk_data.hpp"

#include "frame/namelist.hpp"
#include "trees/jmk_group.hpp"

namespace jmk_module_data {

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(jmk_module_data)(inputdata)");
  frame::Group group("JMK_DATA", {{"CALJMK", data.CALJMK}});
  group.read(log, control, jmk::kReader);
}

}  // namespace jmk_module_data
