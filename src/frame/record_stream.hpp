// A file of unformatted sequential records, read or written record by record: what is too large to
// be held whole, as the sets of fields that the flow solver leaves.
//
// The frames are those of record_file.hpp. A file is written beside the old one and renamed over
// it when it is whole, so that a run killed at any moment leaves the old state or the new one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace frame {

class Log;

/// Reads records in their order.
class RecordStream {
 public:
  explicit RecordStream(const std::string& path);
  ~RecordStream();
  RecordStream(const RecordStream&) = delete;
  RecordStream& operator=(const RecordStream&) = delete;

  enum class Next { record, end, cut };
  /// Goes to the next record: `end` where the file ends, `cut` where what follows is no whole
  /// record. A file that cannot be opened ends at once.
  Next next();
  /// Bytes of the present record, its number from 1, and the place in the file behind it.
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] std::int64_t number() const { return number_; }
  [[nodiscard]] std::uint64_t behind() const { return behind_; }
  /// Reads the present record; `to` has its size. False when the file cannot be read.
  bool read(std::span<std::byte> to) const;

 private:
  bool read_at(std::uint64_t place, std::span<std::byte> to) const;

  int fd_ = -1;
  std::uint64_t file_size_ = 0;
  std::uint64_t behind_ = 0;
  std::size_t size_ = 0;
  std::int64_t number_ = 0;
};

/// Writes a file anew, or to a device (/dev/null) as it is. Each call fails, naming the file and
/// the system's reason, when the disk cannot take it; the old file then stands as it was.
class RecordWriter {
 public:
  /// Begins with the first `kept` bytes of the old file.
  RecordWriter(Log& log, std::string name, std::uint64_t kept = 0);
  /// Without `settle` what was written goes.
  ~RecordWriter();
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;

  void write(std::span<const std::byte> record);
  /// Puts the new file in the place of the old one. Returns its size in bytes.
  std::uint64_t settle();

 private:
  [[noreturn]] void fail(int error);
  void write_all(const void* data, std::size_t size);
  void make_beside();
  void copy(std::uint64_t bytes);

  Log& log_;
  std::string name_;    // as the user gave it
  std::string target_;  // links followed
  std::string beside_;  // the new file, made under a name that nothing had
  bool device_ = false;
  int fd_ = -1;
  std::uint64_t size_ = 0;
};

/// Appends a record, with its length before and after, to a buffer.
void append_record(std::string& buffer, std::span<const std::byte> record);

}  // namespace frame
