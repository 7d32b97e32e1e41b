// tsrf_module_bldcmm: which processes share which buildings.
//
// A district may be divided over processes by area, and a building's surfaces may fall on several.
// Worked out once at the start from all processes' BldIDs; in each step the sums over a building's
// surfaces pass along these lists, so that all that share it hold the same totals.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "buildings/bldng.hpp"
#include "frame/exchange.hpp"
#include "frame/log.hpp"
#include "frame/process_layer.hpp"

namespace tsrf_module_bldcmm {

struct Data {
  frame::ShareLists lists;
};

/// The ids in use, ascending, each once: the position of an id is its number among all processes.
[[nodiscard]] std::vector<std::int32_t> renum_id(std::span<const std::int32_t> ids);

/// The lists of process `rank` from the BldIDs of all processes (no id twice in a process). The
/// lowest rank that has a building keeps it; shared buildings stand in ascending order of BldID.
[[nodiscard]] frame::ShareLists lists_of(std::int32_t rank,
                                         std::span<const std::vector<std::int32_t>> BldIDs);

/// Gathers all BldIDs and makes the lists of this process.
void bldcmm_set_list(frame::Log& log, const frame::ProcessLayer& layer,
                     const tsrf_module_bldng::Data& bldng, Data& data);

/// Sums over all processes what each has summed over its patches: `count` reals a building.
void sumbldat01(frame::Log& log, const frame::ProcessLayer& layer, const Data& data,
                std::size_t count, std::span<double> sums);

}  // namespace tsrf_module_bldcmm
