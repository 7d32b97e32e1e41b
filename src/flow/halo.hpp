// Halos: the cells beyond the ends of the box.
//
// With one process only the ends of the domain have them: a periodic end repeats the other one, a
// symmetric end mirrors, and all others, which have a condition on their faces, copy the last cell
// so that an operator may form differences there before the condition replaces them. Called after
// each change of a field. An axis with one cell is not computed: its halos stay as they are.
#pragma once

#include <span>

#include "flow/boundary.hpp"
#include "flow/box.hpp"
#include "frame/crew.hpp"

namespace flow {

using Ends = std::array<std::array<End, 2>, 3>;

/// Fills both halo layers of a cell field. A component along `odd_axis` changes its sign in the
/// mirror of that axis; -1: none does. Axes before `first` are filled already.
void fill_halos(frame::Crew& crew, Field& field, const Ends& ends, int odd_axis = -1,
                int first = 0);
/// Fills the halos of the face field of `axis`, whose own faces are 0..n along it. At a symmetric
/// end the face of the end itself is set to 0; at a periodic one the two faces that are the same
/// place both take the upper one's value.
void fill_face_halos(frame::Crew& crew, Field& field, int axis, const Ends& ends, int first = 0);

/// A layer across an axis takes `sign` times the values of another one.
struct LayerCopy {
  std::int32_t to, from;
  double sign;
};
/// The copies of an axis, one behind the other.
struct LayerCopies {
  std::array<LayerCopy, 8> list{};
  std::size_t count = 0;

  void add(const LayerCopy& copy) { list[count++] = copy; }
  [[nodiscard]] std::span<const LayerCopy> used() const { return std::span(list).first(count); }
};
/// Those along x, for a pass that fills the ends of its rows while they are near, and leaves only
/// the other axes to the above: of a cell field, and of the face field of an axis.
LayerCopies row_ends(const Box& box, const Ends& ends, bool odd);
LayerCopies face_row_ends(const Box& box, const Ends& ends, int axis);
/// `row` is the place of i = 1.
void fill_row_ends(const LayerCopies& copies, double* row);
/// The same by one hand, for the start of a run.
void fill_halos(Field& field, const Ends& ends, int odd_axis = -1);
void fill_face_halos(Field& field, int axis, const Ends& ends);

}  // namespace flow
