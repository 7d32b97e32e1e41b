// The page without a run: made by esbuild from web/ when the program is built, and kept within it.
#pragma once

#include <string_view>

namespace townskin_view {

/// HTML with "@TITLE@" for the escaped title, "<!--DATA-->" for what the first picture needs, the
/// script, and "<!--MORE-->" for all other data, each once and in this order.
[[nodiscard]] std::string_view page_template();

}  // namespace townskin_view
