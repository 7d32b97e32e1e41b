// Any bytes as the control data of the flow: settings that a run can live with, or a reported
// fault.
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "flow/ambient.hpp"
#include "flow/input/control.hpp"
#include "frame/whole_run.hpp"

namespace {

void expect(bool holds) {
  if (!holds) std::abort();
}

void read(frame::Log& log, frame::TextInput& file) {
  const frame::GridSize size = frame::read_grid_size(log, file);
  const flow::Triple cells{size.mx, size.my, size.mz};
  flow::Control control = flow::flw_read_cntdat(log, file, size.ns);
  const flow::Species species = flow::flw_read_spcies(log, file, size.ns);
  const flow::HistoryPoints history = flow::flw_read_hstpnt(log, file, cells);
  const flow::ShortRecords records = flow::read_short_records(log, file);
  flow::Ambient ambient = flow::ambient_state(log, control, species);
  expect(control.iters <= control.itere && control.smaller.dtmax > 0.0);
  expect(control.implicit() || control.smaller.dtsafe <= 1.0);
  expect(control.iters >= 0 || control.start.ys.size() == species.count());
  expect(control.ambient.ys.size() == species.count());
  expect(ambient.density > 0.0 && std::isfinite(ambient.density) && ambient.aklw >= 0.0);
  for (const flow::Triple& at : history.points) {
    for (std::size_t axis = 0; axis < 3; ++axis) expect(at[axis] >= 1 && at[axis] <= cells[axis]);
  }
  flow::chk_bc_exnr(log, records, ambient);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  std::ostringstream screen;
  frame::Log log(screen, screen);
  frame::TextInput file("fuzz", std::string(reinterpret_cast<const char*>(data), size));
  try {
    read(log, file);
  } catch (const frame::Failure&) {
    expect(screen.str().find("### ") != std::string::npos);
  } catch (const frame::Stop&) {
    expect(screen.str().find("### program error") != std::string::npos);
  }
  return 0;
}
