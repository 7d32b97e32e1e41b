#include "run/blocks.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace townskin_view {

namespace {

constexpr std::size_t kMostNumbers = 16;
constexpr double kLargestCode = 2147483647.0;

class Reader {
 public:
  Reader(Lines& lines, const Layout& layout, Keys& keys, Blocks& blocks)
      : lines_(lines), layout_(layout), keys_(keys), blocks_(blocks), learning_(keys.empty()) {}

  void read() {
    std::string_view line;
    for (std::size_t n = 0; n < layout_.headings && lines_.next(line); ++n) {
    }
    while (lines_.next(line)) {
      if (!take(line)) break;
    }
    finish();
  }

 private:
  [[nodiscard]] std::size_t places() const { return keys_.size() / layout_.keys; }

  /// Enters a row; false when the rest of the file does not count.
  bool take(std::string_view line) {
    const std::size_t count = numbers_of(line, std::span(row_).first(layout_.numbers));
    if (count < layout_.numbers) {
      if (blocks_.hours.empty() && place_ == 0) return true;  // a heading
      return refuse("is no row of this file");
    }
    line_size_ = line.size();
    const double hour = row_[layout_.hour];
    if (!(hour >= 1.0 && hour <= 24.0)) return refuse("has no hour from 1 to 24");
    if (place_ == 0) {
      open(static_cast<std::int32_t>(hour));
    } else if (hour != static_cast<double>(hour_)) {
      if (!learning_) return refuse("begins another hour before the last one is whole");
      close();
      open(static_cast<std::int32_t>(hour));
    }
    if (!fits()) return refuse("is that of another place");
    const bool first = blocks_.hours.empty();
    for (std::size_t c = 0; c < layout_.values - (first ? 0 : layout_.steady); ++c) {
      blocks_.columns[c].push_back(static_cast<float>(row_[layout_.first_value + c]));
    }
    ++place_;
    if (!learning_ && place_ == places()) close();
    return true;
  }

  void open(std::int32_t hour) {
    hour_ = hour;
    if (!reserved_ && !learning_) reserve();
  }
  void close() {
    blocks_.hours.push_back(hour_);
    place_ = 0;
    learning_ = false;
  }

  /// Room for all blocks, as many as the file's size promises.
  void reserve() {
    reserved_ = true;
    const std::size_t rows = lines_.size() / (line_size_ + 1) + 1;
    for (std::size_t c = 0; c < layout_.values - layout_.steady; ++c) {
      blocks_.columns[c].reserve(rows);
    }
  }

  bool fits() {
    for (std::size_t k = 0; k < layout_.keys; ++k) {
      const double key = row_[layout_.first_key + k];
      if (!(std::abs(key) <= kLargestCode)) return false;
      const auto code = static_cast<std::int32_t>(key);
      if (learning_) {
        keys_.push_back(code);
      } else if (keys_[place_ * layout_.keys + k] != code) {
        return false;
      }
    }
    return true;
  }

  bool refuse(const std::string& why) {
    blocks_.remark = "line " + std::to_string(lines_.number()) + " " + why;
    return false;
  }

  /// What is left over of a block that is not whole is dropped. A first block ends with the file.
  void finish() {
    if (learning_ && place_ > 0 && !lines_.was_cut() && blocks_.remark.empty()) close();
    const std::size_t whole = blocks_.hours.size() * places();
    for (auto& column : blocks_.columns) column.resize(std::min(column.size(), whole));
    if (blocks_.hours.empty()) {
      if (learning_) keys_.clear();
      for (auto& column : blocks_.columns) column.clear();
    }
    const bool rest = place_ > 0 || lines_.was_cut();
    if (blocks_.remark.empty() && rest) blocks_.remark = "its last hour is not whole";
  }

  Lines& lines_;
  const Layout& layout_;
  Keys& keys_;
  Blocks& blocks_;
  bool learning_;
  bool reserved_ = false;
  std::int32_t hour_ = 0;
  std::size_t place_ = 0;
  std::size_t line_size_ = 0;  // of the row that is entered
  std::array<double, kMostNumbers> row_{};
};

}  // namespace

Blocks read_blocks(const std::string& path, const Layout& layout, Keys& keys) {
  Blocks blocks;
  blocks.columns.resize(layout.values);
  Lines lines(path);
  if (lines.good()) Reader(lines, layout, keys, blocks).read();
  return blocks;
}

}  // namespace townskin_view
