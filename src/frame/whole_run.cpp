#include "frame/whole_run.hpp"

#include <array>
#include <cstdint>
#include <cstdio>
#include <new>
#include <ostream>

#include "frame/floating_point.hpp"

namespace frame {

namespace {

/// The rank as four digits.
std::string rank_text(std::int32_t myrank) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%04d", myrank);
  return text.data();
}

void open_log(Log& log, const ProcessLayer& layer, const UnitTable& units) {
  if (layer.nprocs < 1) {
    log.use_screen();
    return;
  }
  log.open(units.path_of("log" + rank_text(layer.myrank)));
}

/// The sizes stand on the first line of `control`.
void check_size(Log& log, const TextInput& control, const char* name, std::int32_t value) {
  if (value >= 1) return;
  attempt_at(log, control, 0, [&] {
    log.fail("### data error (flw_main00)",
             items("global " + std::string(name) + "(=", value, ") < 1"));
  });
}

void report_normal_end(Log& log) {
  log.line("%%% normaly terminated");
  if (!log.is_screen()) log.screen("%%% normaly terminated");
  log.flush();
}

int report_abnormal_end(Log& log, const ProcessLayer& layer) {
  log.line("(flw_main00)");
  log.line("### abnormaly terminated");
  log.flush();
  if (!log.is_screen()) log.screen("### abnormaly terminated");
  flw_m_abort(log, layer, 0);
  return kStatusAbnormal;
}

}  // namespace

GridSize read_grid_size(Log& log, TextInput& control) {
  GridSize size;
  control.rewind();
  if (control.read(size.mx, size.my, size.mz) != ReadStatus::ok ||
      control.read(size.ns) != ReadStatus::ok) {
    log.read_error(control, "### read error : control data");
  }
  check_size(log, control, "mx", size.mx);
  check_size(log, control, "my", size.my);
  check_size(log, control, "mz", size.mz);
  attempt(log, &control, [&] {
    if (size.ns < 1) log.fail("### data error (flw_main00)", items("ns(=", size.ns, ") < 1"));
    if (size.ns > kMostSpecies) {
      log.fail("### data error (flw_main00)",
               items("ns(=", size.ns, ") > ms(=", kMostSpecies, ")"));
    }
  });
  return size;
}

int whole_run(const Place& place, const Work& work) {
  const FlushDenormals mode;
  Log log(place.screen, place.errors);
  UnitTable units(place.directory);
  ProcessLayer layer;
  try {
    flw_m_init(log, layer);
    open_log(log, layer, units);
    try {
      work(log, units, layer);
      report_normal_end(log);
      flw_m_final(log, layer);
      return 0;
    } catch (const Failure&) {
      return report_abnormal_end(log, layer);
    } catch (const std::bad_alloc&) {
      log.line("### error : allocation failed");
      return report_abnormal_end(log, layer);
    }
  } catch (const Stop& stop) {
    return stop.status;
  }
}

}  // namespace frame
