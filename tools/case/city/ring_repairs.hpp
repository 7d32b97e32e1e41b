// Outlines as data have them made into valid polygons.
#pragma once

#include "city/features.hpp"
#include "shapes/geos.hpp"

namespace townskin_case {

/// The valid polygons that the outline means; empty if it has no area (then told as left out).
/// Sets right: rings that are not closed, turn the wrong way, repeat points, cross themselves or
/// lie outside their outer ring. `closed` is true where the format wants the first point repeated.
std::vector<Polygon2> repaired_outline(const Geos& geos, const RawPolygon& outline, bool closed,
                                       const Origin& origin, Report& report);

/// The ring without points that repeat the one before, or the first at its end; tells how many such
/// there were.
Ring3 without_repeats(const Ring3& ring, std::size_t& repeats);

}  // namespace townskin_case
