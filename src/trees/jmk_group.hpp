// What the settings groups of the tree model have in common: the name under which they report a
// group that cannot be read.
#pragma once

#include <string_view>

namespace jmk {

inline constexpr std::string_view kReader = "(jmk_nml_errmsg0)";

}  // namespace jmk
