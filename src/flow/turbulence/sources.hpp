// What makes and destroys k and epsilon within a cell.
//
// Gains are rates [kg/m s3 and its like for epsilon]; sinks are rates over the quantity itself, so
// that a step can take them at its end and k and epsilon stay positive whatever its length. Called
// by flw_clkeps for each row of cells, with its strain.
#pragma once

#include "flow/terms/domain.hpp"
#include "flow/turbulence/strain.hpp"

namespace flow {

inline constexpr double kC1 = 1.44;
inline constexpr double kC2 = 1.92;
inline constexpr double kC3 = 1.44;
inline constexpr double kDragGain = 1.0;   ///< c: what leaves take from the flow all feeds k
inline constexpr double kDragScale = 1.5;  ///< ce: and so much of it epsilon

/// Sources of k and epsilon in a row of cells.
struct SourceRows {
  std::array<std::vector<double>, 2> gain, sink;
  std::vector<double> buoyancy, gs;

  SourceRows() = default;
  explicit SourceRows(const Box& box);
};

/// A row of cells: `place` is that of the first.
struct CellRow {
  std::size_t place;
  std::int32_t j, k;
};

/// Production by shear, gs = mut 2 S:S [kg/m s3].
void flw_cldspf(const State& state, const CellRow& row, const double* strain, SourceRows& out);

/// Production by buoyancy, (mut/prturb)(g . grad T)/T [kg/m s3]: positive where cold air lies above
/// warm; 0 without temperature or where prturb is not above 0. Beside the rim the gradient of the
/// side where air is, at the centre of the cell. `t` has its halos.
void set_buoyancy(const Domain& domain, const Strain& strain, const State& state, const Field& t,
                  const CellRow& row, SourceRows& out);

/// Gains and sinks of standard k-epsilon (Launder and Spalding 1974) from both productions: of k
/// gs + G - r eps, of epsilon (eps/k)(1.44 gs + 1.44 max(G, 0) - 1.92 r eps).
void set_sources(const State& state, const CellRow& row, SourceRows& out);

/// Adds what the drag of leaves makes: with P = r adrg c U^3, P to k's gain and ce eps P/k to
/// epsilon's, each by the cell's whole volume over its open one.
void flw_clkdrg(const Domain& domain, const State& state, const Velocities& velocities,
                const CellRow& row, double c, double ce, SourceRows& out);

}  // namespace flow
