#include "frame/text_output.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "frame/log.hpp"

namespace frame {

TextOutput::TextOutput(const std::string& path) : name_(path) {
  fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  if (fd_ < 0) reason_ = std::strerror(errno);
}

TextOutput::~TextOutput() {
  if (fd_ < 0) return;
  drain();
  ::close(fd_);
}

bool TextOutput::holds_earlier() const {
  struct stat info {};
  return !started_ && buffer_.empty() && ::fstat(fd_, &info) == 0 && info.st_size > 0;
}

void TextOutput::rewind(Log& log) {
  buffer_.clear();
  rows_ = 0;
  if (started_) check(log, start_over());
}

/// Empties the file; 0 or the system's error.
int TextOutput::start_over() {
  struct stat info {};
  if (::fstat(fd_, &info) != 0) return errno;
  if (S_ISREG(info.st_mode) && (::ftruncate(fd_, 0) != 0 || ::lseek(fd_, 0, SEEK_SET) != 0)) {
    return errno;
  }
  started_ = true;
  return 0;
}

/// Empties the buffer into the file; 0 or the system's error.
int TextOutput::drain() {
  if (buffer_.empty()) return 0;
  int error = started_ ? 0 : start_over();
  std::string_view rest = buffer_;
  while (error == 0 && !rest.empty()) {
    const ssize_t written = ::write(fd_, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      error = errno;
    }
  }
  buffer_.clear();
  return error;
}

void TextOutput::write_out(Log& log) { check(log, drain()); }

void TextOutput::check(Log& log, int error) const {
  if (error == 0) return;
  log.fail("### error : write error", items("file =", name_), std::strerror(error));
}

}  // namespace frame
