#include "results/surf_temp.hpp"

#include <array>
#include <cmath>
#include <string_view>

#include "results/rows.hpp"

namespace tsrf_module_io {

namespace {

constexpr double kFlat = 0.001;  // a normal this near to upright is a roof's

enum Kind : std::size_t { kWall, kGround, kRoof };

constexpr std::array<std::string_view, 6> kTerms{
    "tdrg(1)", "tdrg(2)", "tdrg(3)", "area of walls", "area of ground", "area of roofs"};

Kind kind_of(tsrf_module_patch::Type type, double nz) {
  if (type != tsrf_module_patch::kBuilding) return kGround;
  return std::abs(nz - 1.0) < kFlat ? kRoof : kWall;
}

}  // namespace

void prep_surftemp(frame::Log& log, const tsrf_module_patch::Data& patch,
                   const tsrf_module_grdindx::Data& grid_index, SurfTemp& data) {
  frame::allocating(log, "cells of SurfTemp", frame::bytes_of<CellSums>(patch.type.size(), 2), [&] {
    // Trees, mirrors and the far boundary are no surfaces that heat the air of a cell.
    using namespace tsrf_module_patch;
    data.cells = list_cells(patch, {kBuilding, kLand, kWater, kSolarPanel}, CellOrder::i_fastest);
    data.swlr.assign(data.cells.size(), CellSums{});
    data.tdrg.assign(data.cells.size(), CellSums{});
    data.i = data.cells.i;
    data.j = data.cells.j;
  });
  for (std::int32_t& i : data.i) i -= grid_index.ox;
  for (std::int32_t& j : data.j) j -= grid_index.oy;
  for (std::size_t p = 0; p < data.cells.of_patch.size(); ++p) {
    if (data.cells.of_patch[p] == CellList::kNone) continue;
    const auto cell = static_cast<std::size_t>(data.cells.of_patch[p]);
    data.swlr[cell][kind_of(patch.type[p], patch.nz[p])] += patch.area[p];
  }
}

void sum_surftemp(const tsrf_module_patch::Data& patch, const tsrf_module_srfprp::Data& srfprp,
                  const tsrf_module_data::Data& state, SurfTemp& data) {
  std::fill(data.tdrg.begin(), data.tdrg.end(), CellSums{});
  const std::span<const double> surface = state.tlyr.row(0);
  for (std::size_t p = 0; p < data.cells.of_patch.size(); ++p) {
    if (data.cells.of_patch[p] == CellList::kNone) continue;
    CellSums& tdrg = data.tdrg[static_cast<std::size_t>(data.cells.of_patch[p])];
    const double beta = srfprp.beta[static_cast<std::size_t>(state.isrf[p])];
    const double exchange = patch.area[p] * state.hc[p];
    tdrg[0] += exchange;
    tdrg[1] += exchange * surface[p];
    tdrg[2] += beta * patch.area[p] * state.hc[p];
  }
}

void write_surftemp(frame::Log& log, frame::Crew& crew, frame::TextOutput& file,
                    const Settings& settings, When when, std::span<const CellSums> tdrg,
                    std::span<const CellSums> swlr, SurfTemp& data) {
  if (!is_whole_hour(when.sod)) return;
  const std::int32_t hour = hour_slot(when.sod);
  start_file(log, file, "# i,j,k,hour,tdrg(1:3),swlr(1:3)", settings, hour, data.start);
  const auto fill = [&](std::size_t c, Row& row) {
    row.integer(data.i[c], 6);
    row.integer(data.j[c], 6);
    row.integer(data.cells.k[c], 6);
    row.integer(hour, 3);
    // The reader of this file keeps single precision.
    for (const double value : tdrg[c]) row.real(static_cast<float>(value));
    for (const double value : swlr[c]) row.real(static_cast<float>(value));
  };
  if (const auto unsound = write_rows(log, crew, file, data.cells.size(), fill)) {
    refuse_result(log, "SurfTemp", when.iter, frame::items("PID =", data.cells.PID[unsound->line]),
                  kTerms[unsound->real]);
  }
  file.flush(log);
}

void list_arrays(const SurfTemp& data, frame::ArrayList& list) {
  const CellList& cells = data.cells;
  list.add("cells of SurfTemp", cells.i, cells.j, cells.k, cells.PID, cells.of_patch, data.i,
           data.j, data.swlr, data.tdrg);
}

}  // namespace tsrf_module_io
