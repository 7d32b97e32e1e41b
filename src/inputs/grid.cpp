#include "inputs/grid.hpp"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace tsrf_main01 {

namespace {

using frame::items;
using frame::ReadStatus;

constexpr double kUnset = -1.0;
constexpr std::array<std::string_view, 3> kAxisNames{"x", "y", "z"};

std::int64_t points_of(std::int32_t cells) { return static_cast<std::int64_t>(cells) + 1; }

/// The count that heads an axis; false at the end of the file.
bool read_count(frame::Log& log, frame::TextInput& file, const Sizes& sizes, std::int32_t cells) {
  std::int32_t count = 0;
  const ReadStatus status = file.read(count);
  if (status == ReadStatus::end) return false;
  if (status == ReadStatus::error) log.read_error(file, "### read error : Grid data");
  if (count != points_of(cells)) {
    log.data_error(
        "grid size in Grid data not consistent",
        items("mx,my,mz must be =", points_of(sizes[0]), points_of(sizes[1]), points_of(sizes[2])));
  }
  return true;
}

void check_increase(frame::Log& log, std::string_view name, std::span<const double> points) {
  const auto at =
      std::adjacent_find(points.begin(), points.end(), [](double a, double b) { return !(a < b); });
  if (at == points.end()) return;
  const std::string n(name);
  log.data_error(items("i," + n + "(i)," + n + "(i-1) in Grid data =", at - points.begin() + 2,
                       *(at + 1), *at),
                 "they must increase");
}

/// Widths of the cells, and two cells and one point more at each end by mirror.
void extend(Axis& axis) {
  const auto m = static_cast<std::size_t>(axis.cells);
  std::vector<double>& x = axis.coordinates;
  std::vector<double>& dx = axis.widths;
  const auto cell = [&dx](std::size_t i) -> double& { return dx[i + 1]; };
  for (std::size_t i = 1; i <= m; ++i) cell(i) = x[i + 1] - x[i];
  cell(0) = cell(1);
  cell(m + 1) = cell(m);
  dx[0] = cell(2);
  cell(m + 2) = cell(m - 1);
  x[0] = x[1] - cell(0);
  x[m + 2] = x[m + 1] + cell(m + 1);
}

void read_axis(frame::Log& log, frame::TextInput& file, std::string_view name, std::int32_t cells,
               Axis& axis) {
  const std::int64_t points = points_of(cells);
  if (!file.can_hold(points)) log.read_error(file, "### read error : Grid data");
  frame::allocating(log, "Grid data", frame::bytes_of<double>(static_cast<std::size_t>(points), 2),
                    [&] {
                      axis.cells = cells;
                      axis.widths.assign(static_cast<std::size_t>(points + 3), kUnset);
                      axis.coordinates.assign(static_cast<std::size_t>(points + 2), kUnset);
                    });
  const std::span<double> read =
      std::span(axis.coordinates).subspan(1, static_cast<std::size_t>(points));
  const std::size_t place = file.tell();
  if (file.read(read) != ReadStatus::ok) log.read_error(file, "### read error : Grid data");
  frame::attempt_at(log, file, place, [&] { check_increase(log, name, read); });
  extend(axis);
}

}  // namespace

Grid read_grid(frame::Log& log, frame::TextInput& file, const Sizes& sizes) {
  const frame::Tag tag(log, "(tsrf_main01)(read_grid)");
  file.rewind();
  Axes axes;
  for (std::size_t a = 0; a < axes.size(); ++a) {
    if (!read_count(log, file, sizes, sizes[a])) {
      if (a == 0) return sizes;
      log.read_error(file, "### read error : Grid data");
    }
    read_axis(log, file, kAxisNames[a], sizes[a], axes[a]);
  }
  return axes;
}

void tsrf_dummyb(frame::Log& log, frame::TextInput& file, const Sizes& sizes, Porous& porous) {
  const frame::Tag tag(log, "(tsrf_dummyb)");
  const auto outside = [](std::int32_t index, std::int32_t cells) {
    return index < 1 || index > cells;
  };
  file.rewind();
  for (;;) {
    PorousCell cell{};
    const ReadStatus status = file.read(cell.i, cell.j, cell.k, std::span<double>(cell.fraction));
    if (status == ReadStatus::end) return;
    if (status == ReadStatus::error) {
      log.lost_record(file, "### error : read error in Porous file");
      continue;
    }
    const bool inside = frame::attempt(log, &file, [&] {
      if (outside(cell.i, sizes[0]) || outside(cell.j, sizes[1]) || outside(cell.k, sizes[2])) {
        log.fail("### error : data error in Porous file", items("i,j,k=", cell.i, cell.j, cell.k),
                 "they are out of range");
      }
    });
    if (!inside) continue;
    frame::allocating(log, "Porous data", frame::bytes_grown(porous.cells),
                      [&] { porous.cells.push_back(cell); });
  }
}

}  // namespace tsrf_main01
