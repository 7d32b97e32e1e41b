#include "page/write_page.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <vector>

#include "page/pack.hpp"
#include "page/payload.hpp"
#include "page/template.hpp"

namespace townskin_view {

namespace {

/// What the page shows when it opens.
constexpr std::string_view kFirstField = "field-surface_temperature";

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
    check();
    return *this;
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

/// Data that stands behind the script, kept in a file without a name until its turn comes.
class LaterData {
 public:
  LaterData() : file_(std::tmpfile()) { check(file_ != nullptr); }
  ~LaterData() {
    if (file_ != nullptr) std::fclose(file_);
  }
  LaterData(const LaterData&) = delete;
  LaterData& operator=(const LaterData&) = delete;

  void put(const std::string& text) {
    check(std::fwrite(text.data(), 1, text.size(), file_) == text.size());
  }
  void give_to(PageFile& page) {
    check(std::fflush(file_) == 0);
    std::rewind(file_);
    std::vector<char> part(std::size_t{1} << 20);
    while (const std::size_t size = std::fread(part.data(), 1, part.size(), file_)) {
      page.put({part.data(), size});
    }
    check(std::ferror(file_) == 0);
  }

 private:
  static void check(bool good) {
    if (!good)
      throw Fault(std::string("no temporary file can be written: ") + std::strerror(errno));
  }
  std::FILE* file_;
};

std::string element(std::string_view type, std::string_view id, std::string_view text) {
  std::string result = "<script type=\"";
  result.append(type).append("\" id=\"").append(id).append("\">").append(text);
  return result += "</script>\n";
}

/// The template between its places for data.
struct Parts {
  std::string_view before_title, before_data, before_more, rest;
};

Parts parts_of(std::string_view page) {
  static constexpr std::array<std::string_view, 3> kPlaces{"@TITLE@", "<!--DATA-->", "<!--MORE-->"};
  std::array<std::string_view, 3> parts;
  for (std::size_t n = 0; n < kPlaces.size(); ++n) {
    const std::size_t at = page.find(kPlaces[n]);
    if (at == std::string_view::npos) {
      throw Fault("the program was built with a page without a place " + std::string(kPlaces[n]));
    }
    parts[n] = page.substr(0, at);
    page.remove_prefix(at + kPlaces[n].size());
  }
  return {parts[0], parts[1], parts[2], page};
}

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
  const Parts parts = parts_of(page_template());
  PageFile file(path);
  LaterData later;
  std::string first;
  BlockSink sink([&](std::string_view name, const std::string& text) {
    const std::string block =
        element("application/octet-stream", "block-" + std::string(name), text);
    if (name.starts_with("field-") && name != kFirstField) return later.put(block);
    first += block;
  });
  nlohmann::json head;
  head["program"] = "townskin_view " TOWNSKIN_VERSION;
  add_words(run, head);
  add_patches(run, sink, head);
  add_shapes(run, sink, head);
  add_fields(run, sink, head);
  head["blocks"] = sink.list();
  file.put(parts.before_title).put(as_html(run.name)).put(parts.before_data);
  file.put(element("application/json", "head", as_json_in_html(head))).put(first);
  file.put(parts.before_more);
  later.give_to(file);
  file.put(parts.rest);
  file.close();
}

}  // namespace townskin_view
