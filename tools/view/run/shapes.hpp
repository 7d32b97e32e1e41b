// The outlines of patches: true ones where townskin_case left them, else rectangles.
//
// geometry.txt tells the outlines of groups: wall and glass of one group have the same. There the
// later patch becomes an inset of the earlier one, so that each is as large as its patch. Called by
// read_run.
#pragma once

#include <string>

#include "run/run_model.hpp"

namespace townskin_view {

/// Fills `run.shapes`; a geometry.txt that does not fit the patches is noted and left aside.
void read_shapes(const std::string& geometry, RunModel& run);

/// A rectangle of a patch's area at the face of its cell, for every patch.
void draw_rectangles(RunModel& run);

/// Area that the rings of a patch enclose, holes taken off [m2].
[[nodiscard]] double area_of(const Shapes& shapes, std::size_t patch);

}  // namespace townskin_view
