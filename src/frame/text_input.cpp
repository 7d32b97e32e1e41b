#include "frame/text_input.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

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

}  // namespace

// ---- RecordScanner ----

RecordScanner::Token RecordScanner::next_token() {
  quoted_ = false;
  if (ended_by_slash_) return Token::null;
  if (repeats_ > 0) {
    --repeats_;
    plain_ = repeats_ == 0;
    return repeat_null_ ? Token::null : Token::value;
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
  if (*at_ == '\'' || *at_ == '"') return quoted_token();
  const char* begin = at_;
  while (at_ < last_ && !is_separator(*at_)) ++at_;
  token_ = {begin, static_cast<std::size_t>(at_ - begin)};
  after_value_ = true;
  if (token_.find('*') == std::string_view::npos) return Token::value;
  if (!take_repeat(token_)) return Token::value;  // no number: the field's parser refuses it
  repeat_null_ = token_.empty();
  --repeats_;
  plain_ = repeats_ == 0;
  return repeat_null_ ? Token::null : Token::value;
}

/// Takes the repeat count off `r*value` or `r*`.
bool RecordScanner::take_repeat(std::string_view& token) {
  const std::size_t star = token.find('*');
  std::int32_t count = 0;
  if (!parse_number(token.substr(0, star), count) || count < 1) return false;
  repeats_ = count;
  token.remove_prefix(star + 1);
  return true;
}

RecordScanner::Token RecordScanner::quoted_token() {
  const char quote = *at_;
  text_.clear();
  const char* p = at_ + 1;
  while (p < last_ && *p != '\n') {
    if (*p == quote) {
      if (p + 1 == last_ || p[1] != quote) {
        at_ = p + 1;
        token_ = text_;
        quoted_ = true;
        after_value_ = true;
        return Token::value;
      }
      ++p;
    }
    text_ += *p++;
  }
  return Token::none;  // the quote does not close on its line
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
    slurp(fd);
  }
  if (fd >= 0) ::close(fd);
}

TextInput::~TextInput() {
  if (mapped_) ::munmap(const_cast<char*>(first_), static_cast<std::size_t>(last_ - first_));
}

void TextInput::map(int fd, std::size_t size) {
  void* place = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  if (place == MAP_FAILED) {
    slurp(fd);
    return;
  }
  ::madvise(place, size, MADV_SEQUENTIAL);
  mapped_ = true;
  first_ = at_ = released_ = static_cast<const char*>(place);
  last_ = first_ + size;
}

void TextInput::slurp(int fd) {
  constexpr std::size_t kStep = 1 << 16;
  std::size_t filled = 0;
  for (;;) {
    if (owned_.size() < filled + kStep) owned_.resize(std::max(2 * owned_.size(), filled + kStep));
    const ssize_t got = ::read(fd, owned_.data() + filled, kStep);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) reason_ = std::strerror(errno);
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  owned_.resize(filled);
  owned_.shrink_to_fit();
  first_ = at_ = owned_.data();
  last_ = first_ + filled;
}

/// Gives back the pages that have been parsed; the system keeps them in its own cache.
void TextInput::release() {
  const auto page = static_cast<std::ptrdiff_t>(::sysconf(_SC_PAGESIZE));
  if (at_ < released_) released_ = first_;
  const std::ptrdiff_t size = (at_ - released_) / page * page;
  ::madvise(const_cast<char*>(released_), static_cast<std::size_t>(size), MADV_DONTNEED);
  released_ += size;
}

bool TextInput::skip_line() {
  std::string_view line;
  return next_line(line);
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
  const char* keep = at_;
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
  at_ = keep;
  return count;
}

bool TextInput::can_hold(std::int64_t count) const {
  // A value takes a character and a separator, unless a repeat count stands for many.
  const auto rest = last_ - at_;
  if (count <= rest / 2 + 1) return true;
  return std::memchr(at_, '*', static_cast<std::size_t>(rest)) != nullptr;
}

std::int64_t TextInput::fault_line() const {
  const char* place = fault_ == nullptr ? at_ : fault_;
  // At the end of the text the line that was cut short is the last one that holds anything.
  while (place == last_ || (place > first_ && place < last_ && *place == '\n')) {
    if (place == first_) break;
    --place;
  }
  return 1 + std::count(first_, place, '\n');
}

int count_fields(std::string_view line) {
  int count = 0;
  bool inside = false;
  char quote = 0;
  for (const char c : line) {
    if (quote != 0) {
      if (c == quote) quote = 0;
      continue;
    }
    if (c == ' ' || c == '\t' || c == ',' || c == '\r' || c == '\n') {
      inside = false;
      continue;
    }
    if (!inside) ++count;
    inside = true;
    if (c == '\'' || c == '"') quote = c;
  }
  return count;
}

}  // namespace frame
