#include "results/bld_load.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "results/row.hpp"

namespace tsrf_module_io {

namespace {

constexpr std::size_t kHeadingWidth = 200;  // characters of a StHeat line that are taken over

constexpr std::array<std::string_view, 4> kTerms{"", "", "sensible heat released",
                                                 "latent heat released"};

/// Volumes of the cells of the list.
void set_volumes(const tsrf_main01::Axes& axes, BldLoad& data) {
  for (std::size_t c = 0; c < data.cells.size(); ++c) {
    data.volume[c] =
        axes[0].dx(data.cells.i[c]) * axes[1].dx(data.cells.j[c]) * axes[2].dx(data.cells.k[c]);
  }
}

void write_heading(frame::Log& log, frame::TextOutput& file, frame::TextInput& stheat) {
  bool any = false;
  std::string_view line;
  stheat.rewind();
  while (stheat.next_line(line)) {
    line = line.substr(0, kHeadingWidth);
    file.line(log, line.substr(0, line.find_last_not_of(' ') + 1));
    any = true;
  }
  if (!any) {
    file.line(log, "#  I    J   K Hr      VclSens      VclLant      BldSens      BldLant");
  }
}

}  // namespace

void prep_bldload(frame::Log& log, const tsrf_module_patch::Data& patch,
                  const tsrf_main01::Grid& grid, BldLoad& data) {
  frame::allocating(log, "cells of BldLoad", frame::bytes_of<double>(patch.type.size(), 3), [&] {
    data.cells = list_cells(patch, {tsrf_module_patch::kBuilding}, CellOrder::j_fastest);
    data.volume.assign(data.cells.size(), 1.0);
    data.released.assign(data.cells.size(), CellHeat{});
  });
  if (const auto* axes = std::get_if<tsrf_main01::Axes>(&grid)) {
    set_volumes(*axes, data);
  } else {
    log.line("%%% warning : no coordinates in Grid data; BldLoad is in W per cell, not in W/m3");
  }
}

void sum_bldload(std::span<const double> sensible, std::span<const double> latent, BldLoad& data) {
  std::fill(data.released.begin(), data.released.end(), CellHeat{});
  for (std::size_t p = 0; p < data.cells.of_patch.size(); ++p) {
    if (data.cells.of_patch[p] == CellList::kNone) continue;
    CellHeat& cell = data.released[static_cast<std::size_t>(data.cells.of_patch[p])];
    cell[0] += sensible[p];
    cell[1] += latent[p];
  }
}

void write_bldload(frame::Log& log, frame::TextOutput& file, frame::TextInput& stheat,
                   const Settings& settings, When when, std::span<const CellHeat> released,
                   BldLoad& data) {
  if (!is_whole_hour(when.sod)) return;
  const std::int32_t hour = hour_slot(when.sod);
  if (starts_over(settings, hour, data.start)) {
    file.rewind(log);
    write_heading(log, file, stheat);
  }
  constexpr int kDecimals = 4;
  Row row;
  for (std::size_t c = 0; c < data.cells.size(); ++c) {
    row.integer(data.cells.i[c], 4);
    row.integer(data.cells.j[c], 5);
    row.integer(data.cells.k[c], 4);
    row.integer(hour, 3);
    row.real(0.0, kDecimals);
    row.real(0.0, kDecimals);
    for (const double heat : released[c]) row.real(heat / data.volume[c], kDecimals);
    if (!row.finite()) {
      refuse_result(log, "BldLoad", when.iter, frame::items("PID =", data.cells.PID[c]),
                    kTerms[row.unsound()]);
    }
    row.end(log, file);
  }
  file.flush(log);
}

void list_arrays(const BldLoad& data, frame::ArrayList& list) {
  const CellList& cells = data.cells;
  list.add("cells of BldLoad", cells.i, cells.j, cells.k, cells.PID, cells.of_patch, data.volume,
           data.released);
}

}  // namespace tsrf_module_io
