#include "flow/domains/dsr_dc2.hpp"

#include <algorithm>
#include <string>

namespace flow {

namespace {

using flw_module_indcmm::Exchange;
using flw_module_indcmm::Places;

/// An array and its exchange.
struct Part {
  const Exchange* lists;
  Field* field;
  int odd_axis;
};
using Parts = std::span<const Part>;

std::vector<double>& values_of(std::vector<frame::Message>& messages, std::int32_t rank) {
  const auto at = std::ranges::find(messages, rank, &frame::Message::rank);
  if (at != messages.end()) return at->values;
  return messages.emplace_back(frame::Message{rank, {}}).values;
}

void pack(Parts parts, std::vector<frame::Message>& messages) {
  for (frame::Message& message : messages) message.values.clear();
  for (const Part& part : parts) {
    for (const Places& places : part.lists->send) {
      std::vector<double>& values = values_of(messages, places.rank);
      for (const std::size_t at : places.at) values.push_back((*part.field)[at]);
    }
  }
}

/// Sets the sizes of the messages to come.
void await(Parts parts, std::vector<frame::Message>& messages) {
  for (frame::Message& message : messages) message.values.clear();
  for (const Part& part : parts) {
    for (const Places& places : part.lists->receive) {
      std::vector<double>& values = values_of(messages, places.rank);
      values.resize(values.size() + places.at.size());
    }
  }
}

void unpack(frame::Log& log, Parts parts, std::span<const frame::Message> messages) {
  const auto stop = [&log](int number) {
    log.stop_with(frame::kStatusAbnormal,
                  "### program error -" + std::to_string(number) + "- (flw_dsr_dc2)");
  };
  for (const frame::Message& message : messages) {
    auto next = message.values.begin();
    bool known = false;
    if (&*std::ranges::find(messages, message.rank, &frame::Message::rank) != &message) stop(1);
    for (const Part& part : parts) {
      for (const Places& places : part.lists->receive) {
        if (places.rank != message.rank) continue;
        known = true;
        const auto size = static_cast<std::ptrdiff_t>(places.at.size());
        if (message.values.end() - next < size) stop(2);
        for (const std::size_t at : places.at) (*part.field)[at] = *next++;
      }
    }
    if (!known) stop(1);
    if (next != message.values.end()) stop(2);
  }
}

void transfer(frame::Log& log, Parts parts, Carry carry, Mail& mail) {
  for (const Part& part : parts) {
    for (const std::size_t at : part.lists->closed) (*part.field)[at] = 0.0;
  }
  pack(parts, mail.sent);
  await(parts, mail.received);
  carry(mail.sent, mail.received);
  unpack(log, parts, mail.received);
  for (const Part& part : parts) {
    Field& field = *part.field;
    for (const Exchange::Copy& copy : part.lists->own) field[copy.to] = field[copy.from];
    if (part.odd_axis < 0) continue;
    const auto& turned = part.lists->turned[static_cast<std::size_t>(part.odd_axis)];
    for (const std::size_t at : turned) field[at] = -field[at];
  }
}

}  // namespace

void flw_dsr_dc2(frame::Log& log, const Exchange& lists, Field& field, Carry carry, Mail& mail,
                 int odd_axis) {
  transfer(log, std::array{Part{&lists, &field, odd_axis}}, carry, mail);
}

void flw_dsr_dc2(frame::Log& log, const flw_module_indcmm::FaceExchange& lists,
                 std::array<Field, 3>& faces, Carry carry, Mail& mail) {
  transfer(log,
           std::array{Part{lists.data(), faces.data(), 0}, Part{&lists[1], &faces[1], 1},
                      Part{&lists[2], &faces[2], 2}},
           carry, mail);
}

}  // namespace flow
