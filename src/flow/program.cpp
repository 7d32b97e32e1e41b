#include "flow/program.hpp"

#include <memory>

#include "flow/main01.hpp"

namespace flow {

int run_program(const frame::Place& place) {
  return frame::whole_run(place, [&](frame::Log& log, frame::UnitTable& units,
                                     frame::ProcessLayer& layer) {
    const FileNames names = read_file_names(log, units);
    const frame::GridSize size = frame::read_grid_size(log, units.input(frame::kUnitControl));
    Desk desk{log, units, layer, names, size, place.errors_is_terminal ? &place.errors : nullptr};
    const auto run = std::make_unique<Run>(frame::hands_wanted(log));
    flw_main01(desk, *run);
    units.flush_outputs(log);
  });
}

}  // namespace flow
