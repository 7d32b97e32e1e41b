// Joins the pieces of a patch to one outline where that is convex.
//
// townskin_case cuts faces into triangles before it cuts them along the cells, so that a rectangle
// of wall comes as two or more pieces. Joined they are drawn as one, with the glass in its middle.
// Called by read_shapes.
#pragma once

#include <array>
#include <optional>
#include <vector>

namespace townskin_view {

using Corner = std::array<double, 3>;

/// The outline of pieces of one plane that turn left about `normal`; none where they do not join to
/// a convex one.
[[nodiscard]] std::optional<std::vector<Corner>> joined(
    const std::vector<std::vector<Corner>>& pieces, const Corner& normal);

}  // namespace townskin_view
