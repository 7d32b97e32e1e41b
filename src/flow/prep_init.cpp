#include "flow/prep_init.hpp"

#include <algorithm>
#include <numeric>

#include "flow/halo.hpp"
#include "flow/output/flow_set.hpp"
#include "flow/output/restart.hpp"
#include "flow/step.hpp"

namespace flow {

namespace {

constexpr std::string_view kHeading = "### error : initial file (flw_prep_init)";

void fill(Field& field, double value) { std::ranges::fill(field.all(), value); }

void set_uniform_scalars(const Control& control, State& state) {
  fill(state.t, control.start.t);
  const double sum = std::accumulate(control.start.ys.begin(), control.start.ys.end(), 0.0);
  for (std::size_t i = 0; i < state.ys.size(); ++i) fill(state.ys[i], control.start.ys[i] / sum);
}

void set_uniform_turbulence(const Control& control, State& state) {
  if (state.ak[0].empty()) return;
  fill(state.ak[0], control.k0);
  fill(state.ak[1], control.eps0);
}

/// The mass fluxes of the uniform velocity; the density must be there.
void set_uniform_flow(const Control& control, State& state) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (!state.p.box().computed(static_cast<int>(axis))) continue;
    const double flux = state.r[0](1, 1, 1) * control.velocity0[axis];
    fill(state.ru[axis], flux);
  }
}

void raise(Field& field, double least) {
  for (double& value : field.all()) value = std::max(value, least);
}

/// The first set of the initial file, whose cells each hold whole cells of the run.
FlowSet read_initial(frame::Log& log, const SetFile& file, const Triple& cells, std::size_t ns) {
  const frame::Tag tag(log, "(ubx_module_init)");
  SetReader reader(file.path);
  FlowSet set;
  SetHead head;
  bool good = reader.next(head) == SetReader::Found::set && head.ns == static_cast<int>(ns);
  for (std::size_t a = 0; a < 3; ++a) {
    good = good && head.cells[a] > 0 && cells[a] % head.cells[a] == 0;
  }
  frame::allocating(
      log, "initial set",
      frame::bytes_of<double>(5 * static_cast<std::size_t>(std::max(head.cells[0], 0)),
                              static_cast<std::size_t>(std::max(head.cells[1], 0))),
      [&] { good = good && reader.rest(head, &set) == SetReader::Found::set; });
  if (!good) {
    log.line("%%% file", file.name + ",", "record", reader.record());
    log.fail(kHeading, "lack of data in initial file of coaser mesh");
  }
  check_values(log, kHeading, set);
  return set;
}

/// Values of all fields but the fluxes of a uniform start, which need the density; returns the
/// bytes of the restart file that are kept.
std::uint64_t first_values(frame::Log& log, Run& run, const SetFile& restart,
                           const SetFile& initial) {
  const frame::Tag tag(log, "(flw_prep_init)");
  const Control& control = run.settings.control;
  State& state = run.state;
  const std::size_t ns = state.ys.size();
  std::uint64_t kept = 0;
  state.pt = control.pp0;
  set_uniform_turbulence(control, state);
  if (control.iters < 0) {
    set_uniform_scalars(control, state);
  } else if (control.iters == 0) {
    spread(read_initial(log, initial, run.grid.box.n, ns), run.grid, state);
  } else {
    const bool closed = !holds_pressure(run.boundary, run.faces);
    const Restored found = restore(log, restart, control.iters, run.grid.box.n, ns);
    take_over(log, found.set, closed, run.grid, state);
    kept = found.kept;
  }
  if (!state.ak[0].empty()) {
    raise(state.ak[0], run.settings.ambient.aklw);
    raise(state.ak[1], run.settings.ambient.aelw);
  }
  return kept;
}

}  // namespace

State make_state(frame::Log& log, const Box& box, const Control& control, std::size_t ns) {
  State state;
  frame::allocating(log, "fields", frame::bytes_of<double>(box.size(), 10 + ns), [&] {
    for (Field& r : state.r) r = Field(box);
    for (Field& ru : state.ru) ru = Field(box);
    for (Field* field : {&state.p, &state.t, &state.mu, &state.mut}) *field = Field(box);
    state.ys.assign(ns, Field(box));
    if (control.iturb != Turbulence::k_epsilon) return;
    for (Field& k : state.ak) k = Field(box);
  });
  return state;
}

std::uint64_t flw_prep_init(frame::Log& log, Run& run, const SetFile& restart,
                            const SetFile& initial) {
  const std::uint64_t kept = first_values(log, run, restart, initial);
  prepare(log, run);
  flw_clsolid(run.crew, run.work.rim, run.state);  // a set may come from a run with other obstacles
  if (run.settings.control.iters >= 0) return kept;
  set_uniform_flow(run.settings.control, run.state);
  put_normal_fluxes(run);
  for (int axis = 0; axis < 3; ++axis) {
    if (!run.grid.box.computed(axis)) continue;
    fill_face_halos(run.state.ru[static_cast<std::size_t>(axis)], axis, run.boundary.ends);
  }
  return kept;
}

}  // namespace flow
