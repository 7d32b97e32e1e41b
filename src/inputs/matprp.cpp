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

void check_block(frame::Log& log, const std::vector<Line>& block, std::int32_t number) {
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
  for (std::size_t i = 1; i < block.size(); ++i) {
    for (const auto& [place, words] : kColumns) {
      if (block[i].head[place] == first.head[place]) continue;
      log.data_error(items(words, i + 1, number, block[i].head[place]),
                     items("it must be =", first.head[place]));
    }
  }
  for (std::size_t i = 0; i < block.size(); ++i) {
    if (block[i].thick > 0.0) continue;
    log.data_error(items("i,j,thick(i,j) in MatEleProp data =", i + 1, number, block[i].thick),
                   "it must be > 0");
  }
}

ReadStatus read_line(frame::TextInput& file, Line& line) {
  return file.read(std::span<std::int32_t>(line.head), line.thick, line.SurfCD);
}

/// The file ends within the block that begins at `begin`: its `nolyr` is too large. Where lines of
/// other materials were taken for its own, the first of them is what is told.
[[noreturn]] void report_cut_block(frame::Log& log, frame::TextInput& file, std::size_t begin,
                                   const std::vector<Line>& block, std::int32_t number) {
  Line first;
  file.seek(begin);
  read_line(file, first);
  log.line("%%% file", file.name() + ",", "line", file.record_line());
  check_block(log, block, number);
  log.data_error(items("nolyr in MatEleProp data =", first.head[kNolyr]),
                 items("it must be <=", block.size(), "the lines that are left"));
}

/// All lines of the next block; none at the end of the file.
std::vector<Line> read_block(frame::Log& log, frame::TextInput& file, std::int32_t number) {
  std::vector<Line> block;
  const std::size_t begin = file.tell();
  do {
    Line line;
    const ReadStatus status = read_line(file, line);
    if (status == ReadStatus::error) read_failed(log, file);
    if (status == ReadStatus::end && block.empty()) return block;
    if (status == ReadStatus::end) report_cut_block(log, file, begin, block, number);
    frame::allocating(log, [&] { block.push_back(line); });
  } while (static_cast<std::int64_t>(block.size()) < block.front().head[kNolyr]);
  return block;
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
  frame::allocating(log, [&] {
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
    check_block(log, block, number);
    frame::allocating(log, [&] { data.materials.push_back(material_of(block)); });
  }
  index_materials(log, data);
}

}  // namespace tsrf_module_matprp
