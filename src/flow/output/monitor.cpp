#include "flow/output/monitor.hpp"

#include "flow/monitors.hpp"

namespace flow {

void print_monitor(frame::Log& log, frame::Crew& crew, const State& state, const Flags& fluid,
                   Turbulence model) {
  const Monitors found = take_monitors(crew, fluid, state, model != Turbulence::none);
  if (!found.finite) {
    log.fail("### error : the flow has values that are not finite",
             frame::items("iter,time,dt =", state.iter, state.time, state.dt));
  }
  if (!found.any) return;
  const auto print = [&](std::string_view label, const Triple& cell, auto... values) {
    log.line(label, values..., cell[0], cell[1], cell[2]);
  };
  print("max. vel.  =", found.velocity.cell, found.velocity.value);
  print("max. temp. =", found.warmest.cell, found.warmest.value);
  print("min. temp. =", found.coldest.cell, found.coldest.value);
  if (model == Turbulence::none) return;
  print("max. mut   =", found.mut.cell, found.mut.value);
  if (model != Turbulence::k_epsilon) return;
  const std::size_t at = fluid.box().at(found.mut.cell[0], found.mut.cell[1], found.mut.cell[2]);
  print("     k & e =", found.mut.cell, state.ak[0][at], state.ak[1][at]);
}

}  // namespace flow
