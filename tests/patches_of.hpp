// A list of patches for tests that need little of them: PIDs from 1, areas, facing up.
#pragma once

#include <utility>
#include <vector>

#include "inputs/patch.hpp"

inline tsrf_module_patch::Data patches_of(std::vector<double> areas, std::int32_t type = 3) {
  tsrf_module_patch::Data patch;
  const std::size_t n = areas.size();
  patch.mpatch = static_cast<std::int32_t>(n);
  patch.area = std::move(areas);
  for (std::int32_t i = 1; i <= patch.mpatch; ++i) patch.PID.push_back(i);
  patch.by_pid = frame::CodeIndex(patch.PID);
  patch.nx.assign(n, 0.0);
  patch.ny.assign(n, 0.0);
  patch.nz.assign(n, 1.0);
  patch.type.assign(n, type);
  return patch;
}
