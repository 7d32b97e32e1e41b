// The name that a misspelt one was most likely meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace frame {

/// The one of `names` that is fewest letters (left out, added, changed, swapped with the next) away
/// from `word`; empty where none is near.
std::string nearest_name(std::string_view word, std::span<const std::string> names);

}  // namespace frame
