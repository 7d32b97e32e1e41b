// Result files as lines of numbers, read fast and while they grow.
//
// A run that goes on may empty a result file at any moment and write it anew, so these files are
// read piece by piece and never mapped: what is gone is gone, and nothing faults. Only lines that
// end count; a last line without its end is one that is being written, or was cut.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace townskin_view {

class Lines {
 public:
  explicit Lines(const std::string& path);
  ~Lines();
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  [[nodiscard]] bool good() const { return fd_ >= 0; }
  /// Size of the file when it was opened [bytes].
  [[nodiscard]] std::uint64_t size() const { return size_; }
  /// The next whole line, without its end; false when there is none.
  bool next(std::string_view& line);
  /// Number of the line that was given last, from 1.
  [[nodiscard]] std::int64_t number() const { return number_; }
  /// True when text without a line's end was left over.
  [[nodiscard]] bool was_cut() const { return cut_; }

 private:
  bool refill();

  static constexpr std::size_t kPiece = 1 << 20;
  static constexpr std::size_t kLongest = 1 << 16;  // a longer line is none of a result file
  int fd_ = -1;
  std::uint64_t size_ = 0;
  std::vector<char> buffer_;
  std::size_t at_ = 0, end_ = 0;
  std::int64_t number_ = 0;
  bool cut_ = false;
};

/// The numbers of a line into `to`, at most as many as it holds; how many stand there before the
/// line ends or something that is no number begins.
[[nodiscard]] std::size_t numbers_of(std::string_view line, std::span<double> to);

}  // namespace townskin_view
