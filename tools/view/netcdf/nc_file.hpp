// A NetCDF-4 file that is written: what the library calls returns is turned into faults.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace townskin_view {

class NcFile {
 public:
  explicit NcFile(const std::string& path);
  ~NcFile();
  NcFile(const NcFile&) = delete;
  NcFile& operator=(const NcFile&) = delete;

  [[nodiscard]] int dimension(const std::string& name, std::size_t size);
  /// A variable of `type` over `dimensions`; large ones are compressed, an hour a chunk.
  [[nodiscard]] int variable(const std::string& name, int type, const std::vector<int>& dimensions);
  /// Attributes; `variable` NC_GLOBAL for those of the file. Empty texts are left out.
  void text(int variable, const char* name, std::string_view value);
  void number(int variable, const char* name, double value);
  void number(int variable, const char* name, std::int32_t value);
  void bytes(int variable, const char* name, std::span<const signed char> values);
  void fill(int variable, float value);
  void fill(int variable, std::int32_t value);
  /// From here on values are written.
  void end_definitions();
  void put(int variable, std::span<const float> values);
  void put(int variable, std::span<const double> values);
  void put(int variable, std::span<const std::int32_t> values);
  void put(int variable, std::span<const signed char> values);
  /// The values of one hour, or rows from `first` on of a table.
  void put_hour(int variable, std::size_t hour, std::span<const float> values);
  void put_rows(int variable, std::size_t first, std::size_t width,
                std::span<const std::int32_t> values);
  /// Brings everything to the disk; without it the file is cut.
  void close();

 private:
  void check(int status) const;

  std::string path_;
  int id_ = -1;
};

}  // namespace townskin_view
