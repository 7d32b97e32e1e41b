#include "inputs/patch.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "frame/findings.hpp"

namespace tsrf_module_patch {

namespace {

using frame::items;
using frame::ReadStatus;

constexpr std::int32_t kReportedAreas = 10;
constexpr double kLeastArea = 1e-20;

/// One line of either file; what a line leaves out keeps these values.
struct Line {
  std::int32_t PID = 1, i = 1, j = 1, k = 1;
  double area = 1.0;
  std::array<double, 3> normal{};
  std::int32_t type = 1, SurfID = 1, BldID = 1;
};

constexpr std::size_t kFields = 11;

ReadStatus read_line(frame::TextInput& file, Line& line) {
  return file.read(line.PID, line.i, line.j, line.k, line.area, std::span<double>(line.normal),
                   line.type, line.SurfID, line.BldID);
}

std::string of_data(std::string_view field, std::string_view name) {
  return std::string(field) + " in " + std::string(name) + " data =";
}

/// Where patches may lie. Sums and products of what users write can pass 32 bits.
struct Range {
  std::int64_t mx, my, mz;
  std::int64_t NDIV;
  const tsrf_module_grdindx::Data& grid_index;

  [[nodiscard]] std::int64_t scale(const Line& line) const { return line.type == kTree ? NDIV : 1; }
  /// Cells along an axis of `cells`; what lies in them, and next to them, still fits 32 bits.
  [[nodiscard]] std::int64_t limit(const Line& line, std::int64_t cells) const {
    return std::min<std::int64_t>(scale(line) * cells, INT32_MAX - 1);
  }
  [[nodiscard]] std::int64_t si(const Line& line) const {
    return std::min(line.i + scale(line) * grid_index.ox, std::int64_t{INT32_MAX - 1});
  }
  [[nodiscard]] std::int64_t sj(const Line& line) const {
    return std::min(line.j + scale(line) * grid_index.oy, std::int64_t{INT32_MAX - 1});
  }
  [[nodiscard]] static std::int64_t sk(const Line& line) {
    return static_cast<std::int64_t>(line.k) + 1;
  }
  [[nodiscard]] bool holds(const Line& line) const {
    const auto within = [](std::int64_t index, std::int64_t limit) {
      return index >= 1 && index <= limit;
    };
    const std::int64_t whole_x = mx - grid_index.NXF - grid_index.NXB;
    const std::int64_t whole_y = my - grid_index.NYF - grid_index.NYB;
    return within(line.i, whole_x * NDIV) && within(line.j, whole_y * NDIV) &&
           within(si(line), limit(line, mx)) && within(sj(line), limit(line, my)) &&
           within(sk(line), mz);
  }
};

/// Enters the lines of both files.
class Reader {
 public:
  Reader(frame::Log& log, const Range& range, Data& data) : log_(log), range_(range), data_(data) {}

  /// Enters all lines of `file`; their number.
  std::int32_t read(frame::TextInput& file, std::string_view name) {
    file.pass_title(log_, kFields);
    stray_.reset();
    std::int32_t lines = 0;
    for (Line line;; line = Line{}, ++lines) {
      const ReadStatus status = read_line(file, line);
      if (status == ReadStatus::end) return lines;
      if (status == ReadStatus::error) {
        log_.lost_record(file, "### read error : " + std::string(name) + " data");
        stand_in(line);
      }
      if (!frame::attempt(log_, &file, [&] { check_cell(line, name); })) line.i = line.j = 1;
      repair_area(file, line, name);
      if (!stray_ && line.type != kTree) stray_ = {lines, line.type};
      frame::allocating(log_, "patches", frame::bytes_grown(data_.area), [&] { enter(line); });
    }
  }

  /// Place in its file and number of the first patch that is no tree patch, of the file read last.
  [[nodiscard]] const std::optional<std::pair<std::int32_t, std::int32_t>>& stray() const {
    return stray_;
  }

 private:
  void check_cell(const Line& line, std::string_view name) {
    if (range_.holds(line)) return;
    log_.data_error(items(of_data("i,j,k", name), line.i, line.j, line.k), "they are out of range",
                    items("pid =", line.PID));
  }

  /// What a lost record leaves in the list: a patch of no kind.
  void stand_in(Line& line) {
    const bool known = line.PID != Line{}.PID;
    const std::int32_t PID = known ? line.PID : log_.findings().stand_in();
    line = Line{};
    line.PID = PID;
    line.k = 0;
    line.type = kOther;
  }

  /// A patch without area keeps its place in the list but takes no part in any sum.
  void repair_area(const frame::TextInput& file, Line& line, std::string_view name) {
    if (line.area > 0.0) return;
    if (repaired_ < kReportedAreas) {
      ++repaired_;
      log_.warning("%%% warning : invalid data", items(of_data("area", name), line.area),
                   "it must be > 0", items("pid =", line.PID));
      if (log_.collects()) log_.settle(&file);
    }
    line.area = kLeastArea;
  }

