// An input file and its free-form records.
//
// A file is read whole (or mapped, when it is large) once and parsed in place, so counting passes
// and rewinds cost no second read from disk. Records are free-form ("list-directed"): fields are
// separated by blanks, tabs or commas; a record may run on over lines; surplus fields of its last
// line are ignored; `3*1.0` repeats, `,,` leaves a value as it was, a slash ends the record early,
// text may stand in quotes. Blank lines hold no record. Fields are taken as whole tokens: what is
// not a number of the wanted kind is an error, never half a number.
//
// The first line of a data file is a title. Files are opened by the table of units and handed to
// the readers of the data sets, all of which read them only through this class.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "frame/numbers.hpp"

namespace frame {

class Log;

enum class ReadStatus {
  ok,     ///< the record was read
  end,    ///< no record is left
  error,  ///< a field cannot be read, or the last record is cut short
};

/// Splits the text from a given place into the fields of one record, for TextInput, with the
/// common field (a plain number behind blanks) inline.
class RecordScanner {
 public:
  RecordScanner(const char* first, const char* last) : at_(first), last_(last) {}

  /// Reads the next field; false at the end of the text or on a field that cannot be read.
  template <class Number>
  bool field(Number& value) {
    if (plain_) {
      const char* p = at_;
      while (p < last_ && (*p == ' ' || *p == '\t')) ++p;
      Number number{};
      const char* behind = scan_plain(p, last_, number);
      if (behind != nullptr && behind < last_ && is_blank(*behind)) {
        value = number;
        at_ = behind;
        after_value_ = true;
        any_ = true;
        return true;
      }
    }
    return slow_field(value);
  }
  bool field(std::string& value);
  template <class Number>
  bool field(std::span<Number> values) {
    for (Number& value : values) {
      if (!field(value)) return false;
    }
    return true;
  }
  /// Passes over one field without looking at it.
  bool skip_field();

  /// The place behind the line in which the record ends.
  [[nodiscard]] const char* end_of_record() const;
  /// True when nothing of a record was found before the text ended.
  [[nodiscard]] bool at_end() const { return ended_ && !any_; }
  /// Where the last field was looked for.
  [[nodiscard]] const char* place() const { return fault_ != nullptr ? fault_ : at_; }

 private:
  enum class Token { value, null, none };

  static bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

  template <class Number>
  bool slow_field(Number& value) {
    switch (next_token()) {
      case Token::value:
        return !quoted_ && parse_number(token_, value);
      case Token::null:
        return true;
      case Token::none:
        break;
    }
    return false;
  }
  Token next_token();
  bool take_value();
  bool take_quoted();
  void take_repeats();

  const char* at_;
  const char* last_;
  const char* fault_ = nullptr;
  std::string_view token_;    // the text of the current value
  std::string text_;          // a quoted value, its doubled quotes undone
  std::int32_t repeats_ = 0;  // how often the current value is still to be given
  bool null_ = false;         // the current value is a null
  bool plain_ = true;         // no repeat is under way and no slash was met
  bool ended_by_slash_ = false;
  bool after_value_ = false;  // a comma that follows belongs to the value before it
  bool quoted_ = false;       // the current value stood in quotes
  bool any_ = false;          // a field (or null) of the record was met
  bool ended_ = false;        // the text ended while a field was wanted
};

class TextInput {
 public:
  /// A file held in memory under a name for messages.
  TextInput(std::string name, std::string content);
  /// Reads or maps the file `path`. On failure the result is not `good` and `reason` says why.
  explicit TextInput(const std::string& path);
  ~TextInput();
  TextInput(const TextInput&) = delete;
  TextInput& operator=(const TextInput&) = delete;

  [[nodiscard]] bool good() const { return reason_.empty(); }
  /// The system's reason why the file cannot be opened or read.
  [[nodiscard]] const std::string& reason() const { return reason_; }
  [[nodiscard]] const std::string& name() const { return name_; }
  /// The whole text.
  [[nodiscard]] std::string_view content() const {
    return {first_, static_cast<std::size_t>(last_ - first_)};
  }

