#include "frame/log.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>

#include "frame/text_input.hpp"

namespace frame {

namespace {
constexpr std::size_t kPendingLimit = 1 << 16;
}

Log::Log(std::ostream& screen, std::ostream& errors) : screen_(screen), errors_(errors) {}

Log::~Log() {
  try {
    flush();
  } catch (const Stop&) {
    // Reported on standard error; nothing more can be done at this point.
  }
  if (fd_ >= 0) ::close(fd_);
}

void Log::open(const std::string& name) {
  use_screen();
  name_ = name;
  fd_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd_ < 0) {
    errors_ << "### cannot open " << name << " : " << std::strerror(errno) << std::endl;
    throw Stop{kStatusOpenError};
  }
}

void Log::use_screen() {
  flush();
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

void Log::error_and_log(std::string_view text) {
  errors_ << text << std::endl;
  write_line(text);
  flush();
}

void Log::write_line(std::string_view text) {
  if (is_screen()) {
    screen_ << text << '\n';
    return;
  }
  pending_ += text;
  pending_ += '\n';
  if (pending_.size() > kPendingLimit) flush();
}

void Log::write_screen(std::string_view text) {
  screen_ << text << '\n';
  screen_.flush();
}

void Log::write_everywhere(std::string_view text) {
  if (text.empty()) return;
  write_screen(text);
  if (!is_screen()) write_line(text);
}

void Log::write_read_fault(const TextInput& file) { write_line(file.line_text(file.fault_line())); }

void Log::note_tag(std::string_view text) noexcept {
  try {
    write_line(text);
  } catch (...) {
    // The failure that unwinds is what the user has to see; a lost tag must not replace it.
    errors_ << text << std::endl;
  }
}

void Log::unwind() {
  failing_ = true;
  throw Failure{};
}

void Log::flush() {
  if (is_screen()) {
    screen_.flush();
    return;
  }
  std::string_view rest = pending_;
  while (!rest.empty()) {
    const ssize_t written = ::write(fd_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      pending_.clear();
      errors_ << "### cannot write " << name_ << " : " << std::strerror(errno) << std::endl;
      throw Stop{kStatusOpenError};
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  pending_.clear();
}

}  // namespace frame
