// solid1d: conduction in the columns behind the surfaces.
//
// One step of all columns. The surface node comes from the surface balance, the node behind the
// last cell from the room; both are held while the cells between advance: explicitly where the
// step is short enough for the column's cells, by backward Euler where it is not.
//
// Columns of one material are alike, so conductances, cells and the factors of the elimination are
// kept once for each kind of column, and what a step moves is temperatures only. Blocks of
// neighbouring patches of one kind go through the layers together. Called by the step.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "inputs/patch.hpp"
#include "surface/surface_state.hpp"

namespace solid1d {

/// A column is explicit while its stiffness times the step is not above this.
inline constexpr double kExplicitLimit = 0.99;

/// One cell of a kind of column.
struct Cell {
  double dzl;    ///< thickness [m]
  double capa;   ///< heat capacity [J/m3 K]
  double gcond;  ///< conductance to the next node [W/m2 K]
  // For the step in force.
  double rate = 0.0;      ///< explicit: dt / capa
  double lower = 0.0;     ///< implicit: factor of the change of the cell before, 0 of the first
  double diagonal = 0.0;  ///< implicit: of the row after elimination
  double upper = 0.0;     ///< implicit: factor of the change of the next cell over the diagonal
};

/// Columns that are alike.
struct Kind {
  std::int32_t cells = 0;
  std::size_t first_cell = 0;  ///< position of cell 1 in Work::cells
  double surface_gcond = 0.0;  ///< conductance from the surface to cell 1 [W/m2 K]
  double stiffness = 0.0;      ///< [1/s]
  bool heated = false;         ///< has a heat source in its cells
  bool implicit = false;       ///< for the step in force
};

/// Patches of one kind that advance together.
struct ColumnBlock {
  std::size_t first;  ///< position in Work::order
  std::size_t count;
  std::size_t kind;
};

/// What the columns of a run come to; fixed but for the terms that hang on the step.
struct Work {
  double dt = 0.0;  ///< the step in force [s], 0 before the first
  std::vector<Kind> kinds;
  std::vector<Cell> cells;
  std::vector<std::uint32_t> order;  ///< patches by blocks
  std::vector<ColumnBlock> blocks;
  std::int32_t most_cells = 0;  ///< of a column
  std::vector<double> rows;     ///< scratch: the right sides of a block's rows, a set for each hand
};

/// Sorts the columns of all patches with lcal > 0 into kinds and blocks. To be called once, when
/// cells and conductances are set. `heated` are the patches, ascending, whose cells may have a
/// heat source.
void set_columns(frame::Log& log, const tsrf_module_data::Data& state,
                 std::span<const std::int32_t> heated, Work& work);

/// Warns of the columns that a step of `dt` [s] takes implicitly. Their surfaces are found from the
/// first cell's temperature of the step before, which acts as if they had dt times the conductance
/// from the surface to that cell more heat capacity. Tells number and area of such columns and, of
/// the patch with the most of it, the material and the step at which its column is explicit.
void warn_of_implicit(frame::Log& log, double dt, const tsrf_module_patch::Data& patch,
                      const Work& work);

/// Advances the cells of the columns by `dt` [s]. `qlayer` (row k-1 = cell k) is added to the
/// divergence of the flux in the cells of heated patches; it may be empty where there are none.
void solid1d(frame::Crew& crew, double dt, const frame::PatchTable<double>& qlayer,
             tsrf_module_data::Data& state, Work& work);

/// Tells what the arrays take.
void list_arrays(const Work& work, frame::ArrayList& list);

}  // namespace solid1d
