// The page without a run: made by esbuild from web/ when the program is built, and kept within it.
#pragma once

#include <string_view>

namespace townskin_view {

/// HTML with "@TITLE@" for the escaped title and "<!--DATA-->" for the data, each once.
[[nodiscard]] std::string_view page_template();

}  // namespace townskin_view
