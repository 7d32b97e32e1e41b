// JSON from a file that nobody has checked: text, depth and types.
//
// Whatever the bytes are, the answer is a value or a Fault that names the file. Used by the readers
// of GeoJSON and CityJSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "report.hpp"

namespace townskin_case {

using Json = nlohmann::json;

/// The bytes of the file.
std::string read_text(const std::string& file);

/// The value that the text holds; `where` names it in a fault. Deeper nesting than any city needs
/// (64 levels) is a fault, as is a number beyond the range of doubles.
Json parse_json(const std::string& text, const Origin& where);

/// The member of that name, or nullptr where `value` is no object or has none. Null counts as none.
const Json* member(const Json& value, const std::string& name);

/// Likewise, where it is an array or an object.
const Json* array_member(const Json& value, const std::string& name);
const Json* object_member(const Json& value, const std::string& name);

/// The text of a string, or nothing.
std::optional<std::string> text_member(const Json& value, const std::string& name);

/// A string, number or truth value as text; nothing for the rest.
std::optional<std::string> as_text(const Json& value);

}  // namespace townskin_case
