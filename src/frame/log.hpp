// The log of a run, and how a failure travels.
//
// The log tells how a run went: each record is one line, its items joined by one blank (a
// "list-directed" record). A routine that finds a fault writes the lines that say what is wrong
// and calls Log::fail; on the way up each level that holds a Tag adds its own name, so that the
// last lines of the log are the stack trace of the failure, innermost first:
//
//     void read_patch(frame::Log& log, ...) {
//       const frame::Tag tag(log, "(tsrf_module_patch)(read_patch)");
//       if (area <= 0) log.data_error(frame::items("area =", area), "it must be > 0");
//
// Only the main program turns a failure into an exit status. Owned by the run; every routine that
// reports anything receives it.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <exception>
#include <iosfwd>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "frame/numbers.hpp"

namespace frame {

class Findings;
class TextInput;

/// A fault has been reported; the run unwinds to its abnormal end.
struct Failure {};

/// The run ends on the spot (a state that correct input cannot reach, or a file that cannot be
/// opened); no tags are written. `status` is the process status.
struct Stop {
  int status;
};

inline constexpr int kStatusProgramError = 1;
inline constexpr int kStatusOpenError = 2;
inline constexpr int kStatusAccounts = 132;  ///< stop code 900 as the system keeps it
inline constexpr int kStatusAbnormal = 231;  ///< stop code 999 as the system keeps it

inline void append_item(std::string& out, std::string_view text) { out += text; }
template <std::integral Int>
void append_item(std::string& out, Int value) {
  append_number(out, static_cast<std::int64_t>(value));
}
template <std::floating_point Real>
void append_item(std::string& out, Real value) {
  append_number(out, value);
}

/// The items of a record as one line: texts as they are, integers plain, reals in the shortest
/// form that reads back to the same bits, joined by one blank.
template <class First, class... Rest>
void append_items(std::string& out, const First& first, const Rest&... rest) {
  append_item(out, first);
  ((out += ' ', append_item(out, rest)), ...);
}
template <class... Items>
std::string items(const Items&... values) {
  std::string text;
  append_items(text, values...);
  return text;
}

class Log {
 public:
  /// `screen` takes what goes to standard output, `errors` what goes to standard error.
  Log(std::ostream& screen, std::ostream& errors);
  ~Log();
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  /// Opens the log file `name` and starts it anew. Throws Stop when it cannot be opened.
  void open(const std::string& name);
  /// From here on the log is standard output.
  void use_screen();
  [[nodiscard]] bool is_screen() const { return fd_ < 0; }

  /// From here on the log is a check's: nothing is written, faults and warnings go to `findings`.
  void collect(Findings& findings) { findings_ = &findings; }
  [[nodiscard]] bool collects() const { return findings_ != nullptr; }
  /// Where they go; of a log that collects only.
  [[nodiscard]] Findings& findings() const { return *findings_; }
  /// A fault that was collected has been dealt with; it lies, where it did not tell, in the record
  /// of `file` that was read last.
  void settle(const TextInput* file);
  /// The same with the place in `file`.
  void settle(const TextInput& file, std::size_t place);
  /// Doubts whether the first record of `file` that takes more than one line is meant to.
  void look_at_length(const TextInput& file);

  /// One record on the log.
  template <class... Items>
  void line(const Items&... values) {
    form_line([&](std::string& text) { append_items(text, values...); });
  }
  /// One record that `form` appends to an empty text. The log keeps the text's memory, so that the
  /// lines of a step take none.
  template <class Form>
  void form_line(Form&& form) {
    line_.clear();
    form(line_);
    write_line(line_);
  }
  /// One record headed by "%%% warning :", once: the same words again (a file that is read anew)
  /// are not repeated.
  template <class... Items>
  void warn(const Items&... values) {
    const auto [text, is_new] = warnings_.insert(items("%%% warning :", values...));
    if (is_new) write_line(*text);
  }
  /// A warning of several records, the first headed by "%%% warning".
  template <class... Lines>
  void warning(const Lines&... lines) {
    if (collects()) {
      take_doubt({std::string(lines)...});
    } else {
      (write_line(lines), ...);
    }
  }
  /// One record on standard output.
  template <class... Items>
  void screen(const Items&... values) {
    write_screen(items(values...));
  }
  /// One line on standard error, and the same on the log.
  void error_and_log(std::string_view text);

