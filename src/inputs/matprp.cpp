#include "inputs/matprp.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "frame/findings.hpp"

namespace tsrf_module_matprp {

namespace {

using frame::items;
using frame::ReadStatus;

/// The integers that head a line, in the order of the file.
enum Head : std::size_t { kSurfid, kPos, kStrct, kItem4, kItem5, kNolyr, kHeads };

struct Line {
  std::size_t place = 0;  ///< in the file
  std::array<std::int32_t, kHeads> head{};
  double thick = 0.0;
  std::int32_t SurfCD = 0;
};

constexpr std::string_view kReadError = "### read error : MatEleProp data";
constexpr double kHarmless = 0.1;  // a thickness where the reader goes on behind a faulty one [m]

/// Number of materials. Only the first line of each block is looked at; what is wrong inside a
/// block, an end of the file included, is left to the reading pass.
std::int32_t count_materials(frame::Log& log, frame::TextInput& file) {
  std::array<std::string, 2> rest;  // thickness and code
  std::array<std::string, kHeads + 2> line;
  file.pass_title(log, kHeads + 2);
  for (std::int32_t count = 0;; ++count) {
    std::array<std::int32_t, kHeads> head{};
    const ReadStatus status =
        file.read(std::span<std::int32_t>(head), std::span<std::string>(rest));
    if (status == ReadStatus::end) return count;
    if (status == ReadStatus::error) log.read_error(file, kReadError);
    for (std::int32_t i = 1; i < head[kNolyr]; ++i) {
      if (file.read(std::span<std::string>(line)) != ReadStatus::ok) return count + 1;
    }
  }
}

/// Checks the line read last, the head of a material's block at `place` or a line behind it.
void check_head(frame::Log& log, const frame::TextInput& file, std::size_t place,
                const std::vector<Line>& block, std::int32_t number) {
  struct Column {
    Head item;
    std::string_view words;
  };
  constexpr std::array<Column, 4> kColumns{{{kSurfid, "i,j,surfid in MatEleProp data ="},
                                            {kPos, "i,j,pos(i,j) in MatEleProp data ="},
                                            {kStrct, "i,j,strct(i,j) in MatEleProp data ="},
                                            {kNolyr, "i,j,nolyr(i,j) in MatEleProp data ="}}};
  const Line& first = block.front();
  if (first.head[kNolyr] < 1) {
    log.data_error("j-th material has no element in MatEleProp data", items("j =", number));
  }
  for (const Column& column : kColumns) {
    const Head item = column.item;
    if (block.back().head[item] == first.head[item]) continue;
    frame::attempt_at(log, file, block.back().place, [&] {
      log.fail(log.collects() ? "" : file.line_text(file.line_at(place)), "### error : data error",
               items(column.words, block.size(), number, block.back().head[item]),
               items("it must be =", first.head[item]));
    });
  }
}

/// Whether a line, by most of its numbers, belongs to another block than the one it should.
bool is_of_another(const Line& line, const Line& first) {
  const std::array<Head, 4> columns{kSurfid, kPos, kStrct, kNolyr};
  const auto same = std::ranges::count_if(
      columns, [&](Head column) { return line.head[column] == first.head[column]; });
  return line.head[kSurfid] != first.head[kSurfid] && same < 3;
}

/// What the lost first line of a block leaves of it. The other lines are passed over.
Line stand_in(frame::Log& log, frame::TextInput& file, Line line) {
  Line next;
  std::size_t place = file.tell();
  while (file.read(next.head[kSurfid]) == ReadStatus::ok &&
         next.head[kSurfid] == line.head[kSurfid]) {
    place = file.tell();
  }
  file.seek(place);
  line.head[kNolyr] = 1;
  line.thick = kHarmless;
  line.SurfCD = log.findings().stand_in();
  return line;
}

/// All lines of the next block; none at the end of the file. A block that is shorter than it says
/// is told by its own first line.
std::vector<Line> read_block(frame::Log& log, frame::TextInput& file, std::int32_t number) {
  std::vector<Line> block;
  const std::size_t place = file.tell();
  do {
    Line line{.place = file.tell()};
    const ReadStatus status =
        file.read(std::span<std::int32_t>(line.head), line.thick, line.SurfCD);
    if (status == ReadStatus::end && block.empty()) return block;
    const bool cut = log.collects() && status == ReadStatus::ok && !block.empty() &&
                     is_of_another(line, block.front());
    if (cut) file.seek(line.place);
    if (status == ReadStatus::end || cut) {
      const bool told = !frame::attempt(log, [&] {
        log.fail(file.line_text(file.line_at(place)), "### error : data error",
                 items("j,nolyr(j) in MatEleProp data =", number, block.front().head[kNolyr]),
                 items("it must be =", block.size()));
      });
      if (told) return block;
    }
    if (status == ReadStatus::error) {
      log.lost_record(file, kReadError);
      if (block.empty()) return {stand_in(log, file, line)};
      line = block.front();
    }
    frame::allocating(log, "layers of a material", frame::bytes_grown(block),
                      [&] { block.push_back(line); });
    frame::attempt_at(log, file, place, [&] { check_head(log, file, place, block, number); });
  } while (static_cast<std::int64_t>(block.size()) < block.front().head[kNolyr]);
  return block;
}

void check_thickness(frame::Log& log, const frame::TextInput& file, std::vector<Line>& block,
                     std::int32_t number) {
  for (std::size_t i = 0; i < block.size(); ++i) {
    if (block[i].thick > 0.0) continue;
    frame::attempt_at(log, file, block[i].place, [&] {
      log.data_error(items("i,j,thick(i,j) in MatEleProp data =", i + 1, number, block[i].thick),
                     "it must be > 0");
    });
    block[i].thick = kHarmless;
  }
}

Material material_of(const std::vector<Line>& block) {
  const auto& head = block.front().head;
  Material material{head[kSurfid], head[kPos], head[kStrct], {}, {}};
  for (const Line& line : block) {
    material.thick.push_back(line.thick);
    material.SurfCD.push_back(line.SurfCD);
  }
  return material;
}

void index_materials(frame::Log& log, Data& data) {
  std::vector<std::int32_t> ids;
  frame::allocating(log, "SurfID", frame::bytes_of<std::int32_t>(data.materials.size(), 3), [&] {
    for (const Material& material : data.materials) ids.push_back(material.surfid);
    data.by_surfid = frame::CodeIndex(ids);
  });
  const auto report = [&](std::size_t first, std::size_t second) {
    log.data_error(items("SurfID in MatEleProp data =", ids[second]),
                   "it is specified redundantly in mat. no. n1 & n2",
                   items("n1,n2 =", first + 1, second + 1));
  };
  frame::report_repeats(log, data.by_surfid, ids, report);
}

}  // namespace

void read_matprp(frame::Log& log, frame::TextInput& file, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_matprp)(read_matprp)");
  if (!log.collects()) log.line("%%% nmatprp=", count_materials(log, file));
  file.pass_title(log, kHeads + 2);
  for (std::int32_t number = 1;; ++number) {
    std::vector<Line> block = read_block(log, file, number);
    if (block.empty()) break;
    check_thickness(log, file, block, number);
    frame::allocating(log, "materials", frame::bytes_grown(data.materials),
                      [&] { data.materials.push_back(material_of(block)); });
  }
  index_materials(log, data);
}

}  // namespace tsrf_module_matprp
