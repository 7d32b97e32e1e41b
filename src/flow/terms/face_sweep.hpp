// One pass over all faces of the box, for every term that is the divergence of a flux.
//
// The flux of each face is formed once, a row of faces at a time, and goes to the cells on both
// sides; rows that the next row or plane needs again are kept, so that no flux is ever stored as a
// field. Several variables go through together, because they share the mass flux or the viscosity.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "flow/box.hpp"
#include "flow/metrics.hpp"
#include "flow/share.hpp"
#include "frame/function_ref.hpp"

namespace flow {

inline constexpr std::size_t kSweepWidth = 4;  ///< fluxes that go through together

/// The rows of fluxes that a hand keeps in its tile.
struct TileRows {
  using Rows = std::array<std::vector<double>, kSweepWidth>;
  Rows fresh;                   ///< the row of faces being formed
  Rows below;                   ///< of the faces of the row of cells before (y)
  Rows under;                   ///< of the faces of the plane of cells before (z)
  std::vector<double> scratch;  ///< one row for the use of the flux
};

/// Those of all hands; sized once, for a box.
struct SweepRows {
  std::vector<TileRows> of;

  SweepRows() = default;
  SweepRows(const Box& box, std::size_t hands);
};

/// A row of faces of `axis`: `place` is that of the first face, `index` its i, j, k.
struct FaceRow {
  int axis;
  std::size_t place;
  std::size_t count;
  Triple index;
};

using FluxRows = std::array<double*, kSweepWidth>;

/// dqdt[i] -= (flux[i+1] - flux[i]) * inv_width[i]: faces along the row.
void subtract_along(std::size_t count, const double* flux, const double* inv_width, double* dqdt);
/// dqdt[i] -= (flux[i] - before[i]) * inv_width, and `before` becomes `flux`.
void subtract_across(std::size_t count, const double* flux, double inv_width, double* before,
                     double* dqdt);

/// What a sweep calls for each row of cells before its first flux arrives: `(place, j, k)`.
using RowStart = frame::FunctionRef<void(std::size_t, std::int32_t, std::int32_t)>;
/// The row goes on from what it holds.
inline constexpr auto kGoOn = [](std::size_t, std::int32_t, std::int32_t) {};

/// Goes over all faces of the computed axes, a row of cells after the other, each hand in tiles of
/// its own; the faces where a tile begins are formed by both tiles beside them. `form(row, out,
/// scratch)` writes the fluxes of a row of faces in the positive direction of its axis, each
/// variable into its own row of `out`; `along(place, fluxes)` takes those of the faces along a row
/// of cells to its cells, the first of which stands at `place`; `across(axis, index, place, fluxes,
/// before)` those of the faces above the cells, of number `index` along `axis`, with what passed
/// below them, and leaves the fluxes in `before`.
template <class Form, class Along, class Across>
void sweep_tile(const Box& box, const Tile& tile, TileRows& rows, RowStart begin, Form&& form,
                Along&& along, Across&& across) {
  const auto n = static_cast<std::size_t>(box.n[0]);
  double* const scratch = rows.scratch.data();
  const auto pointers = [&](TileRows::Rows& set, std::size_t offset) {
    FluxRows row{};
    for (std::size_t v = 0; v < kSweepWidth; ++v) row[v] = set[v].data() + offset;
    return row;
  };
  const FluxRows fresh = pointers(rows.fresh, 0);
  for (std::int32_t k = tile.first_k; k <= tile.last_k; ++k) {
    for (std::int32_t j = tile.first_j; j <= tile.last_j; ++j) {
      const std::size_t place = box.at(1, j, k);
      begin(place, j, k);
      if (box.computed(0)) {
        form(FaceRow{0, place - 1, n + 1, {0, j, k}}, fresh, scratch);
        along(place, fresh);
      }
      if (box.computed(1)) {
        const FluxRows below = pointers(rows.below, 0);
        if (j == tile.first_j) {
          form(FaceRow{1, place - box.stride(1), n, {1, j - 1, k}}, below, scratch);
        }
        form(FaceRow{1, place, n, {1, j, k}}, fresh, scratch);
        across(1, j, place, fresh, below);
      }
      if (box.computed(2)) {
        const FluxRows under = pointers(rows.under, n * static_cast<std::size_t>(j - tile.first_j));
        if (k == tile.first_k) {
          form(FaceRow{2, place - box.stride(2), n, {1, j, k - 1}}, under, scratch);
        }
        form(FaceRow{2, place, n, {1, j, k}}, fresh, scratch);
        across(2, k, place, fresh, under);
      }
    }
  }
}

/// All tiles.
template <class Form, class Along, class Across>
void sweep_faces(frame::Crew& crew, const Box& box, SweepRows& rows, RowStart begin, Form&& form,
                 Along&& along, Across&& across) {
  share_tiles(crew, box, [&](const Tile& tile, std::size_t hand) {
    sweep_tile(box, tile, rows.of[hand], begin, form, along, across);
  });
}

/// Takes the divergence of a flux from the tendencies; `flux` is the `form` of sweep_tile.
template <class Flux>
void subtract_divergence(frame::Crew& crew, const Box& box, const Metrics& metrics,
                         std::span<Field* const> dqdt, SweepRows& rows, RowStart begin,
                         Flux&& flux) {
  const auto n = static_cast<std::size_t>(box.n[0]);
  sweep_faces(
      crew, box, rows, begin, flux,
      [&](std::size_t place, const FluxRows& fluxes) {
        for (std::size_t v = 0; v < dqdt.size(); ++v) {
          subtract_along(n, fluxes[v], AxisMetric::from(metrics[0].inv_width, 1),
                         dqdt[v]->data() + place);
        }
      },
      [&](int axis, std::int32_t index, std::size_t place, const FluxRows& fluxes,
          const FluxRows& before) {
        const auto a = static_cast<std::size_t>(axis);
        const double inv_width = AxisMetric::at(metrics[a].inv_width, index);
        for (std::size_t v = 0; v < dqdt.size(); ++v) {
          subtract_across(n, fluxes[v], inv_width, before[v], dqdt[v]->data() + place);
        }
      });
}

}  // namespace flow
