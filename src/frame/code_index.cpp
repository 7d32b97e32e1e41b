#include "frame/code_index.hpp"

#include <algorithm>

#include "frame/log.hpp"

namespace frame {

namespace {
constexpr std::int64_t kSparse = 8;
constexpr std::int64_t kSmall = 4096;
}  // namespace

CodeIndex::CodeIndex(std::span<const std::int32_t> codes) {
  if (codes.empty()) return;
  const auto [least, greatest] = std::minmax_element(codes.begin(), codes.end());
  low_ = *least;
  const std::int64_t range = static_cast<std::int64_t>(*greatest) - low_ + 1;
  const auto count = static_cast<std::int32_t>(codes.size());
  if (range <= kSmall + kSparse * count) {
    table_.assign(static_cast<std::size_t>(range), -1);
    for (std::int32_t i = 0; i < count; ++i) {
      std::int32_t& entry =
          table_[static_cast<std::size_t>(codes[static_cast<std::size_t>(i)] - low_)];
      if (entry < 0) {
        entry = i;
      } else if (!repeat_) {
        repeat_ = Repeat{entry, i};
      }
    }
    return;
  }
  sorted_.reserve(codes.size());
  for (std::int32_t i = 0; i < count; ++i)
    sorted_.emplace_back(codes[static_cast<std::size_t>(i)], i);
  std::sort(sorted_.begin(), sorted_.end());
  for (std::size_t i = 1; i < sorted_.size(); ++i) {
    if (sorted_[i].first != sorted_[i - 1].first) continue;
    if (!repeat_ || sorted_[i].second < repeat_->second) {
      repeat_ = Repeat{find(sorted_[i].first), sorted_[i].second};
    }
  }
}

std::int32_t CodeIndex::find(std::int32_t code) const {
  if (!sorted_.empty()) {
    const auto found = std::lower_bound(sorted_.begin(), sorted_.end(), std::pair(code, INT32_MIN));
    return found != sorted_.end() && found->first == code ? found->second : -1;
  }
  const std::int64_t place = code - low_;
  if (place < 0 || place >= static_cast<std::int64_t>(table_.size())) return -1;
  return table_[static_cast<std::size_t>(place)];
}

void report_repeats(Log& log, const CodeIndex& index, std::span<const std::int32_t> codes,
                    FunctionRef<void(std::size_t first, std::size_t second)> report) {
  const auto& repeat = index.repeat();
  if (!repeat) return;
  const auto tell = [&](std::int32_t first, std::size_t second) {
    attempt(log, [&] { report(static_cast<std::size_t>(first), second); });
  };
  tell(repeat->first, static_cast<std::size_t>(repeat->second));
  const auto behind = static_cast<std::size_t>(repeat->second) + 1;
  for (std::size_t n = behind; n < codes.size(); ++n) {
    const std::int32_t first = index.find(codes[n]);
    if (first != static_cast<std::int32_t>(n)) tell(first, n);
  }
}

}  // namespace frame
