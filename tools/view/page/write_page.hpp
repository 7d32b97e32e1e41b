// A run as one page: an HTML file that any browser shows without a network.
//
// The page holds the program of web/ and the data of the run, as text that cannot end its element:
// names and titles from data are never markup. Called by main.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "run/run_model.hpp"

namespace townskin_view {

/// Writes the page of a run, which was read with its partners. A file that cannot be written is a
/// Fault.
void write_page(const RunModel& run, const std::string& path);

/// Text within HTML: signs with a meaning there are escaped.
[[nodiscard]] std::string as_html(std::string_view text);
/// JSON that may stand in a script element of HTML; bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string as_json_in_html(const nlohmann::json& value);

}  // namespace townskin_view
