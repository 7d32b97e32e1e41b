#include "flow/urban/chkdat.hpp"

#include <algorithm>
#include <tuple>
#include <utility>

namespace flow {

namespace {

/// A part of a row for a cell; parts of a later row have the higher number.
struct Part {
  std::int32_t hour;
  std::size_t cell;
  std::size_t row;
  double share;  ///< of the row's values, per volume of the cell

  [[nodiscard]] std::tuple<std::int32_t, std::size_t, std::size_t> key() const {
    return {hour, cell, row};
  }
};

bool is_filled(const Openings& openings, const Triple& cell) {
  return openings.gmc(cell[0], cell[1], cell[2]) < kClosedFace;
}

/// The fluid cells at the faces of a cell.
std::vector<Triple> fluid_neighbours(const Box& box, const Boundary& boundary,
                                     const Openings& openings, const Triple& cell) {
  std::vector<Triple> found;
  for (std::size_t a = 0; a < 3; ++a) {
    for (const std::int32_t side : {-1, 1}) {
      Triple next = cell;
      next[a] += side;
      if (boundary.ends[a][0] == End::periodic) next[a] = (next[a] - 1 + box.n[a]) % box.n[a] + 1;
      if (next[a] < 1 || next[a] > box.n[a] || next == cell) continue;
      if (!is_filled(openings, next)) found.push_back(next);
    }
  }
  return found;
}

/// The last row of each cell and hour, in the order of the rows.
std::vector<std::size_t> last_rows(const Box& box, const CityRows& rows) {
  std::vector<std::size_t> order(rows.size());
  for (std::size_t r = 0; r < order.size(); ++r) order[r] = r;
  const auto key = [&](std::size_t r) {
    const auto [i, j, k] = rows[r].cell;
    return std::pair(rows[r].hour, box.at(i, j, k));
  };
  std::ranges::stable_sort(order, {}, key);
  std::vector<std::size_t> last;
  for (std::size_t n = 0; n < order.size(); ++n) {
    if (n + 1 == order.size() || key(order[n]) != key(order[n + 1])) last.push_back(order[n]);
  }
  return last;
}

/// The rows that count.
std::vector<std::size_t> rows_that_count(frame::Log& log, const Box& box, const CityFile& file,
                                         const CityRows& rows) {
  const std::vector<std::size_t> last = last_rows(box, rows);
  if (last.size() == rows.size()) return last;
  if (!file.adds_up) {
    log.warn(file.title, "names a cell and hour again, the last row holds ; rows left out =",
             rows.size() - last.size());
    return last;
  }
  std::vector<std::size_t> all(rows.size());
  for (std::size_t r = 0; r < all.size(); ++r) all[r] = r;
  log.warn(file.title,
           "names a cell and hour again, the rows are added ; rows =", rows.size() - last.size());
  return all;
}

/// Spreads the rows over the fluid cells, sorted by hour and cell.
std::vector<Part> parts_of(frame::Log& log, const GridTables& grid, const Boundary& boundary,
                           const Openings& openings, const CityFile& file, const CityRows& rows) {
  std::vector<Part> parts;
  Flags moved(grid.box);
  std::int32_t filled = 0;
  const auto enter = [&](std::size_t r, const Triple& to, double share) {
    const double volume = grid.volume(to[0], to[1], to[2]);
    parts.push_back({rows[r].hour, grid.box.at(to[0], to[1], to[2]), r, share / volume});
  };
  for (const std::size_t r : rows_that_count(log, grid.box, file, rows)) {
    const Triple& at = rows[r].cell;
    const double whole = file.per_volume ? grid.volume(at[0], at[1], at[2]) : 1.0;
    if (!is_filled(openings, at)) {
      enter(r, at, whole);
      continue;
    }
    const auto beside = fluid_neighbours(grid.box, boundary, openings, at);
    if (beside.empty()) {
      log.data_error(file.title, frame::items("i,j,k=", at[0], at[1], at[2]),
                     "neither this cell nor one at its faces is fluid");
    }
    for (const Triple& next : beside) enter(r, next, whole / static_cast<double>(beside.size()));
    if (std::exchange(moved(at[0], at[1], at[2]), 1) == 0) ++filled;
  }
  if (filled > 0) {
    log.warn(file.title, "gives heat to cells that are not fluid, it goes to those at their faces",
             "; cells =", filled);
  }
  std::ranges::sort(parts, {}, &Part::key);
  return parts;
}

}  // namespace

HourTable kpc_chkdat(frame::Log& log, const GridTables& grid, const Boundary& boundary,
                     const Openings& openings, const CityFile& file, const CityRows& rows) {
  const frame::Tag tag(log, "(kpc_chkdat)");
  HourTable table;
  frame::allocating(log, file.title, frame::bytes_of<Part>(rows.size(), 3), [&] {
    const auto parts = parts_of(log, grid, boundary, openings, file, rows);
    for (const Part& part : parts) {
      table.cells.push_back(part.cell);
      if (table.hours.empty() || table.hours.back() != part.hour) table.hours.push_back(part.hour);
    }
    std::ranges::sort(table.cells);
    const auto again = std::ranges::unique(table.cells);
    table.cells.erase(again.begin(), again.end());
    table.values.assign(table.hours.size() * table.cells.size(), {});
    for (const Part& part : parts) {
      const auto hour = std::ranges::lower_bound(table.hours, part.hour) - table.hours.begin();
      const auto cell = std::ranges::lower_bound(table.cells, part.cell) - table.cells.begin();
      CityValues& sum = table.values[static_cast<std::size_t>(hour) * table.cells.size() +
                                     static_cast<std::size_t>(cell)];
      for (std::size_t v = 0; v < sum.size(); ++v) sum[v] += part.share * rows[part.row].value[v];
    }
  });
  return table;
}

}  // namespace flow
