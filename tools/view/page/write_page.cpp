#include "page/write_page.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "page/pack.hpp"
#include "page/payload.hpp"
#include "page/template.hpp"

namespace townskin_view {

namespace {

/// A replaced sign: "<" as "&lt;".
std::string replaced(std::string_view text,
                     std::initializer_list<std::pair<char, std::string_view>> signs) {
  std::string result;
  for (const char c : text) {
    std::string_view as(&c, 1);
    for (const auto& [sign, by] : signs) {
      if (c == sign) as = by;
    }
    result += as;
  }
  return result;
}

class PageFile {
 public:
  explicit PageFile(const std::string& path) : path_(path), file_(path, std::ios::binary) {
    check();
  }
  PageFile& put(std::string_view text) {
    file_.write(text.data(), static_cast<std::streamsize>(text.size()));
    return *this;
  }
  void element(std::string_view type, std::string_view id, std::string_view text) {
    put("<script type=\"").put(type).put("\" id=\"").put(id).put("\">").put(text);
    put("</script>\n");
    check();
  }
  void close() {
    file_.close();
    check();
  }

 private:
  void check() const {
    if (!file_) throw Fault(path_ + " cannot be written: " + std::strerror(errno));
  }
  std::string path_;
  std::ofstream file_;
};

}  // namespace

void BlockSink::add(const std::string& name, std::span<const std::uint8_t> numbers,
                    std::size_t delta) {
  list_[name] = {{"type", "u8"}, {"delta", delta}};
  write_(name, pack(numbers, delta));
}
void BlockSink::add(const std::string& name, std::span<const std::uint16_t> numbers,
                    std::size_t delta) {
  list_[name] = {{"type", "u16"}, {"delta", delta}};
  write_(name, pack(numbers, delta));
}
void BlockSink::add(const std::string& name, std::span<const std::int32_t> numbers,
                    std::size_t delta) {
  list_[name] = {{"type", "i32"}, {"delta", delta}};
  write_(name, pack(numbers, delta));
}

std::string as_html(std::string_view text) {
  return replaced(text, {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}});
}

std::string as_json_in_html(const nlohmann::json& value) {
  const std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return replaced(text, {{'<', "\\u003c"}, {'>', "\\u003e"}});
}

void write_page(const RunModel& run, const std::string& path) {
  static constexpr std::string_view kTitle = "@TITLE@", kData = "<!--DATA-->";
  const std::string_view page = page_template();
  const std::size_t title = page.find(kTitle), data = page.find(kData);
  if (title == std::string_view::npos || data == std::string_view::npos || data < title) {
    throw Fault("the program was built with a page without places for title and data");
  }
  PageFile file(path);
  file.put(page.substr(0, title)).put(as_html(run.name));
  file.put(page.substr(title + kTitle.size(), data - title - kTitle.size()));

  BlockSink sink([&](std::string_view name, const std::string& text) {
    file.element("application/octet-stream", "block-" + std::string(name), text);
  });
  nlohmann::json head;
  head["program"] = "townskin_view " TOWNSKIN_VERSION;
  add_words(run, head);
  add_patches(run, sink, head);
  add_shapes(run, sink, head);
  add_fields(run, sink, head);
  head["blocks"] = sink.list();
  file.element("application/json", "head", as_json_in_html(head));
  file.put(page.substr(data + kData.size()));
  file.close();
}

}  // namespace townskin_view
