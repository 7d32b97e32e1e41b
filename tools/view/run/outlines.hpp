// One closed line, or triangles, of a patch that has several rings.
//
// Formats that know neither holes nor several pieces take a line that runs through all rings, with
// an edge there and back between each two: it encloses the same area. Programs that draw take
// triangles. Used by netcdf/ and vtk/.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "run/run_model.hpp"

namespace townskin_view {

/// Points (positions in `xyz` / 3) of the line through all rings of a patch; empty without rings.
[[nodiscard]] std::vector<std::uint32_t> joined_ring(const Shapes& shapes, std::size_t patch);

/// Triangles that fill a patch, by ear clipping (Meisters 1975), piece by piece.
[[nodiscard]] std::vector<std::array<std::uint32_t, 3>> triangles_of(
    const Shapes& shapes, const std::array<double, 3>& normal, std::size_t patch);

/// Middle of a patch's corners; of a patch without shape not a number.
[[nodiscard]] std::array<double, 3> middle_of(const Shapes& shapes, std::size_t patch);

}  // namespace townskin_view
