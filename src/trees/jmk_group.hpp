// What the settings and data of the tree model have in common: the name under which they report a
// group that cannot be read, and a bound beyond which a number is no property of leaves.
#pragma once

#include <string_view>

namespace jmk {

inline constexpr std::string_view kReader = "(jmk_nml_errmsg0)";

/// Densities [m2/m3], conductances and wetness above are slips of the pen.
inline constexpr double kMostOfLeaves = 1000.0;
inline constexpr std::string_view kMostOfLeavesRule = "it must be <= 1000";

}  // namespace jmk
