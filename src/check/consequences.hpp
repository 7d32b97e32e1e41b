// Findings that only follow from others.
#pragma once

#include "check/reading.hpp"

namespace check {

/// Takes out what a lost record or file has brought about elsewhere: a code that its reader did not
/// get to know is told where it was lost, not again by each that asks for it.
void drop_consequences(const Parts& parts, frame::Findings& findings);

}  // namespace check
