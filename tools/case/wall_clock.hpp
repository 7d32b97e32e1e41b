// Times of the day as text.
#pragma once

#include <optional>
#include <string>

namespace townskin_case {

/// Minutes from midnight of "07:30"; 1440 of "24:00"; nothing of any other text.
inline std::optional<int> minutes_of_clock(const std::string& text) {
  const auto digit = [&](std::size_t i) { return text[i] >= '0' && text[i] <= '9'; };
  if (text.size() != 5 || !digit(0) || !digit(1) || text[2] != ':' || !digit(3) || !digit(4)) {
    return std::nullopt;
  }
  const int minutes = 60 * std::stoi(text.substr(0, 2)) + std::stoi(text.substr(3));
  if (text[3] > '5' || minutes > 24 * 60) return std::nullopt;
  return minutes;
}

}  // namespace townskin_case
