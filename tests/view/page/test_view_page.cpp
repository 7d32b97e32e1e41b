// The page as it is written: what it holds, read back as a browser reads it.
#include <gtest/gtest.h>
#include <zlib.h>

#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

#include "page/pack.hpp"
#include "page/payload.hpp"
#include "page/write_page.hpp"
#include "run/join_pieces.hpp"
#include "run_case.hpp"

namespace {

using namespace townskin_view;

std::vector<std::uint8_t> from_base64(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    std::uint32_t sign = 0;
    if (c >= 'A' && c <= 'Z') sign = static_cast<std::uint32_t>(c - 'A');
    if (c >= 'a' && c <= 'z') sign = static_cast<std::uint32_t>(c - 'a') + 26;
    if (c >= '0' && c <= '9') sign = static_cast<std::uint32_t>(c - '0') + 52;
    if (c == '+') sign = 62;
    if (c == '/') sign = 63;
    if (c == '=') break;
    bits = bits << 6 | sign;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<std::uint8_t>(bits >> count));
  }
  return bytes;
}

/// The numbers of a packed text, by the reverse of every step.
template <typename T>
std::vector<T> unpacked(const std::string& text, std::size_t delta) {
  const std::vector<std::uint8_t> packed = from_base64(text);
  std::vector<std::uint8_t> bytes(std::size_t{1} << 22);
  uLongf size = bytes.size();
  EXPECT_EQ(uncompress(bytes.data(), &size, packed.data(), packed.size()), Z_OK);
  std::vector<T> numbers(size / sizeof(T));
  for (std::size_t n = 0; n < numbers.size(); ++n) {
    std::make_unsigned_t<T> bits = 0;
    for (std::size_t plane = 0; plane < sizeof(T); ++plane) {
      bits = static_cast<std::make_unsigned_t<T>>(
          bits | static_cast<std::uint64_t>(bytes[plane * numbers.size() + n]) << (8 * plane));
    }
    if (delta > 0 && n >= delta) {
      bits = static_cast<std::make_unsigned_t<T>>(
          bits + static_cast<std::make_unsigned_t<T>>(numbers[n - delta]));
    }
    numbers[n] = static_cast<T>(bits);
  }
  return numbers;
}

/// A written page, with its head and its blocks.
struct Page {
  explicit Page(std::string html) : text(std::move(html)) {
    head = nlohmann::json::parse(element("head"));
  }
  [[nodiscard]] std::string element(const std::string& id) const {
    const std::size_t start = text.find("id=\"" + id + "\">");
    if (start == std::string::npos) return {};
    const std::size_t from = text.find('>', start) + 1;
    return text.substr(from, text.find("</script>", from) - from);
  }
  template <typename T>
  [[nodiscard]] std::vector<T> block(const std::string& name) const {
    return unpacked<T>(element("block-" + name), head.at("blocks").at(name).at("delta"));
  }
  std::string text;
  nlohmann::json head;
};

Page page_of(const RunModel& run) {
  const TempFolder folder;
  write_page(run, folder.path("page.html"));
  return Page(folder.content("page.html"));
}

/// The small run with buildings, water, panels and glass, done by the program.
RunModel read_mixed() {
  const run_case::RunCase run(run_case::inputs_of("mixed"));
  EXPECT_EQ(run.run().status, 0);
  Wanted wanted;
  wanted.partners = true;
  return read_run(run.path(), wanted);
}

TEST(PagePack, NumbersComeBack) {
  std::vector<std::int32_t> whole{0, -1, 2147483647, -2147483647 - 1, 17, 17, 0};
  std::vector<std::uint16_t> codes{65535, 0, 1, 65534, 300, 300, 2};
  for (const std::size_t delta : {0U, 1U, 3U, 9U}) {
    EXPECT_EQ(unpacked<std::int32_t>(pack(whole, delta), delta), whole);
    EXPECT_EQ(unpacked<std::uint16_t>(pack(codes, delta), delta), codes);
  }
  EXPECT_TRUE(unpacked<std::uint8_t>(pack(std::span<const std::uint8_t>{}, 0), 0).empty());
  EXPECT_EQ(base64("f"), "Zg==");  // RFC 4648, 10
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
}

TEST(PageShapes, PiecesJoinToConvexOutlinesAlone) {
  const Corner up{0.0, 0.0, 1.0};
  const std::vector<Corner> triangle{{0, 0, 0}, {4, 0, 0}, {4, 3, 0}};
  const std::vector<Corner> half{{0, 0, 0}, {4, 3, 0}, {0, 3, 0}};
  const auto rectangle = joined({triangle, half}, up);
  ASSERT_TRUE(rectangle.has_value());
  EXPECT_EQ(rectangle->size(), 4U);
  // A neighbour of half the height: what a corner in the middle of a side belongs to stays.
  EXPECT_FALSE(joined({*rectangle, {{4, 0, 0}, {6, 0, 0}, {6, 1, 0}, {4, 1, 0}}}, up).has_value());
  const auto wide = joined({*rectangle, {{4, 0, 0}, {6, 0, 0}, {6, 3, 0}, {4, 3, 0}}}, up);
  ASSERT_TRUE(wide.has_value());
  EXPECT_EQ(wide->size(), 6U);
  EXPECT_FALSE(joined({triangle, {{9, 0, 0}, {10, 0, 0}, {10, 1, 0}}}, up).has_value());
}

