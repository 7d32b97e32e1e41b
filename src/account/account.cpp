#include "account/account.hpp"

#include <algorithm>

#include "frame/namelist.hpp"

namespace tsrf_module_account {

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_account)(inputdata)");
  constexpr auto kSwitch = [](std::int32_t value) { return value == 0 || value == 1; };
  std::int32_t& chosen = data.settings.LACCOUNT;
  frame::Group group(
      "ACCOUNT",
      {{"LACCOUNT", chosen,
        frame::holds<std::int32_t>("laccount =", chosen, kSwitch, "it must be 0 or 1")}});
  group.read(log, control);
  data.settings_place = group.place();
}

void clear(Data& data) {
  data.open = false;
  data.seconds = 0.0;
  for (Block& block : data.blocks) block.flows = {};
  data.flows = {};
  std::ranges::fill(data.exchange, std::array<Exchange, 2>{});
  data.rooms = {};
  data.leaves = {};
  std::ranges::fill(data.leaf_blocks, std::array<double, kLeafFlows>{});
}

double total(const Data& data, Kind kind, Flow flow) {
  double sum = data.flows[kind][flow];
  for (const Block& block : data.blocks) sum += block.flows[kind][flow];
  return sum;
}

void list_arrays(const Data& data, frame::ArrayList& list) {
  if (!data.on()) return;
  list.add("account", data.order, data.lots, data.blocks, data.group_sky, data.group_sent,
           data.backed, data.panes, data.leaf_patches, data.T0, data.T1, data.JRl, data.JRs,
           data.houses, data.start, data.exchange, data.leaf_blocks);
}

}  // namespace tsrf_module_account
