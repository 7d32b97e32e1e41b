#include "frame/record_stream.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "frame/file_names.hpp"
#include "frame/log.hpp"

namespace frame {

namespace {

constexpr std::size_t kMark = sizeof(std::uint32_t);
constexpr std::size_t kLongest = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t kPiece = 1 << 20;

/// An open file that is closed with the block.
struct Opened {
  int fd;
  explicit Opened(int descriptor) : fd(descriptor) {}
  ~Opened() {
    if (fd >= 0) ::close(fd);
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
};

/// Gives the new file the permissions of the one it replaces and brings it to the disk.
bool brought_to_disk(int fd, const std::string& replaced) {
  struct stat info {};
  if (::stat(replaced.c_str(), &info) == 0 && ::fchmod(fd, info.st_mode & 07777) != 0) return false;
  return ::fsync(fd) == 0;
}

/// Makes the rename itself durable.
void sync_folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace

// ---- RecordStream ----

RecordStream::RecordStream(const std::string& path)
    : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  struct stat info {};
  if (fd_ >= 0 && ::fstat(fd_, &info) == 0) file_size_ = static_cast<std::uint64_t>(info.st_size);
}

RecordStream::~RecordStream() {
  if (fd_ >= 0) ::close(fd_);
}

RecordStream::Next RecordStream::next() {
  if (behind_ == file_size_) return Next::end;
  ++number_;
  std::uint32_t before = 0;
  std::uint32_t after = 0;
  const std::uint64_t rest = file_size_ - behind_;
  if (rest < 2 * kMark || !read_at(behind_, std::as_writable_bytes(std::span(&before, 1))) ||
      rest - 2 * kMark < before ||
      !read_at(behind_ + kMark + before, std::as_writable_bytes(std::span(&after, 1))) ||
      before != after) {
    return Next::cut;
  }
  size_ = before;
  behind_ += before + 2 * kMark;
  return Next::record;
}

bool RecordStream::read(std::span<std::byte> to) const {
  return read_at(behind_ - kMark - size_, to);
}

bool RecordStream::read_at(std::uint64_t place, std::span<std::byte> to) const {
  while (!to.empty()) {
    const ssize_t got = ::pread(fd_, to.data(), to.size(), static_cast<off_t>(place));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    place += static_cast<std::uint64_t>(got);
    to = to.subspan(static_cast<std::size_t>(got));
  }
  return true;
}

// ---- RecordWriter ----

RecordWriter::RecordWriter(Log& log, std::string name, std::uint64_t kept)
    : log_(log), name_(std::move(name)), target_(link_target(name_)), device_(is_device(target_)) {
  if (device_) {
    fd_ = ::open(target_.c_str(), O_WRONLY | O_CLOEXEC);
  } else {
    make_beside();
  }
  if (fd_ < 0) fail(errno);
  if (!device_) copy(kept);
}

/// Makes a file beside the target. What has a name already (an input, a file of the user, what a
/// killed run left behind) is passed over and left as it is.
void RecordWriter::make_beside() {
  constexpr int kNames = 10'000;
  std::string name = target_ + ".new";
  for (int n = 1; n <= kNames; ++n) {
    fd_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd_ >= 0) beside_ = name;
    if (fd_ >= 0 || errno != EEXIST) return;
    name = target_ + ".new" + std::to_string(n);
  }
}

RecordWriter::~RecordWriter() {
  if (fd_ < 0) return;
  ::close(fd_);
  if (!beside_.empty()) ::unlink(beside_.c_str());
}

void RecordWriter::write(std::span<const std::byte> record) {
  if (record.size() > kLongest) fail(EFBIG);
  const auto mark = static_cast<std::uint32_t>(record.size());
  write_all(&mark, kMark);
  write_all(record.data(), record.size());
  write_all(&mark, kMark);
}

std::uint64_t RecordWriter::settle() {
  if (!device_ && !brought_to_disk(fd_, target_)) fail(errno);
  const int closed = ::close(fd_);
  fd_ = -1;
  if (closed != 0) fail(errno);
  if (device_) return 0;
  if (::rename(beside_.c_str(), target_.c_str()) != 0) fail(errno);
  sync_folder_of(target_);
  return size_;
}

void RecordWriter::fail(int error) {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  if (!beside_.empty()) ::unlink(beside_.c_str());
  log_.fail("### error : write error", items("file =", name_), std::strerror(error));
}

void RecordWriter::write_all(const void* data, std::size_t size) {
  const char* at = static_cast<const char*>(data);
  size_ += size;
  while (size > 0) {
    const ssize_t written = ::write(fd_, at, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail(errno);
    at += written;
    size -= static_cast<std::size_t>(written);
  }
}

void RecordWriter::copy(std::uint64_t bytes) {
  if (bytes == 0) return;
  const Opened from(::open(target_.c_str(), O_RDONLY | O_CLOEXEC));
  if (from.fd < 0) fail(errno);
  std::vector<char> piece(static_cast<std::size_t>(std::min<std::uint64_t>(bytes, kPiece)));
  while (bytes > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, kPiece));
    const ssize_t got = ::read(from.fd, piece.data(), wanted);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) fail(got < 0 ? errno : EIO);
    write_all(piece.data(), static_cast<std::size_t>(got));
    bytes -= static_cast<std::uint64_t>(got);
  }
}

void append_record(std::string& buffer, std::span<const std::byte> record) {
  const auto mark = static_cast<std::uint32_t>(record.size());
  const auto add = [&](const void* data, std::size_t size) {
    buffer.append(static_cast<const char*>(data), size);
  };
  add(&mark, kMark);
  add(record.data(), record.size());
  add(&mark, kMark);
}

}  // namespace frame
