#include "frame/record_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/file_names.hpp"
#include "frame/record_stream.hpp"

namespace frame {

namespace {

constexpr std::size_t kMark = sizeof(std::uint32_t);

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

}  // namespace

bool RecordFile::check_access() {
  const int fd = ::open(name_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd >= 0) ::close(fd);
  // The new file is made beside the old one: a folder that takes none is a fault to find now, not
  // at the end of the first day.
  const bool good =
      fd >= 0 && (is_device(name_) || ::access(folder_of(link_target(name_)).c_str(), W_OK) == 0);
  if (!good) reason_ = std::strerror(errno);
  return good;
}

bool RecordFile::load() {
  unload();
  const int fd = ::open(name_.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT;
  struct stat info {};
  std::size_t filled = 0;
  if (::fstat(fd, &info) == 0) content_.resize(static_cast<std::size_t>(info.st_size));
  while (filled < content_.size()) {
    const ssize_t got = ::read(fd, content_.data() + filled, content_.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  ::close(fd);
  if (filled < content_.size()) return false;
  std::size_t at = 0;
  while (at < content_.size()) {
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    if (content_.size() - at < 2 * kMark) return false;
    std::memcpy(&before, content_.data() + at, kMark);
    if (content_.size() - at - 2 * kMark < before) return false;
    std::memcpy(&after, content_.data() + at + kMark + before, kMark);
    if (before != after) return false;
    records_.emplace_back(content_.data() + at + kMark, before);
    at += before + 2 * kMark;
  }
  return true;
}

void RecordFile::unload() {
  records_.clear();
  content_.clear();
  content_.shrink_to_fit();
}

void RecordFile::replace(Log& log, std::span<const std::span<const std::byte>> records) {
  RecordWriter writer(log, name_);
  for (const auto record : records) writer.write(record);
  writer.settle();
}

}  // namespace frame
