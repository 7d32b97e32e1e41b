#include "surface/columns.hpp"

#include <algorithm>
#include <vector>

namespace tsrf_main01 {

namespace {

using tsrf_module_data::Data;
using tsrf_module_lyrstrct::Structure;

constexpr double kSpecificHeatOfAir = 1005.0;  // J/(kg K)

struct Cell {
  double dzl = 1e10;
  double capa = 1.0;
  double cond = 0.0;
  double extc = 1e20;
};

void set_defaults(Data& data) {
  const Cell outside;
  std::fill(data.lcal.begin(), data.lcal.end(), 0);
  std::fill(data.isrf.begin(), data.isrf.end(), 0);
  std::fill(data.nlyr.begin(), data.nlyr.end(), 0);
  std::fill(data.hc.begin(), data.hc.end(), data.settings.HTRNS);
  std::fill(data.hm.begin(), data.hm.end(), data.settings.HTRNS / kSpecificHeatOfAir);
  std::ranges::fill(data.dzl.all(), outside.dzl);
  std::ranges::fill(data.capa.all(), outside.capa);
  std::ranges::fill(data.cond.all(), outside.cond);
  std::ranges::fill(data.extc.all(), outside.extc);
}

/// The cells of a structure, and the row of properties of its surface.
struct Column {
  std::int32_t surface = 0;
  std::vector<Cell> cells;
};

Column column_of(frame::Log& log, const Structure& structure,
                 const tsrf_module_srfprp::Data& srfprp) {
  Column column;
  for (const tsrf_module_lyrstrct::Part& part : structure.parts) {
    const std::int32_t row = srfprp.by_code.find(part.SurfCD);
    if (row < 0) {
      log.data_error(frame::items("SurfCD in MatEleProp data =", part.SurfCD),
                     "it is not defined in SurfProp data");
    }
    if (column.cells.empty()) column.surface = row;
    const auto r = static_cast<std::size_t>(row);
    const bool graded = part.first_cell > 0.0;
    double thickness = graded ? part.first_cell : part.thickness / part.cells;
    for (std::int32_t i = 0; i < part.cells; ++i) {
      column.cells.push_back(
          {thickness, srfprp.heat_capacity[r], srfprp.conductivity[r], srfprp.wext[r]});
      if (graded) thickness *= part.ratio;
    }
  }
  return column;
}

void put_column(std::size_t p, const Column& column, Data& data) {
  data.lcal[p] = 1;
  data.isrf[p] = column.surface;
  data.nlyr[p] = static_cast<std::int32_t>(column.cells.size());
  for (std::int32_t row = 0; row < data.nlyr[p]; ++row) {
    const Cell& cell = column.cells[static_cast<std::size_t>(row)];
    data.dzl(p, row) = cell.dzl;
    data.capa(p, row) = cell.capa;
    data.cond(p, row) = cell.cond;
    data.extc(p, row) = cell.extc;
  }
}

/// Conductance of two that lie in series, from their product and sum; of two that do not conduct 0.
double in_series(double product, double sum) { return sum > 0.0 ? product / sum : 0.0; }

void set_conductances_of(std::size_t p, Data& data) {
  const std::int32_t n = data.nlyr[p];
  const auto of_cell = [&](std::int32_t k) { return data.cond(p, k - 1) / data.dzl(p, k - 1); };
  data.gcond(p, 0) = 2.0 * data.cond(p, 0) / data.dzl(p, 0);
  for (std::int32_t k = 1; k < n; ++k) {
    const double a = of_cell(k);
    const double b = of_cell(k + 1);
    data.gcond(p, k) = in_series(2.0 * a * b, a + b);
  }
  const double half_cell = 2.0 * data.cond(p, n - 1) / data.dzl(p, n - 1);
  data.gcond(p, n) = in_series(data.hin[p] * half_cell, half_cell + data.hin[p]);
}

void set_transmission_of(std::size_t p, Data& data) {
  double resistance = 0.0;
  double capacity = 0.0;
  bool conducts = true;
  for (std::int32_t row = 0; row < data.nlyr[p]; ++row) {
    const double cond = data.cond(p, row);
    capacity += data.dzl(p, row) * data.capa(p, row);
    if (cond > 0.0) {
      resistance += data.dzl(p, row) / cond;
    } else {
      conducts = false;
    }
  }
  for (const double film : {data.hc[p], data.hin[p]}) {
    if (film > 0.0) {
      resistance += 1.0 / film;
    } else {
      conducts = false;
    }
  }
  data.uval(p, 0) = conducts && resistance > 0.0 ? 1.0 / resistance : 0.0;
  data.uval(p, 1) = capacity;
}

}  // namespace

void tsrf_set_gdata(frame::Log& log, const tsrf_module_patch::Data& patch,
                    const tsrf_module_srfprp::Data& srfprp,
                    const tsrf_module_lyrstrct::Data& lyrstrct, Data& data) {
  const frame::Tag tag(log, "(tsrf_set_gdata)");
  set_defaults(data);
  // A structure is looked up when its first patch comes, so that the first patch with a fault is
  // the one that is reported.
  std::vector<Column> columns(lyrstrct.structures.size());
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (lyrstrct.structure[p] < 0) continue;
    const auto s = static_cast<std::size_t>(lyrstrct.structure[p]);
    if (columns[s].cells.empty()) {
      frame::allocating(
          log, "cells of a column",
          frame::bytes_of<Cell>(static_cast<std::size_t>(lyrstrct.structures[s].cells())), [&] {
            frame::attempt(log,
                           [&] { columns[s] = column_of(log, lyrstrct.structures[s], srfprp); });
          });
    }
    if (columns[s].cells.empty()) continue;
    put_column(p, columns[s], data);
  }
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] == tsrf_module_patch::kTree) data.isrf[p] = srfprp.n;
    if (patch.type[p] == tsrf_module_patch::kMirror) data.isrf[p] = srfprp.n + 1;
  }
}

void set_conductances(Data& data) {
  std::ranges::fill(data.gcond.all(), 0.0);
  for (std::size_t p = 0; p < data.lcal.size(); ++p) {
    if (data.lcal[p] > 0) set_conductances_of(p, data);
  }
}

double smallest_explicit_step(const Data& data) {
  double stiffest = 1e-20;  // 1/s
  for (std::size_t p = 0; p < data.lcal.size(); ++p) {
    if (data.lcal[p] <= 0) continue;
    for (std::int32_t k = 1; k <= data.nlyr[p]; ++k) {
      const double rate =
          (data.gcond(p, k) + data.gcond(p, k - 1)) / (data.dzl(p, k - 1) * data.capa(p, k - 1));
      stiffest = std::max(stiffest, rate);
    }
  }
  return 1.0 / stiffest;
}

void report_smallest_step(frame::Log& log, const Data& data) {
  log.line("%%% delta-t in ground =", smallest_explicit_step(data));
}

void set_transmission(Data& data) {
  for (std::size_t p = 0; p < data.lcal.size(); ++p) {
    if (data.lcal[p] > 0) set_transmission_of(p, data);
  }
}

}  // namespace tsrf_main01
