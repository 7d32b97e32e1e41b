#include "flow/halo.hpp"

#include <algorithm>

namespace flow {

namespace {

/// A layer across an axis takes `sign` times the values of another one.
struct LayerCopy {
  std::int32_t to, from;
  double sign;
};

/// Layers along `axis`, over the whole extent of the other two, halos included.
void copy_layer(Field& field, int axis, const LayerCopy& copy) {
  const Box& box = field.box();
  const int inner = axis == 0 ? 1 : 0;
  const int outer = axis == 2 ? 1 : 2;
  const auto start = [&](std::int32_t layer) {
    return static_cast<std::size_t>(layer + kHalo - 1) * box.stride(axis);
  };
  double* const to = field.data() + start(copy.to);
  const double* const from = field.data() + start(copy.from);
  for (std::size_t o = 0; o < box.extent(outer); ++o) {
    for (std::size_t i = 0; i < box.extent(inner); ++i) {
      const std::size_t at = o * box.stride(outer) + i * box.stride(inner);
      to[at] = copy.sign * from[at];
    }
  }
}

/// Cell layers, or the layers of faces of another axis.
void fill_cell_layers(Field& field, int axis, const std::array<End, 2>& ends, bool odd) {
  const std::int32_t n = field.box().n[static_cast<std::size_t>(axis)];
  const double mirror = odd ? -1.0 : 1.0;
  for (std::int32_t depth = 1; depth <= kHalo; ++depth) {
    const std::int32_t near = std::min(depth, n);
    const std::array<LayerCopy, 3> lower{
        {{1 - depth, 1, 1.0}, {1 - depth, n + 1 - depth, 1.0}, {1 - depth, near, mirror}}};
    const std::array<LayerCopy, 3> upper{
        {{n + depth, n, 1.0}, {n + depth, depth, 1.0}, {n + depth, n + 1 - near, mirror}}};
    copy_layer(field, axis, lower[static_cast<std::size_t>(ends[0])]);
    copy_layer(field, axis, upper[static_cast<std::size_t>(ends[1])]);
  }
}

/// Layers of faces across their own axis.
void fill_face_layers(Field& field, int axis, const std::array<End, 2>& ends) {
  const std::int32_t n = field.box().n[static_cast<std::size_t>(axis)];
  if (ends[0] == End::periodic) copy_layer(field, axis, {0, n, 1.0});
  if (ends[0] == End::symmetric) copy_layer(field, axis, {0, 0, 0.0});
  if (ends[1] == End::symmetric) copy_layer(field, axis, {n, n, 0.0});
  const std::array<LayerCopy, 3> lower{{{-1, 0, 1.0}, {-1, n - 1, 1.0}, {-1, 1, -1.0}}};
  copy_layer(field, axis, lower[static_cast<std::size_t>(ends[0])]);
  for (std::int32_t depth = 1; depth <= kHalo; ++depth) {
    const std::array<LayerCopy, 3> upper{
        {{n + depth, n, 1.0}, {n + depth, depth, 1.0}, {n + depth, n - depth, -1.0}}};
    copy_layer(field, axis, upper[static_cast<std::size_t>(ends[1])]);
  }
}

}  // namespace

void fill_halos(Field& field, const Ends& ends, int odd_axis) {
  for (int axis = 0; axis < 3; ++axis) {
    if (!field.box().computed(axis)) continue;
    fill_cell_layers(field, axis, ends[static_cast<std::size_t>(axis)], axis == odd_axis);
  }
}

void fill_face_halos(Field& field, int axis, const Ends& ends) {
  for (int across = 0; across < 3; ++across) {
    if (!field.box().computed(across)) continue;
    const auto& own = ends[static_cast<std::size_t>(across)];
    if (across == axis) {
      fill_face_layers(field, axis, own);
    } else {
      fill_cell_layers(field, across, own, false);
    }
  }
}

}  // namespace flow
