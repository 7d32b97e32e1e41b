#include "check/reading.hpp"

#include <algorithm>
#include <filesystem>
#include <span>

#include "buildings/aircon.hpp"
#include "buildings/rmheat.hpp"
#include "check/doubts.hpp"
#include "check/whole.hpp"
#include "driver/start_up.hpp"
#include "inputs/weather.hpp"
#include "inputs/wtrtmp.hpp"
#include "surface/fixed_temperature.hpp"
#include "trees/htrans.hpp"

namespace check {

namespace {

using tsrf_main01::Run;

constexpr std::int32_t kWide = 1 << 20;  // cells along an axis where the grid's size is not known

frame::TextInput& input(Run& run, int unit) { return run.desk.units.input(unit); }

/// The files of a repeating day's unit as they are called, before they are closed.
void note_names(Run& run, Parts& parts) {
  for (std::size_t i = 0; i < frame::kFiles; ++i) {
    const frame::FileRow& row = frame::kFileTable[i];
    parts.names[row.unit] = run.desk.units.has_input(row.unit)
                                ? input(run, row.unit).name()
                                : run.desk.units.path_of(parts.files[i]);
  }
}

void read_sizes(Run& run) {
  frame::GridSize& size = run.inputs.size;
  frame::attempt(run.desk.log, [&] {
    size = frame::read_grid_size(run.desk.log, input(run, frame::kUnitControl));
  });
  for (std::int32_t* cells : {&size.mx, &size.my, &size.mz}) {
    if (*cells < 1) *cells = kWide;
  }
}

void read_control(Run& run) {
  frame::Log& log = run.desk.log;
  read_sizes(run);
  frame::attempt(log, [&] { tsrf_main01::tsrf_read_cntdat(run.desk, run.inputs, run.trees); });
  if (!(run.inputs.control.dtmax > 0.0)) run.inputs.control.dtmax = 300.0;
  tsrf_main01::set_calendar(run);
  tsrf_main01::read_settings(run);
  frame::attempt(log, [&] { tsrf_main01::check_bands(log, run.radiation.raddat); });
}

/// The schedules of a month, or of the repeating day.
void read_schedules(Run& run) {
  frame::Log& log = run.desk.log;
  frame::TextInput& file = input(run, frame::kUnitRmHeat);
  const bool good =
      whole(run.desk.log, [&] { tsrf_module_rmheat::check_data(log, file, run.buildings.rmheat); });
  if (!good || log.findings().lost_any(file.name())) return;
  frame::attempt(log, [&] {
    run.buildings.aircon.rebuild = true;
    tsrf_module_aircon::set_aircon(log, file, run.buildings.rmheat, run.buildings.bldng.BldCD,
                                   run.buildings.bldng.Strct, run.buildings.aircon);
  });
}

void read_town(Run& run, Parts& parts) {
  frame::Log& log = run.desk.log;
  parts.materials = whole(run.desk.log, [&] {
    parts.patches = whole(run.desk.log, [&] {
      tsrf_main01::read_surfaces(run.desk, run.inputs, run.surface, run.trees);
    });
  });
  parts.whole_list = parts.patches;
  parts.patches = run.inputs.patch.mpatch > 0;
  if (!parts.patches) return;
  if (run.buildings.on()) {
    parts.rooms = whole(run.desk.log, [&] {
      tsrf_main01::read_buildings(run.desk, run.inputs, run.surface, run.buildings);
      if (!run.inputs.filnam.dated && run.buildings.rmheat.pairs.size() > 0) read_schedules(run);
    });
  }
  parts.materials =
      whole(run.desk.log, [&] { tsrf_main01::set_columns(run.desk, run.inputs, run.surface); }) &&
      parts.materials;
  parts.exchange = whole(run.desk.log, [&] {
    tsrf_main01::read_exchange(run.desk, run.inputs, run.surface, run.radiation);
  });
  frame::attempt(log, [&] {
    tsrf_module_fixtmp::read_fixtmp(log, run.inputs.patch, run.surface.fixtmp);
    if (parts.materials && (parts.rooms || !run.buildings.on())) {
      tsrf_module_fixtmp::calc_temp_farbd(log, run.inputs.patch, run.surface.data,
                                          run.surface.fixtmp);
    }
  });
  frame::attempt(log, [&] {
    frame::TextInput& water = input(run, frame::kUnitWaterTemp);
    tsrf_module_wtrtmp::read_wtrtmp(log, water, run.inputs.patch, run.inputs.wtrtmp);
    if (run.inputs.wtrtmp.PID.empty() || run.inputs.wtrtmp.settings.LWTRTMP < 1) return;
    tsrf_module_wtrtmp::check_data(log, water, run.inputs.patch, run.inputs.wtrtmp);
  });
  frame::attempt(log, [&] { tsrf_main01::read_plan_trees(run); });
  if (parts.materials && (parts.rooms || !run.buildings.on())) {
    frame::attempt(log, [&] {
      tsrf_main01::prepare_columns(run.desk, run.inputs, run.surface, run.buildings);
      if (run.buildings.on()) {
        tsrf_building::warn_of_step(log, run.inputs.control.dtmax, run.buildings.bldng.settings);
      }
    });
  }
}

void read_canopy(Run& run, Parts& parts) {
  frame::Log& log = run.desk.log;
  if (run.inputs.size.mx == kWide || run.inputs.size.my == kWide || run.inputs.size.mz == kWide) {
    return;  // nothing can be held against a grid of unknown size
  }
  parts.canopy = whole(run.desk.log, [&] { tsrf_main01::read_canopy(run); });
  if (run.trees.cells.CALJMK) {
    // No leaf, but what is asked of all.
    frame::attempt(log, [&] { jmk_module_htrans::htrnscoef(log, run.trees.htrans, 1.0, {}, {}); });
  }
  frame::attempt(log, [&] {
    tsrf_main01::tsrf_dummyb(log, input(run, frame::kUnitPorous),
                             {run.inputs.size.mx, run.inputs.size.my, run.inputs.size.mz},
                             run.inputs.porous);
  });
}

/// Each month of a dated run: what changes with it, and the sun of its days.
void read_months(Run& run, Parts& parts) {
  frame::Log& log = run.desk.log;
  const auto [first, last] = run.inputs.filnam.MONTHS;
  for (std::int32_t month = first; month <= last; ++month) {
    const bool opened = frame::attempt(log, [&] { tsrf_main01::load_month(run, month); });
    if (run.buildings.on() && opened && run.buildings.rmheat.pairs.size() > 0) {
      read_schedules(run);
      if (parts.rooms) frame::attempt(log, [&] { doubt_set_points(run); });
    }
    const auto& months = run.radiation.shade.settings.MONTHS;
    if (!parts.patches || month < months[0] || month > months[1]) continue;
    tsrf_module_shade::PackedMonth packed;
    const bool read = whole(log, [&] {
      tsrf_module_shade::read_mltday(log, run.desk.crew, month, run.inputs.patch,
                                     run.radiation.shade, packed);
    });
    if (read) parts.months.push_back({month, packed.times, lit_blocks(packed)});
  }
}

}  // namespace

Parts read_run(Run& run) {
  Parts parts;
  frame::Log& log = run.desk.log;
  frame::UnitTable& units = run.desk.units;
  const bool listed = frame::attempt(log, [&] {
    units.open_input(log, frame::kUnitFileName, "file_name");
    frame::read_file_table(log, units, run.inputs.filnam);
  });
  if (!listed) return parts;
  units.input(frame::kUnitFileName).rewind();
  for (std::string& name : parts.files) {
    std::string_view line;
    units.input(frame::kUnitFileName).next_line(line);
    name = line.substr(0, line.find_last_not_of(" \t") + 1);
  }
  note_names(run, parts);
  if (log.findings().lost_file(parts.names[frame::kUnitControl])) return parts;
  parts.settings = true;
  read_control(run);
  read_town(run, parts);
  if (parts.patches) read_canopy(run, parts);
  parts.weather = whole(run.desk.log, [&] {
    tsrf_module_weather::check_data(log, input(run, frame::kUnitWeather), run.inputs.weather);
  });
  if (run.inputs.filnam.dated) {
    read_months(run, parts);
    return parts;
  }
  if (parts.rooms) frame::attempt(log, [&] { doubt_set_points(run); });
  if (parts.patches && units.has_input(frame::kUnitSun)) {
    parts.sun = whole(run.desk.log, [&] {
      parts.blocks = tsrf_module_shade::survey(log, run.desk.crew, input(run, frame::kUnitSun),
                                               run.inputs.patch, run.radiation.shade);
    });
  }
  return parts;
}

}  // namespace check
