#include "frame/text_input.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "frame/log.hpp"

namespace frame {

namespace {

constexpr std::size_t kMapFrom = 1 << 20;

bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool is_separator(char c) { return is_space(c) || c == ',' || c == '/'; }

const char* behind_line(const char* at, const char* last) {
  const auto* end =
      static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(last - at)));
  return end == nullptr ? last : end + 1;
}

/// Takes a repeat count and its star off `text`: the count, 1 where none stands.
std::int32_t take_count(std::string_view& text) {
  const std::size_t star = std::min(text.find_first_not_of("0123456789"), text.size());
  std::int32_t count = 0;
  if (star == text.size() || text[star] != '*') return 1;
  if (!parse_number(text.substr(0, star), count) || count < 1) return 1;
  text.remove_prefix(star + 1);
  return count;
}

}  // namespace

// ---- RecordScanner ----

RecordScanner::Token RecordScanner::next_token() {
  if (ended_by_slash_) return Token::null;
  if (repeats_ > 0) {
    --repeats_;
    plain_ = repeats_ == 0;
    return null_ ? Token::null : Token::value;
  }
  const auto skip_space = [this] {
    while (at_ < last_ && is_space(*at_)) ++at_;
  };
  skip_space();
  if (after_value_ && at_ < last_ && *at_ == ',') {
    ++at_;
    skip_space();
  }
  after_value_ = false;
  fault_ = at_;
  if (at_ == last_) {
    ended_ = true;
    return Token::none;
  }
  any_ = true;
  if (*at_ == ',') {
    ++at_;
    return Token::null;
  }
  if (*at_ == '/') {
    ended_by_slash_ = true;
    plain_ = false;
    return Token::null;
  }
  take_repeats();
  if (!take_value()) return Token::none;
  --repeats_;
  plain_ = repeats_ == 0;
  return null_ ? Token::null : Token::value;
}

/// Takes the count off `r*value` or `r*`. What is no such count is left to be the value's text.
void RecordScanner::take_repeats() {
  std::string_view rest(at_, static_cast<std::size_t>(last_ - at_));
  repeats_ = take_count(rest);
  at_ = rest.data();
}

/// Takes the text up to the next separator; an empty one (behind a repeat count) is a null.
bool RecordScanner::take_value() {
  quoted_ = at_ < last_ && (*at_ == '\'' || *at_ == '"');
  null_ = false;
  after_value_ = true;
  if (quoted_) return take_quoted();
  const char* begin = at_;
  while (at_ < last_ && !is_separator(*at_)) ++at_;
  token_ = {begin, static_cast<std::size_t>(at_ - begin)};
  null_ = token_.empty();
  return true;
}

bool RecordScanner::take_quoted() {
  const char quote = *at_;
  text_.clear();
  const char* p = at_ + 1;
  while (p < last_ && *p != '\n') {
    if (*p == quote) {
      if (p + 1 == last_ || p[1] != quote) {
        at_ = p + 1;
        token_ = text_;
        return true;
      }
      ++p;
    }
    text_ += *p++;
  }
  return false;  // the quote does not close on its line
}

bool RecordScanner::field(std::string& value) {
  switch (next_token()) {
    case Token::value:
      value = token_;
      return true;
    case Token::null:
      return true;
    case Token::none:
      break;
  }
  return false;
}

bool RecordScanner::skip_field() { return next_token() != Token::none; }

const char* RecordScanner::end_of_record() const { return behind_line(at_, last_); }

// ---- TextInput ----

TextInput::TextInput(std::string name, std::string content)
    : name_(std::move(name)), owned_(std::move(content)) {
  first_ = at_ = owned_.data();
  last_ = first_ + owned_.size();
  skip_byte_order_mark();
}

TextInput::TextInput(const std::string& path) : name_(path) {
  first_ = last_ = at_ = owned_.data();
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat info {};
  if (fd < 0 || ::fstat(fd, &info) != 0) {
    reason_ = std::strerror(errno);
  } else if (S_ISREG(info.st_mode) && static_cast<std::size_t>(info.st_size) >= kMapFrom) {
    map(fd, static_cast<std::size_t>(info.st_size));
  } else {
    slurp(fd, S_ISREG(info.st_mode) ? static_cast<std::size_t>(info.st_size) : 0);
  }
  if (fd >= 0) ::close(fd);
  skip_byte_order_mark();
}

TextInput::~TextInput() {
  if (mapping_ == nullptr) return;
  ::munmap(const_cast<char*>(mapping_), static_cast<std::size_t>(last_ - mapping_));
}

void TextInput::map(int fd, std::size_t size) {
  void* place = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  if (place == MAP_FAILED) {
    slurp(fd, size);
    return;
  }
  ::madvise(place, size, MADV_SEQUENTIAL);
  first_ = at_ = mapping_ = released_ = static_cast<const char*>(place);
  last_ = first_ + size;
}