  /// Goes back to the first line.
  void rewind() { seek(0); }
  /// The place of the next record; `seek` returns to it.
  [[nodiscard]] std::size_t tell() const { return static_cast<std::size_t>(at_ - first_); }
  void seek(std::size_t place) {
    at_ = first_ + place;
    released_ = mapping_;
  }
  /// Goes on to a place further down, for readers who parse `content` themselves.
  void pass(std::size_t place) { advance(first_ + place); }
  /// Passes over one line as it stands (a title); false when there is none.
  bool skip_line();
  /// Goes to the first line and passes over it, the title of a data file whose records have
  /// `fields` fields. Warns where it reads as such a record, all numbers: then the file has no
  /// title, and what is passed over is data.
  void pass_title(Log& log, std::size_t fields);
  /// Takes one line as it stands, without its line end; false when there is none.
  bool next_line(std::string_view& line);

  /// Reads one record into `fields` (int32_t, double, float, std::string, or std::span of
  /// numbers); surplus fields are ignored. On `error` some fields may have been set, and
  /// `fault_line` tells where.
  template <class... Fields>
  ReadStatus read(Fields&&... fields) {
    return read_with([&](RecordScanner& scan) { return (scan.field(fields) && ...); });
  }
  /// The same for a record whose fields are not known by type: `take` reads them off the scanner
  /// and returns whether all were there.
  template <class Take>
  ReadStatus read_with(Take&& take) {
    record_ = at_;
    RecordScanner scan(at_, last_);
    if (take(scan)) {
      advance(scan.end_of_record());
      return ReadStatus::ok;
    }
    return failed(scan);
  }

  /// Whether the record read last stands on more than one line, and the line (from 1) in which it
  /// begins.
  [[nodiscard]] bool ran_on() const;
  [[nodiscard]] std::int64_t record_line() const;
  /// Goes back to where the record read last was looked for.
  void seek_record() {
    if (record_ != nullptr) seek(static_cast<std::size_t>(record_ - first_));
  }

  /// Number of records of `fields` fields from here to the end of the text; the place is kept. A
  /// last record that is cut short counts.
  [[nodiscard]] std::size_t count_records(std::size_t fields);
  /// True when the rest of the text can hold `count` further values: each takes a character at
  /// least, but for what repeat counts promise. To be asked before memory for `count` is taken.
  [[nodiscard]] bool can_hold(std::int64_t count) const;

  /// Line (from 1) of the record or field that the last failed read could not take.
  [[nodiscard]] std::int64_t fault_line() const;
  /// Line (from 1) on which the record at `place` (as `tell` gave it) begins.
  [[nodiscard]] std::int64_t line_at(std::size_t place) const;
  /// What the log says of a line: "%%% file NAME, line N".
  [[nodiscard]] std::string line_text(std::int64_t line) const;
  /// Makes the present place the one that `fault_line` tells; for readers of other forms.
  void mark_fault() { fault_ = at_; }

 private:
  void advance(const char* place) {
    at_ = place;
    if (mapping_ != nullptr && at_ - released_ > kReleaseStep) release();
  }
  ReadStatus failed(const RecordScanner& scan);
  [[nodiscard]] const char* record_begin() const;
  [[nodiscard]] std::int64_t line_of(const char* place) const;
  void skip_byte_order_mark();
  void map(int fd, std::size_t size);
  void slurp(int fd, std::size_t size);
  void release();

  static constexpr std::ptrdiff_t kReleaseStep = 1 << 23;

  std::string name_;
  std::string reason_;
  std::string owned_;
  const char* first_ = nullptr;
  const char* last_ = nullptr;
  const char* at_ = nullptr;
  const char* record_ = nullptr;  // where the last record was looked for
  const char* fault_ = nullptr;
  mutable const char* counted_ = nullptr;  // up to here line ends were counted
  mutable std::int64_t line_ = 0;          // so many
  const char* mapping_ = nullptr;   // start of the mapped file; null when `owned_` holds the text
  const char* released_ = nullptr;  // up to here its pages have been given back
};

/// The two records of a file between which a value was interpolated, to be named when it makes no
/// sense.
struct Origin {
  const TextInput* file = nullptr;
  std::array<std::size_t, 2> places{};

  /// "%%% file NAME, lines N and M"; nothing without a file.
  [[nodiscard]] std::string text() const;
};

/// Number of fields of a line, separated by blanks, tabs or commas; a quote (single or double)
/// toggles a state in which separators do not split. A field with a repeat count counts as often
/// as it is given.
[[nodiscard]] std::int64_t count_fields(std::string_view line);

}  // namespace frame
