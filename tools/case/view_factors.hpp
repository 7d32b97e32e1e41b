// View factors between the groups of a scene, and to the sky, by rays.
#pragma once

#include <cstdint>
#include <vector>

#include "scene.hpp"

namespace townskin_case {

/// The partners of each group in rows: those of group i stand at start[i] .. start[i+1]-1, by
/// rising number.
struct ViewFactors {
  std::vector<std::size_t> start;
  std::vector<std::int32_t> to;
  std::vector<double> factor;  ///< share of what group i gives off that reaches `to`
  std::vector<double> sky;     ///< and that reaches the sky, by group
  std::vector<double> error;   ///< standard error of the sky's share, by group
};

}  // namespace townskin_case
