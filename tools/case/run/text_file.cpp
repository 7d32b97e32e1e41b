#include "run/text_file.hpp"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "frame/numbers.hpp"
#include "report.hpp"

namespace townskin_case {
namespace {

constexpr std::array<double, 20> kTens{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                       1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};

}  // namespace

TextFile::TextFile(const std::string& path) : path_(path) {
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
  file_.reset(std::fopen(path.c_str(), "wb"));
  if (!file_) failed();
  buffer_.reserve(kFull + (kFull >> 3));
}

void TextFile::failed() const {
  throw Fault("cannot write " + path_ + ": " + std::strerror(errno));
}

TextFile& TextFile::put(std::int64_t value) {
  frame::append_number(buffer_, value);
  return *this;
}

TextFile& TextFile::put(double value) {
  frame::append_number(buffer_, value);
  return *this;
}

TextFile& TextFile::share(double value, int digits) {
  constexpr double kLeast = 1e-9;
  if (!(value > 0.0)) return put("0");
  if (value < kLeast) return put(value);
  if (value >= 1.0) return put("1");
  // As an integer of so many digits, with its decimals counted.
  int decimals = digits;
  while (value * kTens[static_cast<std::size_t>(decimals)] <
         kTens[static_cast<std::size_t>(digits - 1)]) {
    ++decimals;
  }
  auto number =
      static_cast<std::int64_t>(std::llround(value * kTens[static_cast<std::size_t>(decimals)]));
  while (number % 10 == 0 && decimals > 0) {
    number /= 10;
    --decimals;
  }
  if (decimals == 0) return put(number);
  std::array<char, 24> text{};
  auto at = text.size();
  for (int d = 0; d < decimals; ++d) {
    text[--at] = static_cast<char>('0' + number % 10);
    number /= 10;
  }
  text[--at] = '.';
  text[--at] = '0';
  return put(std::string_view(text.data() + at, text.size() - at));
}

void TextFile::drain() {
  if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_.get()) != buffer_.size()) failed();
  buffer_.clear();
}

void TextFile::close() {
  drain();
  if (std::fclose(file_.release()) != 0) failed();
}

}  // namespace townskin_case