  /// Ends the run in order: writes the given lines and throws Failure.
  template <class... Lines>
  [[noreturn]] void fail(const Lines&... lines) {
    if (collects()) {
      take_fault({std::string(lines)...});
    } else {
      (write_line(lines), ...);
    }
    unwind();
  }
  /// The same with lines that are counted while the program runs.
  [[noreturn]] void fail_with(const std::vector<std::string>& lines);
  /// As fail, headed by "### error : data error".
  template <class... Lines>
  [[noreturn]] void data_error(const Lines&... lines) {
    fail("### error : data error", lines...);
  }
  /// As fail, headed by an information line that names the file and the line in it where the last
  /// record of `file` could not be read.
  template <class... Lines>
  [[noreturn]] void read_error(const TextInput& file, const Lines&... lines) {
    fail(place_of_fault(file), lines...);
  }
  /// The same for a record that others follow: a log that collects passes over it and goes on.
  template <class... Lines>
  void lost_record(TextInput& file, const Lines&... lines) {
    if (!collects()) read_error(file, lines...);
    take_lost(file, {std::string(lines)...});
  }
  /// Stops on the spot: the given lines ("### program error ...", where bad input can lead there
  /// behind one that names the file and the line) go to standard output and to the log. Empty ones
  /// are left out.
  template <class... Lines>
  [[noreturn]] void program_error(const Lines&... lines) {
    stop_with(kStatusProgramError, lines...);
  }
  /// The same with another process status.
  template <class... Lines>
  [[noreturn]] void stop_with(int status, const Lines&... lines) {
    if (collects()) fail(lines...);
    (write_everywhere(lines), ...);
    failing_ = false;  // a fault kept for later gives way
    flush();
    throw Stop{status};
  }

  /// True from the call of fail on: what unwinds is a reported fault.
  [[nodiscard]] bool failing() const { return failing_; }

  /// One tag of the stack trace; called while a failure unwinds, so it never throws.
  void note_tag(std::string_view text) noexcept;

  /// Brings all lines to the file. Throws Stop, with a line on standard error, when the file
  /// cannot take them (a full disk).
  void flush();

 private:
  void write_line(std::string_view text);
  void write_screen(std::string_view text);
  void write_everywhere(std::string_view text);
  [[nodiscard]] static std::string place_of_fault(const TextInput& file);
  void take_fault(std::vector<std::string> lines);
  void take_doubt(std::vector<std::string> lines);
  void take_lost(TextInput& file, std::vector<std::string> lines);
  [[noreturn]] void unwind();

  std::ostream& screen_;
  std::ostream& errors_;
  std::string name_;
  std::string pending_;
  std::string line_;
  std::set<std::string> warnings_;
  Findings* findings_ = nullptr;
  int fd_ = -1;
  bool failing_ = false;
};

/// Names a level of the program on the log when a reported fault passes through it. A text with a
/// line break gives two lines.
class Tag {
 public:
  Tag(Log& log, std::string_view text)
      : log_(log), text_(text), exceptions_(std::uncaught_exceptions()) {}
  ~Tag() {
    if (std::uncaught_exceptions() > exceptions_ && log_.failing()) log_.note_tag(text_);
  }
  Tag(const Tag&) = delete;
  Tag& operator=(const Tag&) = delete;

 private:
  Log& log_;
  std::string_view text_;
  int exceptions_;
};

/// Does `work`, the look of a reader at one item of `file` (or at something else), behind which the
/// reader can go on. Of a run a fault in it is the end; where the log collects faults the answer is
/// whether there was none.
template <class Work>
bool attempt(Log& log, const TextInput* file, Work&& work) {
  if (!log.collects()) {
    work();
    return true;
  }
  bool good = false;
  try {
    work();
    good = true;
  } catch (const Failure&) {
    log.settle(file);
  }
  if (file != nullptr) log.look_at_length(*file);
  return good;
}
template <class Work>
bool attempt(Log& log, Work&& work) {
  return attempt(log, nullptr, work);
}

/// The same of an item that stands at `place` of `file`.
template <class Work>
bool attempt_at(Log& log, const TextInput& file, std::size_t place, Work&& work) {
  const bool good = attempt(log, nullptr, work);
  if (!good) log.settle(file, place);
  return good;
}

/// Bytes of `rows` rows of `count` values each.
template <class T>
constexpr std::int64_t bytes_of(std::size_t count, std::size_t rows = 1) {
  return static_cast<std::int64_t>(sizeof(T) * rows * count);
}
/// Bytes that a list takes when it has to grow for one more value.
template <class List>
std::int64_t bytes_grown(const List& list) {
  return bytes_of<typename List::value_type>(list.capacity() +
                                             std::max<std::size_t>(list.size(), 1));
}

/// Runs `take`, which takes `bytes` or more for what `array` names; memory exhaustion becomes the
/// orderly failure "### error : allocation failed" (or `words`), which tells both.
template <class Take>
void allocating(Log& log, std::string_view array, std::int64_t bytes, Take&& take,
                std::string_view words = "### error : allocation failed") {
  bool exhausted = false;
  try {
    take();
  } catch (const std::bad_alloc&) {
    exhausted = true;
  } catch (const std::length_error&) {
    exhausted = true;
  }
  if (exhausted) {
    log.fail(words, items("array,bytes =", array, bytes));
  }
}

}  // namespace frame
