// Exchange of per-item values between the processes that share items.
//
// Each shared item (a building, a patch group) has one keeper among the processes that have it; the
// others hold copies. Who shares what is listed once at the start (tsrf_module_bldcmm for the
// buildings); a step then only packs and unpacks. With one process the lists are empty and nothing
// moves.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "frame/process_layer.hpp"

namespace frame {

/// Another process, and the local positions of the items shared with it, in the order that both
/// sides have.
struct Partner {
  std::int32_t rank;
  std::vector<std::int32_t> items;
};

/// The partners of one process, for both directions of an exchange.
struct ShareLists {
  std::vector<Partner> keepers;  ///< who keep items that this process has copies of
  std::vector<Partner> sharers;  ///< who have copies of items that this process keeps
};

/// The values of the shared items, `count` reals an item, for each partner.
[[nodiscard]] std::vector<Message> pack(std::span<const Partner> partners, std::size_t count,
                                        std::span<const double> values);
/// Adds, or puts, the values of messages that stand in the order of the partners.
void add(std::span<const Partner> partners, std::size_t count, std::span<const Message> messages,
         std::span<double> values);
void put(std::span<const Partner> partners, std::size_t count, std::span<const Message> messages,
         std::span<double> values);

/// Sums the values of shared items over all processes that have them: keepers add what the others
/// send, then send the totals back. `count` reals an item, item by item.
void tsrf_comm_sumdat(const ProcessLayer& layer, const ShareLists& lists, std::size_t count,
                      std::span<double> values);
/// Brings the keepers' values to all copies.
void tsrf_comm_gsrf(const ProcessLayer& layer, const ShareLists& lists, std::size_t count,
                    std::span<double> values);

}  // namespace frame
