// Work of the readers whose success the rest of a check depends on.
#pragma once

#include <algorithm>

#include "frame/findings.hpp"
#include "frame/log.hpp"

namespace check {

/// Does `work`; true when it came to its end and its log, which collects, took no fault meanwhile.
template <class Work>
bool whole(frame::Log& log, Work&& work) {
  const auto faults = [&] {
    return std::ranges::count_if(log.findings().all(), &frame::Finding::fault);
  };
  const auto before = faults();
  return frame::attempt(log, work) && faults() == before;
}

}  // namespace check
