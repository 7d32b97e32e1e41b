#include "flow/input/fractions.hpp"

#include "frame/namelist.hpp"

namespace flow {

namespace {

/// True when fractions are wanted.
bool inputdata(frame::Log& log, frame::TextInput& control) {
  const frame::Tag tag(log, "(flw_module_fv)   (inputdata)");
  std::int32_t LVFRAC = 0;
  frame::Group group("VFRAC", {{"LVFRAC", LVFRAC}});
  const std::size_t place = control.tell();
  group.read(log, control);
  control.seek(place);
  return LVFRAC != 0;
}

}  // namespace

Openings mkofrac(frame::Log& log, frame::TextInput& control, const Box& box) {
  const bool wanted = inputdata(log, control);
  const frame::Tag tag(log, "(flw_module_fv)   (mkofrac)");
  if (wanted) log.fail("### error : volume fractions not available");
  Openings openings;
  frame::allocating(log, "open fractions", frame::bytes_of<double>(box.size(), 5),
                    [&] { openings = Openings(box); });
  return openings;
}

}  // namespace flow