/// Reads to the end. `size` is what the file is said to have; a pipe tells none.
void TextInput::slurp(int fd, std::size_t size) {
  constexpr std::size_t kStep = 1 << 16;
  std::size_t filled = 0;
  owned_.resize(size + 1);  // one more, so that the read behind the last byte finds the end
  for (;;) {
    if (owned_.size() == filled) owned_.resize(std::max(2 * filled, filled + kStep));
    const ssize_t got = ::read(fd, owned_.data() + filled, owned_.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) reason_ = std::strerror(errno);
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  owned_.resize(filled);
  first_ = at_ = owned_.data();
  last_ = first_ + filled;
}

/// Spreadsheets put a byte order mark before the first line; it is no part of the text.
void TextInput::skip_byte_order_mark() {
  if (content().substr(0, 3) == "\xEF\xBB\xBF") first_ = at_ = first_ + 3;
}

/// Gives back the pages that have been parsed; the system keeps them in its own cache.
void TextInput::release() {
  const auto page = static_cast<std::ptrdiff_t>(::sysconf(_SC_PAGESIZE));
  const std::ptrdiff_t size = (at_ - released_) / page * page;
  ::madvise(const_cast<char*>(released_), static_cast<std::size_t>(size), MADV_DONTNEED);
  released_ += size;
}

bool TextInput::skip_line() {
  std::string_view line;
  return next_line(line);
}

void TextInput::pass_title(Log& log, std::size_t fields) {
  constexpr double kUnset = std::numeric_limits<double>::quiet_NaN();
  rewind();
  std::string_view title;
  if (!next_line(title) || fields > title.size()) return;
  RecordScanner scan(title.data(), title.data() + title.size());
  for (std::size_t i = 0; i < fields; ++i) {
    double value = kUnset;  // what a null leaves, also behind the slash of a date
    if (!scan.field(value) || std::isnan(value)) return;
  }
  log.warn("the title line reads as a record, it is not used as one : file", name_);
}

bool TextInput::next_line(std::string_view& line) {
  if (at_ == last_) return false;
  const char* behind = behind_line(at_, last_);
  line = {at_, static_cast<std::size_t>(behind - at_)};
  if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  advance(behind);
  return true;
}

ReadStatus TextInput::failed(const RecordScanner& scan) {
  fault_ = scan.place();
  if (scan.at_end()) {
    at_ = last_;
    return ReadStatus::end;
  }
  return ReadStatus::error;
}

std::size_t TextInput::count_records(std::size_t fields) {
  const std::size_t keep = tell();
  std::size_t count = 0;
  for (;;) {
    RecordScanner scan(at_, last_);
    bool whole = true;
    for (std::size_t i = 0; i < fields && whole; ++i) whole = scan.skip_field();
    if (scan.at_end()) break;
    ++count;
    if (!whole) break;
    advance(scan.end_of_record());
  }
  seek(keep);
  return count;
}

bool TextInput::can_hold(std::int64_t count) const {
  std::int64_t room = last_ - at_ + 1;  // a null takes a comma only
  const char* star = at_;
  const auto find_star = [&] {
    return static_cast<const char*>(std::memchr(star, '*', static_cast<std::size_t>(last_ - star)));
  };
  for (; room < count && (star = find_star()) != nullptr; ++star) {
    const char* digit = star;
    while (digit > at_ && star - digit < 10 && digit[-1] >= '0' && digit[-1] <= '9') --digit;
    std::int32_t repeats = 0;
    parse_number({digit, static_cast<std::size_t>(star - digit)}, repeats);
    room += repeats;
  }
  return count <= room;
}

std::int64_t TextInput::fault_line() const {
  const char* place = fault_ == nullptr ? at_ : fault_;
  // At the end of the text the line that was cut short is the last one that holds anything.
  if (place == last_) {
    while (place > first_ && is_space(place[-1])) --place;
  }
  return line_of(place);
}

/// Line of a place, counted on, or back, from the place that was asked for last.
std::int64_t TextInput::line_of(const char* place) const {
  if (counted_ == nullptr) counted_ = first_;
  if (counted_ > place) {
    line_ -= std::count(place, counted_, '\n');
  } else {
    line_ += std::count(counted_, place, '\n');
  }
  counted_ = place;
  return 1 + line_;
}

/// The first character of the record read last.
const char* TextInput::record_begin() const {
  const char* begin = record_;
  while (begin < at_ && is_space(*begin)) ++begin;
  return begin;
}

bool TextInput::ran_on() const { return behind_line(record_begin(), at_) < at_; }

std::int64_t TextInput::record_line() const {
  if (record_ == nullptr) return 1;
  return line_at(static_cast<std::size_t>(record_ - first_));
}

std::int64_t TextInput::line_at(std::size_t place) const {
  const char* p = first_ + place;
  while (p < last_ && is_space(*p)) ++p;
  return line_of(p);
}

std::string TextInput::line_text(std::int64_t line) const {
  return "%%% file " + name() + ", line " + std::to_string(line);
}

std::string Origin::text() const {
  if (file == nullptr) return {};
  const std::array<std::int64_t, 2> lines{file->line_at(places[0]), file->line_at(places[1])};
  if (lines[0] == lines[1]) return file->line_text(lines[0]);
  return "%%% file " + file->name() + ", lines " + std::to_string(lines[0]) + " and " +
         std::to_string(lines[1]);
}

std::int64_t count_fields(std::string_view line) {
  std::int64_t count = 0;
  bool inside = false;
  char quote = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quote != 0) {
      if (c == quote) quote = 0;
      continue;
    }
    if (c == ' ' || c == '\t' || c == ',' || c == '\r' || c == '\n') {
      inside = false;
      continue;
    }
    if (!inside) {
      std::string_view field = line.substr(i);
      count += take_count(field);
    }
    inside = true;
    if (c == '\'' || c == '"') quote = c;
  }
  return count;
}

}  // namespace frame
