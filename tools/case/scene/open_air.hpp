// Which cells the air of the flow model fills, and how open they are.
//
// True shapes leave slits and wedges in which a flow on cells can gain speed without end. So cells
// and faces that are nearly closed count as closed, and with them whatever they cut off from the
// outer air; what remains keeps its true fractions. Surfaces give their heat to these cells.
#pragma once

#include "scene/porous.hpp"

namespace townskin_case {

/// The open part of a cell's volume and of a face below which they count as closed.
inline constexpr double kClosedVolume = 0.2, kClosedFace = 0.1;

/// Fractions for the flow, from the true ones. No cell is less open than its six faces in the mean.
Porous open_air(const Porous& porous);

/// The cell itself if the air fills it, else the first such above it.
std::array<std::int32_t, 3> air_above(const Porous& air, std::array<std::int32_t, 3> cell);

}  // namespace townskin_case
