// A file that is written through one large buffer; a full disk is a fault.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace townskin_view {

class OutFile {
 public:
  explicit OutFile(const std::string& path);

  OutFile& put(std::string_view text);
  /// The shortest form that reads back to the same value; what is not a number as nothing.
  OutFile& number(double value);
  OutFile& number(float value);
  OutFile& number(std::int64_t value);
  /// Brings everything to the file; without it the file is cut.
  void close();

 private:
  void drain();
  [[noreturn]] void failed() const;

  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::string path_;
  std::unique_ptr<std::FILE, Closer> file_;
  std::string buffer_;
};

}  // namespace townskin_view
