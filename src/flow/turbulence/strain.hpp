// The rate of strain at the centres of the cells, 2 S:S with S the symmetric part of grad u.
//
// Shared by the turbulence models: it feeds k and epsilon and sets the eddy viscosity of the large
// eddies. The stretching along an axis is that of the velocities on the faces, the shear that of
// the velocities of the cells, both of second order. Beside the rim the gradient is what the
// condition gives: towards a wall that of the wall's velocity over the half cell, or of the law of
// the wall; 0 where the velocity has no gradient. Formed a row at a time and used at once.
#pragma once

#include <span>

#include "flow/share.hpp"
#include "flow/terms/domain.hpp"
#include "flow/turbulence/rim_cells.hpp"
#include "flow/turbulence/wall_flow.hpp"

namespace flow {

/// What the strain needs, made once.
struct Strain {
  std::array<CentreSlope, 3> slopes;
  std::vector<RimCell> cells;
  WallFlows walls;
  std::vector<std::vector<double>> rows;  ///< 2 S:S of a row, for each hand [1/s2]
};

Strain make_strain(const Domain& domain);

/// 2 S:S of the row of cells at `place`; those beside the rim are wrong.
void set_strain_row(const Domain& domain, const Strain& strain, const Velocities& velocities,
                    std::size_t place, std::int32_t j, std::int32_t k, double* out);
/// 2 S:S of a cell beside the rim; the walls must be set.
[[nodiscard]] double strain_at(const Domain& domain, const Strain& strain,
                               const Velocities& velocities, const RimCell& cell);

/// Sets the walls and calls `use(row, place, j, k, hand)` with 2 S:S of each row of cells; what it
/// holds in cells that are not fluid has no meaning. Reads r level 1, mu and the velocities with
/// their halos.
template <class Use>
void for_strain(const Domain& domain, const State& state, const Velocities& velocities,
                Strain& strain, Use&& use) {
  set_wall_flows(domain.crew, domain.rim, state, velocities, strain.walls);
  const Box& box = domain.grid.box;
  share_rows(domain.crew, box,
             [&](std::size_t place, std::int32_t j, std::int32_t k, std::size_t hand) {
               double* const row = strain.rows[hand].data();
               set_strain_row(domain, strain, velocities, place, j, k, row);
               for (const RimCell& cell : cells_of_row(strain.cells, place, box)) {
                 row[cell.cell - place] = strain_at(domain, strain, velocities, cell);
               }
               use(row, place, j, k, hand);
             });
}

}  // namespace flow
