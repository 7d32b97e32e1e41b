// What the data say about a feature, as text, and how numbers are read out of it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "city/json_file.hpp"

namespace townskin_case {

using Attributes = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

/// All members of the object that are a string, a number or a truth value.
Attributes attributes_of(const Json* object);

/// The length that the text tells [m]: a number, alone or with a unit ("12", "12,5 m", "40 ft",
/// "40'"). Nothing for any other text.
std::optional<double> length_of(const std::string& text);

/// The first attribute of these names that is a length.
std::optional<double> first_length(const Attributes& attributes, const Names& names);

/// The first attribute of these names that is there and not empty.
std::optional<std::string> first_text(const Attributes& attributes, const Names& names);

/// What the data call the feature: its `id`, else an attribute that is an id, else "#" and
/// `number`.
std::string name_of(const Json& feature, const Attributes& attributes, std::size_t number);

}  // namespace townskin_case
