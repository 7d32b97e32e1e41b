#include "flow/start_up.hpp"

#include "flow/ambient.hpp"
#include "flow/companions.hpp"
#include "flow/domains/list_cmmbnd.hpp"
#include "flow/input/control.hpp"
#include "flow/urban/mkofrac.hpp"
#include "flow/urban/porous.hpp"
#include "flow/urban/slits.hpp"

namespace flow {

namespace {

/// A file of the city, opened; null where the run has none. One that the run has no use for is
/// told and left alone.
frame::TextInput* city_file(Desk& desk, FileRow row, int unit, bool wanted, std::string_view why) {
  const std::string& name = desk.names[row];
  if (name.empty()) return nullptr;
  if (wanted) return &desk.units.open_input(desk.log, unit, name);
  desk.log.warn(title_of(row), "=", name, "is not used", why);
  return nullptr;
}

CityFiles open_city_files(Desk& desk, const Control& control) {
  const bool fractions = wants_fractions(desk.log, desk.units.input(frame::kUnitControl));
  need_name(desk.log, desk.names, kPorous, fractions, "with LVFRAC");
  constexpr std::string_view kNoHeat = "(itemp <= 0)";
  return {city_file(desk, kPorous, frame::kUnitPorous, fractions, "(LVFRAC = 0)"),
          city_file(desk, kSurfTemp, frame::kUnitSurfTemp, control.itemp, kNoHeat),
          city_file(desk, kBldLoad, frame::kUnitBldLoad, control.itemp, kNoHeat),
          city_file(desk, kLad, frame::kUnitLad, true, "")};
}

}  // namespace

void read_settings(Desk& desk, Settings& settings) {
  const frame::GridSize& size = desk.size;
  frame::TextInput& control = desk.units.input(frame::kUnitControl);
  settings.control = flw_read_cntdat(desk.log, control, size.ns);
  settings.species = flw_read_spcies(desk.log, control, size.ns);
  settings.history = flw_read_hstpnt(desk.log, control, {size.mx, size.my, size.mz});
  settings.records = read_short_records(desk.log, control);
  h18_eachtrm_cnstrctr();
}

void settle_settings(frame::Log& log, Settings& settings) {
  if (settings.control.itemp) check_specific_heat(log, settings.control, settings.species);
  settings.ambient = ambient_state(log, settings.control, settings.species);
}

Wanted wanted_files(frame::Log& log, const FileNames& names, const Settings& settings) {
  const Control& control = settings.control;
  const Wanted wanted{.sets = control.iters > 0 || !control.restart.none(),
                      .points = !settings.history.points.empty(),
                      .initial = control.iters == 0};
  need_name(log, names, kRestart, wanted.sets, "with iters > 0 or a schedule of restart output");
  need_name(log, names, kHistory, wanted.points, "with nhpnt > 0");
  need_name(log, names, kInitial, wanted.initial, "with iters = 0");
  return wanted;
}

void read_boundary(Desk& desk, Run& run) {
  const Triple cells{desk.size.mx, desk.size.my, desk.size.mz};
  Settings& settings = run.settings;
  frame::TextInput& file = desk.units.input(frame::kUnitBoundary);
  run.boundary = flw_read_bndcnd(desk.log, file, cells, settings.species, settings.ambient);
  chk_bc_exnr(desk.log, settings.records, settings.ambient);
  frame::TextInput* domain =
      desk.names[kDomain].empty() ? nullptr : &desk.units.input(frame::kUnitDomain);
  run.domains = flw_list_cmmbnd(desk.log, desk.layer, domain, file, cells);
  run.grid =
      flw_read_grid(desk.log, desk.units.input(frame::kUnitGrid), cells, run.boundary.periodic_y());
  for (int axis = 0; axis < 3; ++axis) {
    if (run.grid.box.computed(axis)) continue;
    settings.control.gravity[static_cast<std::size_t>(axis)] = 0.0;
  }
}

void list_and_check_faces(Desk& desk, Run& run) {
  const Slits slits = mkslits(desk.log, run.grid.box, run.boundary);
  const CityFiles files = open_city_files(desk, run.settings.control);
  run.openings = mkofrac(desk.log, desk.units.input(frame::kUnitControl), files, run.settings,
                         run.grid, run.boundary, run.urban);
  flw_prep_stiobs(run.boundary, run.openings);
  warn_of_narrow_cells(desk.log, run.openings);
  mkslit1(slits, run.openings);
  run.faces = list_faces(run.boundary, run.openings);
  flw_prep_ckbnd1(desk.log, run.boundary, run.openings, run.faces);
  flw_prep_ckbnd2(desk.log, run.boundary, run.openings.fluid, run.faces);
  close_faces(run.openings, run.boundary, run.faces);
  desk.log.line("no. of total cells=", run.grid.box.cells());
}

}  // namespace flow
