#include "frame/record_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/log.hpp"

namespace frame {

namespace {

constexpr std::size_t kMark = sizeof(std::uint32_t);

/// The file that a name stands for, links followed.
std::string resolved(const std::string& name) {
  char* path = ::realpath(name.c_str(), nullptr);
  if (path == nullptr) return name;
  std::string result = path;
  std::free(path);
  return result;
}

/// True for what is no plain file (/dev/null): it is written to, never replaced.
bool is_device(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode);
}

bool write_all(int fd, const void* data, std::size_t size) {
  const char* at = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = ::write(fd, at, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    at += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

bool write_records(int fd, std::span<const std::span<const std::byte>> records) {
  for (const auto record : records) {
    const auto mark = static_cast<std::uint32_t>(record.size());
    if (!write_all(fd, &mark, kMark) || !write_all(fd, record.data(), record.size()) ||
        !write_all(fd, &mark, kMark)) {
      return false;
    }
  }
  return true;
}

/// A file that was made here, under a name that nothing had.
struct NewFile {
  std::string name;
  int fd;  ///< negative: none could be made, for the reason in errno
};

/// Makes a file beside `target`. What has a name already (an input, a file of the user, what a
/// killed run left behind) is passed over and left as it is.
NewFile make_beside(const std::string& target) {
  constexpr int kNames = 10'000;
  NewFile file{target + ".new", -1};
  for (int n = 1; n <= kNames; ++n) {
    file.fd = ::open(file.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file.fd >= 0 || errno != EEXIST) break;
    file.name = target + ".new" + std::to_string(n);
  }
  return file;
}

/// Gives the new file the permissions of the one it replaces and brings it to the disk.
bool settle(int fd, const std::string& replaced) {
  struct stat info {};
  if (::stat(replaced.c_str(), &info) == 0 && ::fchmod(fd, info.st_mode & 07777) != 0) return false;
  return ::fsync(fd) == 0;
}

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

/// Makes the rename itself durable.
void sync_folder_of(const std::string& path) {
  const int fd = ::open(folder_of(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace

bool RecordFile::check_access() {
  const int fd = ::open(name_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd >= 0) ::close(fd);
  // The new file is made beside the old one: a folder that takes none is a fault to find now, not
  // at the end of the first day.
  const bool good =
      fd >= 0 && (is_device(name_) || ::access(folder_of(resolved(name_)).c_str(), W_OK) == 0);
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
  const std::string target = resolved(name_);
  const bool device = is_device(target);
  const auto fail = [&](int error) {
    log.fail("### error : write error", items("file =", name_), std::strerror(error));
  };
  for (const auto record : records) {
    if (record.size() > INT32_MAX) fail(EFBIG);
  }
  const NewFile file =
      device ? NewFile{target, ::open(target.c_str(), O_WRONLY | O_CLOEXEC)} : make_beside(target);
  if (file.fd < 0) fail(errno);
  const auto fail_without = [&](int error) {
    if (!device) ::unlink(file.name.c_str());
    fail(error);
  };
  const bool written = write_records(file.fd, records) && (device || settle(file.fd, target));
  const int error = errno;
  const bool closed = ::close(file.fd) == 0;
  if (!written) fail_without(error);
  if (!closed) fail_without(errno);
  if (device) return;
  if (::rename(file.name.c_str(), target.c_str()) != 0) fail_without(errno);
  sync_folder_of(target);
}

}  // namespace frame
