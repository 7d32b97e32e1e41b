#include "inputs/matprp.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tsrf_module_matprp {

namespace {

using frame::items;
using frame::ReadStatus;

/// The integers that head a line, in the order of the file.
enum Head : std::size_t { kSurfid, kPos, kStrct, kItem4, kItem5, kNolyr, kHeads };

struct Line {
  std::array<std::int32_t, kHeads> head{};
  double thick = 0.0;
  std::int32_t SurfCD = 0;
};

[[noreturn]] void read_failed(frame::Log& log, const frame::TextInput& file) {
  log.read_error(file, "### read error : MatEleProp data");
}

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
    if (status == ReadStatus::error) read_failed(log, file);
    for (std::int32_t i = 1; i < head[kNolyr]; ++i) {
      if (file.read(std::span<std::string>(line)) != ReadStatus::ok) return count + 1;
    }
  }
}

/// Checks the line read last, the head of a material's block at `place` or a line behind it.
void check_head(frame::Log& log, const frame::TextInput& file, std::size_t place,
                const std::vector<Line>& block, std::int32_t number) {
  struct Column {
    Head place;
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
  for (const auto& [item, words] : kColumns) {
    if (block.back().head[item] == first.head[item]) continue;
    log.line(file.line_text(file.line_at(place)));
    log.data_error(items(words, block.size(), number, block.back().head[item]),
                   items("it must be =", first.head[item]));
  }
}

/// All lines of the next block; none at the end of the file. A block that is shorter than it says
/// is told by its own first line.
std::vector<Line> read_block(frame::Log& log, frame::TextInput& file, std::int32_t number) {
  std::vector<Line> block;
  const std::size_t place = file.tell();
  do {
    Line line;
    const ReadStatus status =
        file.read(std::span<std::int32_t>(line.head), line.thick, line.SurfCD);
    if (status == ReadStatus::end && block.empty()) return block;
    if (status == ReadStatus::end) {
      log.line(file.line_text(file.line_at(place)));
      log.data_error(items("j,nolyr(j) in MatEleProp data =", number, block.front().head[kNolyr]),
                     items("it must be =", block.size()));
    }
    if (status != ReadStatus::ok) read_failed(log, file);
    frame::allocating(log, "layers of a material", frame::bytes_grown(block),
                      [&] { block.push_back(line); });
    check_head(log, file, place, block, number);
  } while (static_cast<std::int64_t>(block.size()) < block.front().head[kNolyr]);
  return block;
}

void check_thickness(frame::Log& log, const std::vector<Line>& block, std::int32_t number) {
  for (std::size_t i = 0; i < block.size(); ++i) {
    if (block[i].thick > 0.0) continue;
    log.data_error(items("i,j,thick(i,j) in MatEleProp data =", i + 1, number, block[i].thick),
                   "it must be > 0");
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
  frame::allocating(log, "SurfID", frame::bytes_of<std::int32_t>(data.materials.size(), 3), [&] {
    std::vector<std::int32_t> ids;
    for (const Material& material : data.materials) ids.push_back(material.surfid);
    data.by_surfid = frame::CodeIndex(ids);
  });
  if (const auto& repeat = data.by_surfid.repeat()) {
    log.data_error(items("SurfID in MatEleProp data =",
                         data.materials[static_cast<std::size_t>(repeat->second)].surfid),
                   "it is specified redundantly in mat. no. n1 & n2",
                   items("n1,n2 =", repeat->first + 1, repeat->second + 1));
  }
}

}  // namespace

void read_matprp(frame::Log& log, frame::TextInput& file, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_matprp)(read_matprp)");
  log.line("%%% nmatprp=", count_materials(log, file));
  file.pass_title(log, kHeads + 2);
  for (std::int32_t number = 1;; ++number) {
    const std::vector<Line> block = read_block(log, file, number);
    if (block.empty()) break;
    check_thickness(log, block, number);
    frame::allocating(log, "materials", frame::bytes_grown(data.materials),
                      [&] { data.materials.push_back(material_of(block)); });
  }
  index_materials(log, data);
}

}  // namespace tsrf_module_matprp
