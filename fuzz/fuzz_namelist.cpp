// Any bytes as a control file: a group that is read must be echoed as a group that reads the same.
#include <array>
#include <cstdlib>
#include <sstream>

#include "frame/namelist.hpp"

namespace {

/// The echo of the group in `content`; empty when there is none or it cannot be read.
std::string echo_of(std::string content) {
  std::ostringstream screen;
  frame::Log log(screen, screen);
  std::int32_t n = 1;
  double x = 0.5;
  bool flag = false;
  std::string text = "it's";
  std::array<std::int32_t, 3> list{};
  std::array<double, 2> pair{};
  frame::Group group("A", {{"N", n, frame::positive("n =", n)},
                           {"X", x},
                           {"FLAG", flag},
                           {"TEXT", text},
                           {"LIST", std::span(list)},
                           {"PAIR", std::span(pair)}});
  frame::TextInput file("fuzz", std::move(content));
  try {
    return group.read(log, file) ? group.text() : "";
  } catch (const frame::Failure&) {
    if (screen.str().find("### error") == std::string::npos) std::abort();
    return "";
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string echo = echo_of({reinterpret_cast<const char*>(data), size});
  if (!echo.empty() && echo_of(echo) != echo) std::abort();
  return 0;
}
