// A text file that is written fast: numbers are put into a large buffer without streams.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace townskin_case {

class TextFile {
 public:
  /// Makes the file, with the folders above it; a fault where that cannot be.
  explicit TextFile(const std::string& path);
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  ~TextFile() = default;

  TextFile& put(std::string_view text) {
    buffer_ += text;
    return *this;
  }
  TextFile& put(std::int64_t value);
  /// The shortest form that reads back to the same bits.
  TextFile& put(double value);
  /// In `digits` significant digits, for a share from 0 to 1; zeros behind the last one fall away.
  TextFile& share(double value, int digits);
  void end_line() {
    buffer_ += '\n';
    if (buffer_.size() >= kFull) drain();
  }
  /// The items of a line with blanks between them.
  template <class First, class... Rest>
  void line(const First& first, const Rest&... rest) {
    item(first);
    ((put(" "), item(rest)), ...);
    end_line();
  }

  /// Brings everything to the file; a fault where the disk is full. Without it the file is cut.
  void close();

 private:
  template <class Item>
  void item(const Item& value) {
    if constexpr (std::is_integral_v<Item>) {
      put(static_cast<std::int64_t>(value));
    } else {
      put(value);
    }
  }
  void drain();
  [[noreturn]] void failed() const;

  static constexpr std::size_t kFull = 1 << 20;
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::string path_;
  std::unique_ptr<std::FILE, Closer> file_;
  std::string buffer_;
};

}  // namespace townskin_case
