// An output file of text.
//
// The file is opened at the start of a run, so that a name that cannot be written is found before
// any work is done, but what stands in it is left alone until the first write: a start that fails
// loses no earlier results. Lines are gathered and written in large pieces. Owned by the table of
// units; filled by the result writers and the progress record.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace frame {

class Log;

class TextOutput {
 public:
  /// Opens `path` for writing without touching what it holds. On failure the result is not `good`.
  explicit TextOutput(const std::string& path);
  /// Writes what is still in the buffer, without a word when that fails: a run that ends in a
  /// failure keeps the results it had.
  ~TextOutput();
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  [[nodiscard]] bool good() const { return fd_ >= 0; }
  [[nodiscard]] const std::string& reason() const { return reason_; }
  [[nodiscard]] const std::string& name() const { return name_; }

  /// The buffer that the writer fills, line ends included; `flush` or a full buffer writes it.
  [[nodiscard]] std::string& buffer() { return buffer_; }
  /// To be called after each row of results: as line_done, and the row counts.
  void row_done(Log& log) {
    ++rows_;
    line_done(log);
  }
  /// The same for rows whose lines are done.
  void rows_done(std::size_t count) { rows_ += static_cast<std::int64_t>(count); }
  /// Texts in which several hands gather what comes into the buffer next.
  [[nodiscard]] std::vector<std::string>& pieces() { return pieces_; }
  /// To be called after each line: writes the buffer when it is large.
  void line_done(Log& log) {
    if (buffer_.size() >= kBufferLimit) write_out(log);
  }
  /// One whole line.
  void line(Log& log, std::string_view text) {
    buffer_ += text;
    buffer_ += '\n';
    line_done(log);
  }
  /// Rows since the file was last started over.
  [[nodiscard]] std::int64_t rows() const { return rows_; }
  /// Whether the file still holds what an earlier run left in it.
  [[nodiscard]] bool holds_earlier() const;
  /// Starts the file over: what was written is dropped.
  void rewind(Log& log);
  /// Brings everything to the file. Fails, naming the file and the system's reason, when the
  /// file cannot take it (a full disk).
  void flush(Log& log) { write_out(log); }

 private:
  static constexpr std::size_t kBufferLimit = 1 << 20;

  void write_out(Log& log);
  int drain();
  int start_over();
  void check(Log& log, int error) const;

  std::string name_;
  std::string reason_;
  std::string buffer_;
  std::vector<std::string> pieces_;
  std::int64_t rows_ = 0;
  int fd_ = -1;
  bool started_ = false;
};

}  // namespace frame
