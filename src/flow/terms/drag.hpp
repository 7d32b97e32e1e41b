// flw_clvdrg: leaves hold the air back.
//
// Force per whole volume r adrg |u| u, opposite to the velocity u, on the faces themselves: with
// the speed of the air on a face the drag field gives the rate at which its flux is lost. The field
// on a face is the mean over the two half cells beside it, so that a wind along an axis loses
// exactly the sum of adrg * width * r u^2 of the cells on its way. The rate goes into the tendency
// of the explicit form as a sink, and into the diagonal of the implicit one too.
//
// The explicit sink of one step never exceeds the flux that there is: the flow comes to rest at
// most, and does not turn. The time step does not know of leaves; where adrg |u| dt comes near 1
// the flow in them is held too little, and a smaller `dtsafe` is needed.
//
// Lists of the faces with leaves are made once: a run without any pays nothing.
#pragma once

#include <array>
#include <vector>

#include "flow/terms/domain.hpp"
#include "flow/terms/velocities.hpp"

namespace flow {

/// A face beside leaves: between two cells of air, or a free one of the rim.
struct DragFace {
  std::size_t face;
  std::size_t lower, upper;   ///< cells on both sides; at a free face both its own cell
  bool has_lower, has_upper;  ///< the cell is one of the box and not its periodic image
  double at_lower, at_upper;  ///< parts of the two cells' velocities in that of the face
  double drag;                ///< adrg over the open volume [1/m]
};

/// Faces with leaves by axis; for each the rate [1/s] and the loss of its flux [kg/m2 s2].
struct Drag {
  std::array<std::vector<DragFace>, 3> faces;
  std::array<std::vector<double>, 3> rate, sink;
};

Drag make_drag(const Domain& domain);

/// Rates and sinks for a step of dt [s]; of the explicit form at most 1/dt. Reads ru, the
/// velocities with their halos; writes `drag`. Second order in space.
void flw_clvdrg(const Domain& domain, const State& state, const Velocities& velocities, double dt,
                Drag& drag);

/// field -= factor * sink on the faces of an axis.
void take_sink(const Drag& drag, std::size_t axis, double factor, Field& field);
/// Adds dt * rate to the diagonal of the cells of an axis' component: half of it from each face.
void add_drag_diagonal(const Drag& drag, std::size_t axis, double dt, Field& diagonal);

}  // namespace flow
