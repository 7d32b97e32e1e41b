#include "driver/flw_main00.hpp"

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <ostream>

#include "driver/file_table.hpp"
#include "driver/progress.hpp"
#include "driver/result_files.hpp"
#include "driver/run.hpp"
#include "driver/tsrf_main01.hpp"
#include "frame/floating_point.hpp"
#include "frame/log.hpp"
#include "frame/process_layer.hpp"
#include "frame/unit_table.hpp"

namespace flw_main00 {

namespace {

constexpr std::int32_t kMostSpecies = 2;

/// The rank as four digits.
std::string rank_text(std::int32_t myrank) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%04d", myrank);
  return text.data();
}

void open_log(frame::Log& log, const frame::ProcessLayer& layer, const frame::UnitTable& units) {
  if (layer.nprocs < 1) {
    log.use_screen();
    return;
  }
  log.open(units.path_of("log" + rank_text(layer.myrank)));
}

void check_size(frame::Log& log, const char* name, std::int32_t value) {
  if (value >= 1) return;
  log.fail("### data error (flw_main00)",
           frame::items("global " + std::string(name) + "(=", value, ") < 1"));
}

/// The grid's sizes and the number of species: the first two records of the control data.
tsrf_main01::GridSize read_grid_size(frame::Log& log, frame::TextInput& control) {
  tsrf_main01::GridSize size;
  std::int32_t ns = 0;
  control.rewind();
  if (control.read(size.mx, size.my, size.mz) != frame::ReadStatus::ok ||
      control.read(ns) != frame::ReadStatus::ok) {
    log.read_error(control, "### read error : control data");
  }
  check_size(log, "mx", size.mx);
  check_size(log, "my", size.my);
  check_size(log, "mz", size.mz);
  if (ns < 1) log.fail("### data error (flw_main00)", frame::items("ns(=", ns, ") < 1"));
  if (ns > kMostSpecies) {
    log.fail("### data error (flw_main00)",
             frame::items("ns(=", ns, ") > ms(=", kMostSpecies, ")"));
  }
  return size;
}

/// Everything between the opening of the log and the final message.
void whole_run(const Place& place, frame::Log& log, frame::UnitTable& units,
               frame::ProcessLayer& layer) {
  units.open_input(log, frame::kUnitFileName, "file_name");
  // The modules may be large; they live on the heap and go with this call.
  const auto run =
      std::make_unique<tsrf_main01::Run>(tsrf_main01::Desk{log, units, layer, frame::Accounts{}});
  if (place.errors_is_terminal) run->desk.terminal = &place.errors;
  frame::read_file_table(log, units, run->inputs.filnam);
  units.close(frame::kUnitFileName);
  run->inputs.size = read_grid_size(log, units.input(frame::kUnitControl));
  tsrf_main01::tsrf_main01(*run);
  units.flush_outputs(log);
  frame::report_results(log, units);
  progress::write_closing_stamp(log, units.output(frame::kUnitProgressLog), run->progress);
}

void report_normal_end(frame::Log& log) {
  log.line("%%% normaly terminated");
  if (!log.is_screen()) log.screen("%%% normaly terminated");
  log.flush();
}

int report_abnormal_end(frame::Log& log, const frame::ProcessLayer& layer) {
  log.line("(flw_main00)");
  log.line("### abnormaly terminated");
  log.flush();
  if (!log.is_screen()) log.screen("### abnormaly terminated");
  frame::flw_m_abort(log, layer, 0);
  return frame::kStatusAbnormal;
}

}  // namespace

int run(const Place& place) {
  const frame::FlushDenormals mode;
  frame::Log log(place.screen, place.errors);
  frame::UnitTable units(place.directory);
  frame::ProcessLayer layer;
  try {
    frame::flw_m_init(log, layer);
    open_log(log, layer, units);
    try {
      whole_run(place, log, units, layer);
      report_normal_end(log);
      frame::flw_m_final(log, layer);
      return 0;
    } catch (const frame::Failure&) {
      return report_abnormal_end(log, layer);
    } catch (const std::bad_alloc&) {
      log.line("### error : allocation failed");
      return report_abnormal_end(log, layer);
    }
  } catch (const frame::Stop& stop) {
    return stop.status;
  }
}

}  // namespace flw_main00