  void enter(const Line& line) {
    data_.PID.push_back(line.PID);
    data_.i.push_back(line.i);
    data_.j.push_back(line.j);
    data_.k.push_back(line.k);
    data_.si.push_back(static_cast<std::int32_t>(range_.si(line)));
    data_.sj.push_back(static_cast<std::int32_t>(range_.sj(line)));
    data_.sk.push_back(static_cast<std::int32_t>(range_.sk(line)));
    data_.area.push_back(line.area);
    data_.nx.push_back(line.normal[0]);
    data_.ny.push_back(line.normal[1]);
    data_.nz.push_back(line.normal[2]);
    data_.type.push_back(line.type);
    data_.SurfID.push_back(line.SurfID);
    data_.BldID.push_back(line.BldID);
  }

  frame::Log& log_;
  const Range& range_;
  Data& data_;
  std::int32_t repaired_ = 0;
  std::optional<std::pair<std::int32_t, std::int32_t>> stray_;
};

/// Tree patches lie on faces of the leaf cells: each must look along an axis, and its cell is the
/// one in front of the face.
void shift_tree_patches(frame::Log& log, Data& data) {
  for (std::size_t p = 0; p < data.type.size(); ++p) {
    if (data.type[p] != kTree) continue;
    const std::int32_t BndC = data.SurfID[p];
    std::array<std::int32_t, 3> face{};
    if (BndC >= 1 && BndC <= 6) {
      face[static_cast<std::size_t>((BndC - 1) / 2)] = BndC % 2 == 0 ? 1 : -1;
    }
    const double difference = std::abs(face[0] - data.nx[p]) + std::abs(face[1] - data.ny[p]) +
                              std::abs(face[2] - data.nz[p]);
    const bool is_face = BndC >= 1 && BndC <= 6;
    if (!is_face || difference > 1e-6) {
      frame::attempt(log, [&] {
        log.data_error(items("BndC in TreePatch data =", BndC),
                       items("nx,ny,nz in TreePatch data =", data.nx[p], data.ny[p], data.nz[p]),
                       "they are not consistent");
      });
    }
    data.si[p] += face[0];
    data.sj[p] += face[1];
    data.sk[p] += face[2];
  }
}

/// Each file holds its own kind of patch. Of the TreePatch lines, whose first patch that is no tree
/// patch is `stray`, only those up to position `tree_lines` of the list are looked at: none where
/// the Patch file is the longer one.
void check_types(frame::Log& log, const Data& data,
                 const std::optional<std::pair<std::int32_t, std::int32_t>>& stray) {
  const std::int32_t tree_lines = data.mpatch - data.patch_lines;
  if (tree_lines == 0) return;
  const auto report = [&](std::int32_t m, std::int32_t type, std::string_view rule) {
    const std::int32_t wanted = kTree;
    frame::attempt(log, [&] {
      log.data_error(items("m,type(m) in Patch data =", m + 1, type), items(rule, wanted));
    });
  };
  for (std::int32_t m = 0; m < data.patch_lines; ++m) {
    if (data.type[static_cast<std::size_t>(m)] == kTree) report(m, kTree, "it must be /=");
  }
  if (stray && data.patch_lines + stray->first < tree_lines) {
    report(data.patch_lines + stray->first, stray->second, "it must be =");
  }
}

}  // namespace

void read_patch(frame::Log& log, frame::TextInput& patch_file, frame::TextInput& treepatch_file,
                std::int32_t mx, std::int32_t my, std::int32_t mz,
                const tsrf_module_grdindx::Data& grid_index, std::int32_t NDIV, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_patch)(read_patch)");
  const Range range{mx, my, mz, NDIV, grid_index};
  Reader reader(log, range, data);
  data.patch_lines = reader.read(patch_file, "Patch");
  if (data.patch_lines == 0) log.fail("### error : lack of Patch data");
  data.mpatch = data.patch_lines + reader.read(treepatch_file, "TreePatch");
  shift_tree_patches(log, data);
  check_types(log, data, reader.stray());
  frame::allocating(log, "PID", frame::bytes_of<std::int32_t>(data.PID.size(), 2),
                    [&] { data.by_pid = frame::CodeIndex(data.PID); });
  const auto report = [&](std::size_t first, std::size_t second) {
    log.data_error(items("PID in Patch data =", data.PID[second]),
                   "it is specified redundantly in line no. n1 & n2",
                   items("n1,n2 =", first + 1, second + 1));
  };
  frame::report_repeats(log, data.by_pid, data.PID, report);
}

void list_arrays(const Data& data, frame::ArrayList& list) {
  list.add("patches", data.PID, data.i, data.j, data.k, data.si, data.sj, data.sk, data.area,
           data.nx, data.ny, data.nz, data.type, data.SurfID, data.BldID);
}

}  // namespace tsrf_module_patch
