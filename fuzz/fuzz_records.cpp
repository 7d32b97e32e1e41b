// Any bytes as a file of records: read as numbers, as texts and counted, all three must agree.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "frame/text_input.hpp"

namespace {

/// True when the text of a field gives the bits of `value`; a null (which leaves `?`) gives 7.
template <class Number>
bool same(const std::string& text, Number value) {
  Number expected = 7;
  if (text != "?" && !frame::parse_number(text, expected)) return false;
  return std::memcmp(&value, &expected, sizeof value) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string content(reinterpret_cast<const char*>(data), size);
  frame::TextInput numbers("fuzz", content);
  frame::TextInput texts("fuzz", content);
  const std::size_t expected = texts.count_records(3);
  std::size_t count = 0;
  for (;;) {
    std::int32_t i = 7;
    double x = 7;
    float y = 7;
    std::string a = "?", b = "?", c = "?";
    const frame::ReadStatus read = numbers.read(i, x, y);
    const frame::ReadStatus as_text = texts.read(a, b, c);
    if (read == frame::ReadStatus::ok) {
      if (as_text != read || numbers.tell() != texts.tell()) std::abort();
      if (!same(a, i) || !same(b, x) || !same(c, y)) std::abort();
    }
    if (as_text == frame::ReadStatus::error && texts.fault_line() < 1) std::abort();
    count += as_text != frame::ReadStatus::end;
    if (as_text != frame::ReadStatus::ok) break;
    numbers.seek(texts.tell());
  }
  if (count != expected) std::abort();
  texts.rewind();
  for (std::string_view line; texts.next_line(line);) {
    // Where no separator but blanks stands, the count is that of the values a record takes.
    constexpr std::int64_t kMost = 1000;
    if (line.find_first_of(",/'\"") != std::string_view::npos) continue;
    frame::RecordScanner scan(line.data(), line.data() + line.size());
    std::int64_t taken = 0;
    while (taken < kMost && scan.skip_field()) ++taken;
    if (taken != std::min(frame::count_fields(line), kMost)) std::abort();
  }
  return 0;
}