TEST(PageText, NamesAreNeverMarkup) {
  EXPECT_EQ(as_html("<b a=\"1\">&"), "&lt;b a=&quot;1&quot;&gt;&amp;");
  const std::string nasty = "</script><!--<script>\"\n\xff";
  const std::string text = as_json_in_html(nlohmann::json(nasty));
  EXPECT_EQ(text.find('<'), std::string::npos);
  EXPECT_EQ(nlohmann::json::parse(text), "</script><!--<script>\"\n\xef\xbf\xbd");
  RunModel run;
  run.name = nasty;
  run.notes = {nasty};
  run.shapes.first_ring = {0};
  const Page page = page_of(run);
  EXPECT_EQ(page.head.at("notes").at(0), page.head.at("title"));
  EXPECT_NE(page.text.find("<title>&lt;/script&gt;&lt;!--"), std::string::npos);
  EXPECT_EQ(with_signs("deg C"), "°C");
  EXPECT_EQ(with_signs("W/m2"), "W/m²");
}

TEST(PageData, ValuesAreWithinTheStatedError) {
  const RunModel run = read_mixed();
  const Page page = page_of(run);
  std::size_t compared = 0;
  for (const nlohmann::json& field : page.head.at("fields")) {
    const std::string id = field.at("id");
    if (id == "leaf_temperature") continue;
    const Field* from = run.field(id);
    ASSERT_NE(from, nullptr) << id;
    const auto codes = page.block<std::uint16_t>("field-" + id);
    ASSERT_EQ(codes.size(), from->size * from->hours) << id;
    std::vector<float> values(from->size);
    const double offset = field.at("offset"), scale = field.at("scale"), error = field.at("error");
    EXPECT_LE(error, (field.at("high").get<double>() - offset) / 131000.0) << id;
    for (std::size_t h = 0; h < from->hours; ++h) {
      from->take(run, h, values);
      for (std::size_t n = 0; n < values.size(); ++n) {
        const std::uint16_t code = codes[h * from->size + n];
        ASSERT_EQ(code == 65535, !std::isfinite(values[n])) << id;
        if (code == 65535) continue;
        const double value = static_cast<double>(values[n]);
        ASSERT_NEAR(offset + scale * code, value, 1.0001 * error + 1e-12) << id << " at " << n;
        ++compared;
      }
    }
  }
  EXPECT_GT(compared, 24U * run.patches.size());
}

TEST(PageData, PatchesPartnersAndOutlinesAreTheRuns) {
  const RunModel run = read_mixed();
  const Page page = page_of(run);
  EXPECT_EQ(page.block<std::int32_t>("pid"), run.patches.PID);
  EXPECT_EQ(page.block<std::int32_t>("building"), run.patches.building);
  const auto areas = page.block<std::int32_t>("area");
  const auto partner = page.block<std::int32_t>("partner");
  const auto share = page.block<std::uint16_t>("partner-share");
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    float area = 0.0F;
    std::memcpy(&area, &areas[p], sizeof area);
    EXPECT_EQ(area, static_cast<float>(run.patches.area[p]));
    const std::span<const Partner> partners = run.partners_of(p);
    const std::size_t at = 5 * static_cast<std::size_t>(run.patches.group[p]);
    for (std::size_t n = 0; n < 5; ++n) {
      ASSERT_EQ(partner[at + n], n < partners.size() ? partners[n].patch : -1);
      if (n >= partners.size()) continue;
      EXPECT_NEAR(share[at + n] / 65535.0, partners[n].view_factor, 1e-5);
    }
  }
  const auto corners = page.block<std::int32_t>("vertex");
  const auto owner = page.block<std::int32_t>("ring-patch");
  ASSERT_EQ(corners.size(), 3 * page.head.at("vertices").get<std::size_t>());
  EXPECT_EQ(owner.size(), run.shapes.rings.size());
  const double step = page.head.at("step");  // sides keep their lengths, heights their place
  for (std::size_t n = 0; n + 3 < corners.size(); ++n) {
    const double moved = n % 3 == 2 ? 0.0 : run.shapes.xyz[n] - step * corners[n];
    const double next = n % 3 == 2 ? 0.0 : run.shapes.xyz[n + 3] - step * corners[n + 3];
    ASSERT_NEAR(moved, next, 1.01 * step);
    if (n % 3 != 2) continue;
    ASSERT_NEAR(step * corners[n], run.shapes.xyz[n], 0.51 * step);
  }
}

TEST(PageData, RunWithoutResultsHasAPageThatSaysSo) {
  const run_case::RunCase run(run_case::inputs_of("mixed"));
  const Page page = page_of(read_run(run.path(), {}));
  EXPECT_TRUE(page.head.at("times").empty());
  EXPECT_FALSE(page.head.at("notes").empty());
  EXPECT_EQ(page.head.at("patches"), 212);
  EXPECT_THROW(write_page(RunModel{}, run.path("none/page.html").string()), Fault);
}

}  // namespace
