// tsrf_module_lyrstrct: from a material to the cells of a conduction column.
//
// Gives each land patch a graded ground column and each building surface its wall's layers, and
// tells the largest number of cells. Called at the start, before the columns are made.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/log.hpp"
#include "inputs/matprp.hpp"
#include "inputs/patch.hpp"

namespace tsrf_module_lyrstrct {

/// The most cells of a column; more come of a slip in a thickness, not of a need.
inline constexpr std::int32_t kMostCells = 1000;

/// One part of a column: `cells` cells of one material.
struct Part {
  std::int32_t SurfCD = 0;
  double thickness = 0.0;  ///< [m]
  std::int32_t cells = 0;
  double first_cell = -1.0;  ///< thickness of the first cell [m], or -1 for equal cells
  double ratio = 1.0;        ///< growth of cell thickness
};

enum class Kind : std::int32_t { land = 1, building = 3 };

struct Structure {
  Kind kind = Kind::land;
  std::vector<Part> parts;
  [[nodiscard]] std::int32_t cells() const;
};

struct Data {
  std::vector<Structure> structures;    ///< each shared by all patches of one kind and material
  std::vector<std::int32_t> structure;  ///< per patch: position in `structures`, -1 for none
  std::vector<std::int32_t> material;   ///< per patch: position of its material, -1 for none
  std::vector<std::int32_t> building;   ///< per patch: position of its building, -1 for none
};

/// Ratio of growth and number of cells for a layer of thickness `zl`, first cell `dz`, at least
/// `nmin` cells where dz nmin < zl. Stops the run when there is no such grading; `place` is the
/// line of the log that tells where the thicknesses stand.
struct Grading {
  std::int32_t n;
  double ratio;
};
Grading cal_gemtrc(frame::Log& log, std::int32_t nmin, double dz, double zl,
                   std::string_view place = {});

/// Fails where the column that `layer` is the largest layer of has more than kMostCells cells.
void check_cells(frame::Log& log, double cells, const std::string& layer);

/// Ground columns of all land patches, `zl` deep with a first cell `dz`, which stand at `place`;
/// sets the sizes of the per-patch arrays.
void lyrstrct_set_land(frame::Log& log, double dz, double zl, std::string_view place,
                       const tsrf_module_patch::Data& patch, const tsrf_module_matprp::Data& matprp,
                       Data& data);

/// Position of a patch's material. A code that MatEleProp does not define is a data error.
std::int32_t find_material(frame::Log& log, std::int32_t SurfID,
                           const tsrf_module_matprp::Data& matprp);

/// One more than the largest number of cells of a patch's column; 2 where there is none.
[[nodiscard]] std::int32_t column_size(const Data& data);

/// Tells what the arrays take.
void list_arrays(const Data& data, frame::ArrayList& list);

}  // namespace tsrf_module_lyrstrct
