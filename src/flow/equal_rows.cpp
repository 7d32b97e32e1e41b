#include "flow/equal_rows.hpp"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace flow {

namespace {

Bytes row_of(const Bytes& field, std::size_t rows, std::size_t row) {
  const std::size_t length = field.size() / rows;
  return field.subspan(row * length, length);
}

std::size_t hash_of(std::span<const Bytes> fields, std::size_t rows, std::size_t row) {
  std::size_t hash = 0;
  for (const Bytes& field : fields) {
    const Bytes bytes = row_of(field, rows, row);
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    hash = hash * 31 + std::hash<std::string_view>()(text);
  }
  return hash;
}

}  // namespace

std::vector<std::ptrdiff_t> ways_to_equal_rows(std::span<const Bytes> fields, std::size_t rows,
                                               std::size_t stride) {
  std::vector<std::ptrdiff_t> ways(rows, 0);
  std::unordered_multimap<std::size_t, std::size_t> firsts;
  for (std::size_t row = 0; row < rows; ++row) {
    const std::size_t hash = hash_of(fields, rows, row);
    const auto [begin, end] = firsts.equal_range(hash);
    const auto first = std::find_if(begin, end, [&](const auto& one) {
      return std::ranges::all_of(fields, [&](const Bytes& field) {
        return std::ranges::equal(row_of(field, rows, row), row_of(field, rows, one.second));
      });
    });
    if (first == end) {
      firsts.emplace(hash, row);
    } else {
      ways[row] = static_cast<std::ptrdiff_t>((row - first->second) * stride);
    }
  }
  return ways;
}

}  // namespace flow
