// tsrf_module_data: the state of all patches.
//
// Owns the layered temperatures and the per-patch coefficients that the step routines share, and
// the settings of group TSRF_DATA. Made once at the start (allocdata01 when the patches are known,
// allocdata02 when their columns are), lives to the end of the run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "frame/text_input.hpp"

namespace tsrf_module_data {

/// Group TSRF_DATA.
struct Settings {
  std::int32_t LCNVRG = 1;   ///< positive: stop when the daily cycle repeats
  double DZG = 0.05;         ///< first cell of the ground [m]
  double ZLG = 0.75;         ///< depth of the ground [m]
  double DZW = 1.0e10;       ///< wanted cell thickness in walls [m]
  double WSKY0 = 1.0;        ///< weight of the sky, 0..1
  double HTRNS = 11.6;       ///< convective coefficient of all surfaces [W/m2 K]
  bool LTRSMPL = false;      ///< simple trees over patches instead of the canopy of cells
  std::int32_t LOUTSTR = 0;  ///< output switch
};

struct Data {
  Settings settings;
  std::string settings_place;  ///< where their group stands, for the log

  std::int32_t mpatch = 0;  ///< number of patches
  std::int32_t mzg = 2;     ///< one more than the largest number of cells of a column, at least 2

  // Per patch (allocdata01), all 0 at first.
  std::vector<std::int32_t> lcal;  ///< 1 when the patch is computed
  std::vector<std::int32_t> isrf;  ///< row of the surface properties, from 0
  frame::PatchTable<double>
      airst;  ///< 4 rows: pressure [Pa], temperature [K], humidity [kg/kg], wind [m/s]
  frame::Origin air_origin;         ///< the weather that it was made of
  std::vector<double> skyvf0;       ///< sky view factor
  frame::PatchTable<double> qsurf;  ///< 6 rows: the terms of the surface balance [W/m2]
  std::vector<double> hc;           ///< convective coefficient [W/m2 K]
  std::vector<double> hm;           ///< moisture coefficient [kg/m2 s]
  std::vector<double> hin;  ///< inner film coefficient [W/m2 K], 0 unless a building surface
  frame::PatchTable<double>
      treeax;  ///< 3 rows: simple tree, leaf area density [m2/m3], height [m], leaf temperature [K]
  std::vector<std::int32_t> treemk;  ///< 1 when the patch carries a simple tree

  // Columns (allocdata02).
  std::vector<std::int32_t> nlyr;  ///< number of cells of the column
  frame::PatchTable<double> dzl;   ///< mzg rows, row k-1 = cell k: cell thickness [m]
  frame::PatchTable<double>
      tlyr;  ///< mzg+1 rows, row k = node k: temperature [K]; node 0 is the surface
  frame::PatchTable<double> tprev;  ///< as tlyr: at the last day's end
  frame::PatchTable<double> gcond;  ///< mzg+1 rows, row k: conductance from node k to k+1 [W/m2 K]
  frame::PatchTable<double> cond;   ///< mzg rows, row k-1 = cell k: conductivity [W/m K]
  frame::PatchTable<double> capa;   ///< the same: heat capacity [J/m3 K]
  frame::PatchTable<double> extc;   ///< the same: extinction coefficient [1/m]
  frame::PatchTable<double>
      uval;  ///< 2 rows: overall transmission [W/m2 K], heat capacity per area [J/m2 K]
};

/// Reads group TSRF_DATA.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// Takes the per-patch arrays for data.mpatch patches.
void allocdata01(frame::Log& log, Data& data);
/// Takes the column arrays for data.mpatch patches of data.mzg cells; temperatures 300 K.
void allocdata02(frame::Log& log, Data& data);

/// Tells what the arrays take.
void list_arrays(const Data& data, frame::ArrayList& list);

}  // namespace tsrf_module_data
