// Loops in which each place needs what the places before it have done, shared in waves.
//
// A field of rows and columns is cut into tiles. A tile that comes behind another one along either
// side waits for it, and tiles on a diagonal, which share no side, are done at the same time: every
// place meets its neighbours' work in the order of the plain loops.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "frame/crew.hpp"

namespace jmk {

/// Rows and columns from `first` to before `last`.
struct Tile {
  std::array<std::size_t, 2> first;
  std::array<std::size_t, 2> last;
};

/// Does `part` for all tiles, `height` rows by `width` columns each.
template <class Part>
void in_waves(frame::Crew& crew, std::size_t rows, std::size_t columns, std::size_t height,
              std::size_t width, Part&& part) {
  const std::size_t down = (rows + height - 1) / height;
  const std::size_t across = (columns + width - 1) / width;
  if (down == 0 || across == 0) return;
  for (std::size_t wave = 0; wave + 1 < down + across; ++wave) {
    const std::size_t first = wave < across ? 0 : wave + 1 - across;
    const std::size_t last = std::min(wave + 1, down);
    crew.each(last - first, 1, [&](std::size_t n) {
      const std::size_t a = first + n;
      const std::size_t b = wave - a;
      part(Tile{{a * height, b * width},
                {std::min((a + 1) * height, rows), std::min((b + 1) * width, columns)}});
    });
  }
}

}  // namespace jmk
