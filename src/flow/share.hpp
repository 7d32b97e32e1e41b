// Loops over the box that the hands of the run's crew share.
//
// Rows, or tiles of them, are cut at fixed places and go to whichever hand is free; a row is formed
// by one hand, in the order in which one alone would form it. A box of few cells stays on the
// caller. Used by all operators whose rows do not depend on one another.
#pragma once

#include <algorithm>
#include <type_traits>

#include "flow/box.hpp"
#include "frame/crew.hpp"

namespace flow {

/// Cells of a stretch: some microseconds of work, about what waking a hand takes. Measured with
/// bench_flow_growth: longer ones cost boxes of 24 to 48 cells a side what sharing gains.
inline constexpr std::size_t kSharedCells = 2048;

/// Rows of `length` cells that make a stretch.
inline std::size_t shared_rows(std::size_t length) {
  return std::max<std::size_t>(kSharedCells / std::max<std::size_t>(length, 1), 1);
}

/// Calls `row(place, j, k)`, or `row(place, j, k, hand)`, for each row of cells of the box: `place`
/// is that of i = 1.
template <class Row>
void share_rows(frame::Crew& crew, const Box& box, Row&& row) {
  const auto ny = static_cast<std::size_t>(box.n[1]);
  const std::size_t rows = ny * static_cast<std::size_t>(box.n[2]);
  const std::size_t stretch = shared_rows(static_cast<std::size_t>(box.n[0]));
  crew.share(rows, stretch, [&](frame::Crew::Stretch part) {
    for (std::size_t r = part.first; r < part.last; ++r) {
      const auto j = static_cast<std::int32_t>(r % ny) + 1;
      const auto k = static_cast<std::int32_t>(r / ny) + 1;
      if constexpr (std::is_invocable_v<Row, std::size_t, std::int32_t, std::int32_t,
                                        std::size_t>) {
        row(box.at(1, j, k), j, k, part.hand);
      } else {
        row(box.at(1, j, k), j, k);
      }
    }
  });
}

/// The same for the rows with the halos of the computed axes: calls `row(place, count, j, k)`,
/// where `place` and `count` are those of the whole row with its halos.
template <class Row>
void share_wide_rows(frame::Crew& crew, const Box& box, Row&& row) {
  const auto beyond = [&box](int axis) { return box.computed(axis) ? kHalo : 0; };
  const auto wide = [&](std::size_t axis) {
    return static_cast<std::size_t>(box.n[axis]) +
           2 * static_cast<std::size_t>(beyond(static_cast<int>(axis)));
  };
  const std::size_t count = wide(0);
  crew.each(wide(1) * wide(2), shared_rows(count), [&](std::size_t r) {
    const auto j = static_cast<std::int32_t>(r % wide(1)) + 1 - beyond(1);
    const auto k = static_cast<std::int32_t>(r / wide(1)) + 1 - beyond(2);
    row(box.at(1 - beyond(0), j, k), count, j, k);
  });
}

/// Calls `work(first, last)` for planes of cells, numbered from 0, up to, not including, `last`:
/// for what few of the cells have, so that a stretch is larger.
template <class Work>
void share_planes(frame::Crew& crew, const Box& box, Work&& work) {
  const auto planes = static_cast<std::size_t>(box.n[2]);
  const auto cells = static_cast<std::size_t>(box.n[0]) * static_cast<std::size_t>(box.n[1]);
  const std::size_t stretch = std::max(shared_rows(cells / 8), planes / (4 * crew.hands()));
  crew.share(planes, stretch, [&](frame::Crew::Stretch part) { work(part.first, part.last); });
}

/// Some rows of cells of some planes: j and k from `first` up to and including `last`.
struct Tile {
  std::int32_t first_j, last_j;
  std::int32_t first_k, last_k;
};

/// Rows of the widest tile.
inline std::int32_t tile_rows(const Box& box) {
  constexpr std::int32_t kTileCells = 2048;  // of a plane
  return std::min(std::max(kTileCells / box.n[0], 4), box.n[1]);
}

/// How a box is cut into tiles.
struct Tiling {
  std::int32_t wide = 1, deep = 1;  ///< rows and planes of a tile
  std::int32_t across = 1;          ///< tiles side by side
  std::int32_t count = 1;

  Tiling(const frame::Crew& crew, const Box& box) {
    const auto up = [](std::int32_t all, std::int32_t part) { return (all + part - 1) / part; };
    const auto cut = [&crew](std::int32_t rows) {
      return static_cast<std::int32_t>(crew.stretch(static_cast<std::size_t>(rows)));
    };
    wide = cut(tile_rows(box));
    across = up(box.n[1], wide);
    const auto wanted = static_cast<std::int32_t>(crew.hands() == 1 ? 1 : 4 * crew.hands());
    const std::int32_t least = static_cast<std::int32_t>(kSharedCells) / (wide * box.n[0]) + 1;
    deep = std::max(up(box.n[2], up(wanted, across)), cut(std::min(box.n[2], least)));
    count = across * up(box.n[2], deep);
  }
  [[nodiscard]] Tile at(std::int32_t number, const Box& box) const {
    const std::int32_t j = number % across * wide;
    const std::int32_t k = number / across * deep;
    return {j + 1, std::min(j + wide, box.n[1]), k + 1, std::min(k + deep, box.n[2])};
  }
};

/// Calls `work(tile, hand)` for tiles that together are the box. They go through as many planes as
/// leaves each hand enough of them, and are so narrow that a few planes of a tile stay in a core's
/// cache.
template <class Work>
void share_tiles(frame::Crew& crew, const Box& box, Work&& work) {
  const Tiling tiling(crew, box);
  crew.share(static_cast<std::size_t>(tiling.count), 1, [&](frame::Crew::Stretch part) {
    for (std::size_t t = part.first; t < part.last; ++t) {
      work(tiling.at(static_cast<std::int32_t>(t), box), part.hand);
    }
  });
}

}  // namespace flow
