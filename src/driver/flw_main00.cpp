#include "driver/flw_main00.hpp"

#include <memory>
#include <ostream>

#include "driver/file_table.hpp"
#include "driver/memory_report.hpp"
#include "driver/progress.hpp"
#include "driver/result_files.hpp"
#include "driver/run.hpp"
#include "driver/tsrf_main01.hpp"

namespace flw_main00 {

namespace {

void whole_run(const Place& place, frame::Log& log, frame::UnitTable& units,
               frame::ProcessLayer& layer) {
  units.open_input(log, frame::kUnitFileName, "file_name");
  frame::Crew crew(frame::hands_wanted(log));
  // The modules may be large; they live on the heap and go with this call.
  const auto run = std::make_unique<tsrf_main01::Run>(
      tsrf_main01::Desk{log, units, layer, crew, frame::Accounts{}});
  if (place.errors_is_terminal) run->desk.terminal = &place.errors;
  frame::read_file_table(log, units, run->inputs.filnam);
  units.close(frame::kUnitFileName);
  run->inputs.size = frame::read_grid_size(log, units.input(frame::kUnitControl));
  tsrf_main01::tsrf_main01(*run);
  units.flush_outputs(log);
  tsrf_main01::report_memory(*run);
  frame::report_results(log, units);
  progress::write_closing_stamp(log, units.output(frame::kUnitProgressLog), run->progress);
}

}  // namespace

int run(const Place& place) {
  return frame::whole_run(
      place, [&](frame::Log& log, frame::UnitTable& units, frame::ProcessLayer& layer) {
        whole_run(place, log, units, layer);
      });
}

}  // namespace flw_main00
