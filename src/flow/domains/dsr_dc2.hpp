// flw_dsr_dc2: brings the halos of a process up to date from the sub-domains that keep their cells.
//
// It packs one message a partner, hands all of them to `carry` and puts what came into the halos.
// Carrying is the caller's: between processes by messages, in a test by hand. Every process makes
// the same exchanges in the same order.
#pragma once

#include <span>
#include <vector>

#include "flow/domains/indcmm.hpp"
#include "frame/function_ref.hpp"
#include "frame/process_layer.hpp"

namespace flow {

/// Takes the messages that go out and fills those that come in, whose ranks and sizes are set.
using Carry = frame::FunctionRef<void(std::span<const frame::Message>, std::span<frame::Message>)>;

/// The messages of an exchange, kept by its caller from one call to the next so that their memory
/// is taken once. Each exchange has one of its own.
struct Mail {
  std::vector<frame::Message> sent, received;
};

/// Fills the halos of an array of cells. A component along `odd_axis` changes its sign in the
/// mirror of that axis; -1: none does.
/// Errors: "### program error -1- (flw_dsr_dc2)" when a message of another rank came, "-2-" one of
/// another size.
void flw_dsr_dc2(frame::Log& log, const flw_module_indcmm::Exchange& lists, Field& field,
                 Carry carry, Mail& mail, int odd_axis);
/// The same for the faces of the three axes, in one message a partner: `ru`, `rv`, `rw`. Faces at
/// symmetric ends are set to 0; the two that are one place take the value of the domain that keeps
/// it. A face field along an axis that is not computed is left as it is.
void flw_dsr_dc2(frame::Log& log, const flw_module_indcmm::FaceExchange& lists,
                 std::array<Field, 3>& faces, Carry carry, Mail& mail);

}  // namespace flow
