#include "driver/account_step.hpp"

#include <cmath>

#include "account/exchange.hpp"
#include "account/leaves.hpp"
#include "account/patches.hpp"
#include "account/rooms.hpp"
#include "account/statement.hpp"
#include "driver/result_files.hpp"

namespace tsrf_main01 {

namespace {

namespace account = tsrf_module_account;

constexpr std::string_view kName = "account";

account::Rooms rooms_of(const Buildings& buildings) {
  return {buildings.bldng, buildings.aircon, buildings.rooms};
}

/// The days that lie behind a time; a step that ends within half a second of midnight closes one.
double days_behind(double time) {
  return std::floor((time + 0.5) / tsrf_module_calendar::kSecondsPerDay);
}

/// The date of a day, for its heading in a dated run.
std::string date_of(Desk& desk, Inputs& inputs, double time) {
  if (!inputs.filnam.dated) return {};
  const auto date = tsrf_module_calendar::sec2date(desk.log, inputs.calendar, time);
  const auto part = [&](std::size_t n) { return std::lround(date.at(n)); };
  return frame::items("year", part(0), "month", part(1), "day", part(2));
}

}  // namespace

void check_account_name(Run& run) {
  if (!run.account.on()) return;
  frame::check_account_name(run.desk.log, run.desk.units, run.inputs.filnam,
                            run.account.settings_place);
  if (!run.desk.log.collects()) return;
  frame::attempt(run.desk.log,
                 [&] { run.desk.units.check_output(run.desk.log, std::string(kName)); });
}

void prepare_account(Run& run) {
  account::Data& data = run.account;
  if (!data.on()) return;
  frame::Log& log = run.desk.log;
  const frame::Tag tag(log, "(prepare_account)");
  run.desk.units.open_output(log, frame::kUnitAccount, std::string(kName));
  const Surface& surface = run.surface;
  account::prepare_patches(log,
                           {run.inputs.patch, run.inputs.lyrstrct, run.inputs.matprp,
                            run.inputs.srfprp, surface.data, surface.glass},
                           run.inputs.control.dtmax, data);
  account::prepare_exchange(log, run.radiation.raddat, surface.data.skyvf0, data);
  if (run.buildings.on()) {
    account::prepare_rooms(log, run.inputs.patch, surface.data, rooms_of(run.buildings), data);
  }
  if (run.trees.cells.CALJMK) account::prepare_leaves(log, run.trees.canopy, data);
  account::clear(data);
}

void note_account(Run& run, double time) {
  account::Data& data = run.account;
  if (!data.on()) return;
  run.desk.accounts.start(run.desk.log, kName);
  account::note_patches(run.desk.crew, run.surface.data, data);
  account::note_exchange(run.radiation.raddat, data);
  account::note_rooms(run.buildings.bldng, data);
  if (!data.open) data.from = time;
  data.open = true;
  run.desk.accounts.end(run.desk.log, kName);
}

namespace {

/// Adds a step to the day.
void add_step(Run& run, double time, double dt) {
  account::Data& data = run.account;
  const tsrf_module_patch::Data& patch = run.inputs.patch;
  const tsrf_module_data::Data& state = run.surface.data;
  const Incident& step = run.radiation.incident;
  const account::Radiation radiation{run.radiation.sky, step.Rl, step.Rs, step.Jdir};
  frame::Crew& crew = run.desk.crew;
  account::add_surfaces(crew, patch, run.inputs.srfprp, state, radiation, dt, data);
  account::add_columns(patch, run.inputs.srfprp, state, radiation, dt, data);
  account::add_exchange(crew, patch, run.radiation.raddat, run.radiation.work.radref, dt, data);
  if (run.buildings.on()) {
    account::add_rooms(patch, state, rooms_of(run.buildings), time, dt, data);
  }
  if (run.trees.cells.CALJMK) {
    account::add_leaves(crew, patch, run.trees, run.radiation.raddat, radiation, dt, data);
  }
  data.seconds += dt;
}

/// Writes the day, and begins another with the next step.
void close_day(Run& run) {
  account::Data& data = run.account;
  account::add_stored(run.desk.crew, run.inputs.patch, run.surface.data, data);
  data.leaf_area = account::leaf_area(run.trees.canopy);
  account::write_day(run.desk.log, run.desk.units.output(frame::kUnitAccount),
                     date_of(run.desk, run.inputs, data.from), data);
  account::clear(data);
}

}  // namespace

void add_to_account(Run& run, double time, double dt, bool run_ends) {
  if (!run.account.on()) return;
  run.desk.accounts.start(run.desk.log, kName);
  add_step(run, time, dt);
  if (run_ends || days_behind(time + dt) > days_behind(time)) close_day(run);
  run.desk.accounts.end(run.desk.log, kName);
}

}  // namespace tsrf_main01
