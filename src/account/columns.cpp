// The columns' balance: what stands behind them, the beam in glass, the heat that they store.
#include "account/patches.hpp"

namespace tsrf_module_account {

void add_columns(const tsrf_module_patch::Data& patch, const tsrf_module_srfprp::Data& srfprp,
                 const tsrf_module_data::Data& state, const Radiation& radiation, double dt,
                 Data& data) {
  for (House& house : data.houses) house.walls = house.sun = house.P = house.T = 0.0;
  for (auto from = data.backed.begin(); from != data.backed.end();) {
    const Kind kind = from->kind;
    double behind = 0.0;
    double shift = 0.0;
    for (; from != data.backed.end() && from->kind == kind; ++from) {
      const double T = state.tlyr(from->patch, from->last);
      // The node behind the last cell keeps the room's temperature of the step's start.
      const double room = state.tlyr(from->patch, from->last + 1);
      const double held = from->implicit ? T : from->before;
      behind += from->conductance * (room - held);
      shift += from->conductance * (T - held);
      if (from->building < 0) continue;
      House& house = data.houses[static_cast<std::size_t>(from->building)];
      house.walls += from->conductance * (T - room);
    }
    data.flows[kind][kBehind] += behind * dt;
    data.flows[kind][kBehindShift] += shift * dt;
  }
  for (const Pane& pane : data.panes) {
    const std::size_t p = pane.patch;
    const double albedo = srfprp.alb[static_cast<std::size_t>(state.isrf[p])];
    const double beam = patch.area[p] * (1.0 - albedo) * radiation.Jdir[p];
    data.flows[kWindow][kGlassBeam] += beam * pane.entered * dt;
    if (pane.building < 0) continue;
    data.houses[static_cast<std::size_t>(pane.building)].sun += beam * pane.passed;
  }
}

void add_stored(frame::Crew& crew, const tsrf_module_patch::Data& patch,
                const tsrf_module_data::Data& state, Data& data) {
  crew.each(data.blocks.size(), 1, [&](std::size_t b) {
    Block& block = data.blocks[b];
    for (std::size_t n = block.first_lot; n < block.last_lot; ++n) {
      const Lot& lot = data.lots[n];
      if (lot.role != Role::balanced) continue;
      double stored = 0.0;
      for (std::int32_t k = 1; k <= state.mzg; ++k) {
        const auto now = state.tlyr.row(k);
        const auto before = data.start.row(k);
        for (std::size_t i = lot.first; i < lot.last; ++i) {
          const std::size_t p = data.order[i];
          if (k > state.nlyr[p]) continue;
          stored +=
              patch.area[p] * state.dzl(p, k - 1) * state.capa(p, k - 1) * (now[p] - before[p]);
        }
      }
      block.flows[lot.kind][kStored] += stored;
    }
  });
}

}  // namespace tsrf_module_account
