#include "frame/nearest_name.hpp"

#include <algorithm>
#include <array>
#include <vector>

namespace frame {

namespace {

constexpr std::size_t kLongest = 64;

/// Distance with swaps of neighbours as one change (F. J. Damerau, 1964).
std::size_t distance(std::string_view a, std::string_view b) {
  std::array<std::vector<std::size_t>, 3> rows;  // two rows back, one back, this one
  for (auto& row : rows) row.assign(b.size() + 1, 0);
  for (std::size_t j = 0; j <= b.size(); ++j) rows[2][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    auto& row = rows[2];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = rows[1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({rows[1][j] + 1, row[j - 1] + 1, changed});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], rows[0][j - 2] + 1);
    }
  }
  return rows[2][b.size()];
}

}  // namespace

std::string nearest_name(std::string_view word, std::span<const std::string> names) {
  if (word.size() > kLongest) return {};
  std::string nearest;
  std::size_t least = std::min<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string& name : names) {
    const std::size_t letters = distance(word, name);
    if (letters >= least) continue;
    least = letters;
    nearest = name;
  }
  return nearest;
}

}  // namespace frame
