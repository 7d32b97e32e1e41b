#include "out_file.hpp"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>

#include "fault.hpp"

namespace townskin_view {

namespace {
constexpr std::size_t kFull = 1 << 20;
constexpr std::size_t kLongest = 32;

template <class Value>
std::string_view text_of(Value value, std::array<char, kLongest>& text) {
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
  return {text.data(), static_cast<std::size_t>(end - text.data())};
}
}  // namespace

OutFile::OutFile(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "wb")) {
  if (file_ == nullptr) failed();
}

void OutFile::failed() const { throw Fault("cannot write " + path_ + ": " + std::strerror(errno)); }

OutFile& OutFile::put(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() >= kFull) drain();
  return *this;
}

OutFile& OutFile::number(double value) {
  std::array<char, kLongest> text;
  return std::isfinite(value) ? put(text_of(value, text)) : *this;
}
OutFile& OutFile::number(float value) {
  std::array<char, kLongest> text;
  return std::isfinite(value) ? put(text_of(value, text)) : *this;
}
OutFile& OutFile::number(std::int64_t value) {
  std::array<char, kLongest> text;
  return put(text_of(value, text));
}

void OutFile::drain() {
  if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_.get()) != buffer_.size()) failed();
  buffer_.clear();
}

void OutFile::close() {
  drain();
  if (std::fflush(file_.get()) != 0) failed();
  if (std::fclose(file_.release()) != 0) failed();
}

}  // namespace townskin_view
