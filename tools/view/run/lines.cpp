#include "run/lines.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "frame/numbers.hpp"

namespace townskin_view {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == ','; }

/// The plain number that begins here, else the whole word.
const char* number_at(const char* at, const char* last, double& value) {
  const char* const behind = frame::scan_plain(at, last, value);
  if (behind != nullptr && (behind == last || is_blank(*behind))) return behind;
  const char* const first = at;
  while (at < last && !is_blank(*at)) ++at;
  return frame::parse_number({first, static_cast<std::size_t>(at - first)}, value) ? at : nullptr;
}

}  // namespace

Lines::Lines(const std::string& path) {
  struct stat info {};
  if (path.empty() || ::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return;
  fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  size_ = static_cast<std::uint64_t>(info.st_size);
  buffer_.resize(kPiece + kLongest);
}

Lines::~Lines() {
  if (fd_ >= 0) ::close(fd_);
}

/// Moves what is left to the front and reads on; false when nothing came.
bool Lines::refill() {
  std::memmove(buffer_.data(), buffer_.data() + at_, end_ - at_);
  end_ -= at_;
  at_ = 0;
  if (end_ >= kLongest) return false;
  ssize_t got = 0;
  do {
    got = ::read(fd_, buffer_.data() + end_, kPiece);
  } while (got < 0 && errno == EINTR);
  if (got <= 0) return false;
  end_ += static_cast<std::size_t>(got);
  return true;
}

bool Lines::next(std::string_view& line) {
  if (fd_ < 0) return false;
  for (std::size_t searched = at_;;) {
    const char* const from = buffer_.data() + searched;
    const auto* end = static_cast<const char*>(std::memchr(from, '\n', end_ - searched));
    if (end != nullptr) {
      line = {buffer_.data() + at_, static_cast<std::size_t>(end - buffer_.data()) - at_};
      at_ = static_cast<std::size_t>(end - buffer_.data()) + 1;
      ++number_;
      return true;
    }
    const std::size_t left = end_ - at_;
    if (!refill()) {
      cut_ = end_ > at_;
      return false;
    }
    searched = left;
  }
}

std::size_t numbers_of(std::string_view line, std::span<double> to) {
  const char* at = line.data();
  const char* const last = at + line.size();
  for (std::size_t n = 0; n < to.size(); ++n) {
    while (at < last && is_blank(*at)) ++at;
    if (at == last) return n;
    at = number_at(at, last, to[n]);
    if (at == nullptr) return n;
  }
  return to.size();
}

}  // namespace townskin_view
