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
  if (fd_ >= 0) ::close(fd_);
}

void TextOutput::rewind(Log& log) {
  buffer_.clear();
  if (started_) start_over(log);
}

void TextOutput::start_over(Log& log) {
  struct stat info {};
  if (::fstat(fd_, &info) != 0) fail(log, errno);
  if (S_ISREG(info.st_mode) && (::ftruncate(fd_, 0) != 0 || ::lseek(fd_, 0, SEEK_SET) != 0)) {
    fail(log, errno);
  }
  started_ = true;
}

void TextOutput::write_out(Log& log) {
  if (buffer_.empty()) return;
  if (!started_) start_over(log);
  std::string_view rest = buffer_;
  while (!rest.empty()) {
    const ssize_t written = ::write(fd_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      const int error = errno;
      buffer_.clear();
      fail(log, error);
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  buffer_.clear();
}

void TextOutput::fail(Log& log, int error) const {
  log.fail("### error : write error", items("file =", name_), std::strerror(error));
}

}  // namespace frame
