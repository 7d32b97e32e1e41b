#include "frame/exchange.hpp"

namespace frame {

namespace {

/// Messages to be received: as `pack` makes them, their values still to come.
std::vector<Message> awaited(std::span<const Partner> partners, std::size_t count) {
  std::vector<Message> messages;
  for (const Partner& partner : partners) {
    messages.push_back({partner.rank, std::vector<double>(partner.items.size() * count)});
  }
  return messages;
}

/// Hands each value of the messages, and its place among `values`, to `take`.
template <class Take>
void unpack(std::span<const Partner> partners, std::size_t count, std::span<const Message> messages,
            std::span<double> values, Take take) {
  for (std::size_t i = 0; i < partners.size(); ++i) {
    auto next = messages[i].values.begin();
    for (const std::int32_t item : partners[i].items) {
      const auto at = static_cast<std::size_t>(item) * count;
      for (std::size_t n = 0; n < count; ++n) take(values[at + n], *next++);
    }
  }
}

}  // namespace

std::vector<Message> pack(std::span<const Partner> partners, std::size_t count,
                          std::span<const double> values) {
  std::vector<Message> messages = awaited(partners, 0);
  for (std::size_t i = 0; i < partners.size(); ++i) {
    for (const std::int32_t item : partners[i].items) {
      const auto of_item = values.subspan(static_cast<std::size_t>(item) * count, count);
      messages[i].values.insert(messages[i].values.end(), of_item.begin(), of_item.end());
    }
  }
  return messages;
}

void add(std::span<const Partner> partners, std::size_t count, std::span<const Message> messages,
         std::span<double> values) {
  unpack(partners, count, messages, values, [](double& value, double sent) { value += sent; });
}

void put(std::span<const Partner> partners, std::size_t count, std::span<const Message> messages,
         std::span<double> values) {
  unpack(partners, count, messages, values, [](double& value, double sent) { value = sent; });
}

void tsrf_comm_gsrf(const ProcessLayer& layer, const ShareLists& lists, std::size_t count,
                    std::span<double> values) {
  if (flw_m_size(layer) < 2) return;
  std::vector<Message> received = awaited(lists.keepers, count);
  flw_m_exchange(layer, pack(lists.sharers, count, values), received);
  put(lists.keepers, count, received, values);
}

void tsrf_comm_sumdat(const ProcessLayer& layer, const ShareLists& lists, std::size_t count,
                      std::span<double> values) {
  if (flw_m_size(layer) < 2) return;
  std::vector<Message> received = awaited(lists.sharers, count);
  flw_m_exchange(layer, pack(lists.keepers, count, values), received);
  add(lists.sharers, count, received, values);
  tsrf_comm_gsrf(layer, lists, count, values);
}

}  // namespace frame
