#include "flow/halo.hpp"

#include <algorithm>
#include <span>

#include "flow/share.hpp"

namespace flow {

namespace {

/// Layers along `axis`, over the whole extent of the other two, halos included. A line of cells
/// along the axis takes part in no other.
void copy_layers(frame::Crew& crew, Field& field, int axis, const LayerCopies& copies) {
  const Box& box = field.box();
  const int inner = axis == 0 ? 1 : 0;
  const int outer = axis == 2 ? 1 : 2;
  const std::size_t step = box.stride(inner);
  const std::size_t count = box.extent(inner);
  const auto start = [&](std::int32_t layer) {
    return static_cast<std::size_t>(layer + kHalo - 1) * box.stride(axis);
  };
  const auto used = copies.used();
  crew.each(box.extent(outer), shared_rows(count), [&](std::size_t o) {
    double* const row = field.data() + o * box.stride(outer);
    if (axis == 0) {  // all layers of a line are near
      for (std::size_t i = 0; i < count; ++i) {
        double* const line = row + i * step;
        for (const auto& [to, from, sign] : used) line[start(to)] = sign * line[start(from)];
      }
      return;
    }
    for (const auto& [to, from, sign] : used) {
      double* const target = row + start(to);
      const double* const source = row + start(from);
      for (std::size_t i = 0; i < count; ++i) target[i] = sign * source[i];
    }
  });
}

/// Cell layers, or the layers of faces of another axis.
LayerCopies cell_layers(std::int32_t n, const std::array<End, 2>& ends, bool odd) {
  const double mirror = odd ? -1.0 : 1.0;
  LayerCopies copies;
  for (std::int32_t depth = 1; depth <= kHalo; ++depth) {
    const std::int32_t near = std::min(depth, n);
    const std::array<LayerCopy, 3> lower{
        {{1 - depth, 1, 1.0}, {1 - depth, n + 1 - depth, 1.0}, {1 - depth, near, mirror}}};
    const std::array<LayerCopy, 3> upper{
        {{n + depth, n, 1.0}, {n + depth, depth, 1.0}, {n + depth, n + 1 - near, mirror}}};
    copies.add(lower[static_cast<std::size_t>(ends[0])]);
    copies.add(upper[static_cast<std::size_t>(ends[1])]);
  }
  return copies;
}

/// Layers of faces across their own axis.
LayerCopies face_layers(std::int32_t n, const std::array<End, 2>& ends) {
  LayerCopies copies;
  if (ends[0] == End::periodic) copies.add({0, n, 1.0});
  if (ends[0] == End::symmetric) copies.add({0, 0, 0.0});
  if (ends[1] == End::symmetric) copies.add({n, n, 0.0});
  const std::array<LayerCopy, 3> lower{{{-1, 0, 1.0}, {-1, n - 1, 1.0}, {-1, 1, -1.0}}};
  copies.add(lower[static_cast<std::size_t>(ends[0])]);
  for (std::int32_t depth = 1; depth <= kHalo; ++depth) {
    const std::array<LayerCopy, 3> upper{
        {{n + depth, n, 1.0}, {n + depth, depth, 1.0}, {n + depth, n - depth, -1.0}}};
    copies.add(upper[static_cast<std::size_t>(ends[1])]);
  }
  return copies;
}

/// The copies of the face field of `axis` across another one or itself.
LayerCopies layers_of_faces(const Box& box, const Ends& ends, int axis, int across) {
  const auto a = static_cast<std::size_t>(across);
  return across == axis ? face_layers(box.n[a], ends[a]) : cell_layers(box.n[a], ends[a], false);
}

}  // namespace

LayerCopies row_ends(const Box& box, const Ends& ends, bool odd) {
  return box.computed(0) ? cell_layers(box.n[0], ends[0], odd) : LayerCopies{};
}

LayerCopies face_row_ends(const Box& box, const Ends& ends, int axis) {
  return box.computed(0) ? layers_of_faces(box, ends, axis, 0) : LayerCopies{};
}

void fill_row_ends(const LayerCopies& copies, double* row) {
  for (const auto& [to, from, sign] : copies.used()) {
    row[std::ptrdiff_t{to} - 1] = sign * row[std::ptrdiff_t{from} - 1];
  }
}

void fill_halos(frame::Crew& crew, Field& field, const Ends& ends, int odd_axis, int first) {
  for (int axis = first; axis < 3; ++axis) {
    const Box& box = field.box();
    if (!box.computed(axis)) continue;
    const auto a = static_cast<std::size_t>(axis);
    copy_layers(crew, field, axis, cell_layers(box.n[a], ends[a], axis == odd_axis));
  }
}

void fill_face_halos(frame::Crew& crew, Field& field, int axis, const Ends& ends, int first) {
  for (int across = first; across < 3; ++across) {
    const Box& box = field.box();
    if (!box.computed(across)) continue;
    copy_layers(crew, field, across, layers_of_faces(box, ends, axis, across));
  }
}

void fill_halos(Field& field, const Ends& ends, int odd_axis) {
  frame::Crew alone;
  fill_halos(alone, field, ends, odd_axis);
}

void fill_face_halos(Field& field, int axis, const Ends& ends) {
  frame::Crew alone;
  fill_face_halos(alone, field, axis, ends);
}

}  // namespace flow
