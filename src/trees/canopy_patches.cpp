// The patches in the canopy's grid.
#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "trees/canopy.hpp"

namespace tsrf_module_jumoku {

namespace {

using frame::items;
using Place = std::array<std::int32_t, 3>;

constexpr double kAreaTolerance = 0.01;  // the files round areas

Place shifted_cell(const tsrf_module_patch::Data& patch, std::size_t p) {
  return {patch.si[p], patch.sj[p], patch.sk[p]};
}

/// The canopy's cell behind a tree patch, from 0. The patch's own cell lies outside.
Place leaf_side(const tsrf_module_patch::Data& patch, std::size_t p) {
  Place place = shifted_cell(patch, p);
  const auto face = static_cast<std::size_t>(patch.SurfID[p] - 1);
  place[axis_of(face)] -= outward(face);
  for (std::int32_t& index : place) --index;
  return place;
}

/// The outer face that a tree patch covers, or -1.
std::int32_t covered_face(const tsrf_module_patch::Data& patch, std::size_t p, const Data& data) {
  const auto face = static_cast<std::size_t>(patch.SurfID[p] - 1);
  const std::int32_t cell = data.cells.find(data.grid, leaf_side(patch, p));
  if (cell < 0) return -1;
  const auto next =
      static_cast<std::size_t>(data.cells.next[slot(static_cast<std::size_t>(cell), face)]);
  const std::size_t slots = data.cells.count() * kFaces;
  if (next < slots) return -1;
  const OuterFace& outer = data.outer[next - slots];
  if (outer.tree >= 0 || std::fabs(patch.area[p] - outer.area) > kAreaTolerance * outer.area) {
    return -1;
  }
  return static_cast<std::int32_t>(next - slots);
}

bool in_grid(const tsrf_module_patch::Data& patch, std::size_t p, const FineGrid& grid,
             std::int32_t layers) {
  const Place place = leaf_side(patch, p);
  return patch.SurfID[p] >= 1 && patch.SurfID[p] <= 6 && place[0] >= 0 &&
         place[0] < grid.cells[0] && place[1] >= 0 && place[1] < grid.cells[1] && place[2] >= 0 &&
         place[2] < layers;
}

void place_tree_patches(const tsrf_module_patch::Data& patch, Data& data) {
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] != tsrf_module_patch::kTree) continue;
    const auto position = static_cast<std::int32_t>(p);
    if (!in_grid(patch, p, data.grid, data.layers)) {
      data.fault = {PatchFault::out_of_range, position};
      return;
    }
    const std::int32_t outer = covered_face(patch, p, data);
    if (outer < 0) {
      data.fault = {PatchFault::no_outer_face, position};
      return;
    }
    data.outer[static_cast<std::size_t>(outer)].tree = static_cast<std::int32_t>(data.trees.size());
    data.trees.push_back({position, outer});
  }
}

/// Joins the tree patches of one coarse face, for the parts of it that no patch covers.
void group_by_coarse_face(const tsrf_module_patch::Data& patch, Data& data) {
  using CoarseFace = std::pair<Place, std::int32_t>;
  const auto coarse_face = [&](const OuterFace& outer) {
    Place block = data.cells.at[static_cast<std::size_t>(outer.cell)];
    block[0] /= data.grid.NDIV;
    block[1] /= data.grid.NDIV;
    return CoarseFace(block, outer.face);
  };
  std::map<CoarseFace, std::vector<std::int32_t>> trees;
  for (std::size_t t = 0; t < data.trees.size(); ++t) {
    const OuterFace& outer = data.outer[static_cast<std::size_t>(data.trees[t].outer)];
    trees[coarse_face(outer)].push_back(static_cast<std::int32_t>(t));
  }
  std::map<CoarseFace, std::int32_t> numbers;
  for (const auto& [face, members] : trees) {
    FaceGroup group{static_cast<std::int32_t>(data.group_trees.size()), 0, 0.0};
    for (const std::int32_t t : members) {
      data.group_trees.push_back(t);
      const auto p = static_cast<std::size_t>(data.trees[static_cast<std::size_t>(t)].patch);
      group.area += patch.area[p];
    }
    group.last = static_cast<std::int32_t>(data.group_trees.size());
    numbers[face] = static_cast<std::int32_t>(data.groups.size());
    data.groups.push_back(group);
  }
  for (OuterFace& outer : data.outer) {
    const auto found = numbers.find(coarse_face(outer));
    if (outer.tree < 0 && found != numbers.end()) outer.group = found->second;
  }
}

/// Where a patch lies on the faces of its cell: across the largest component of its normal, on the
/// side away from it.
BeamProbe probe_of(const tsrf_module_patch::Data& patch, std::size_t p) {
  const std::array<double, 3> normal{patch.nx[p], patch.ny[p], patch.nz[p]};
  std::size_t axis = 0;
  for (std::size_t a = 1; a < 3; ++a) {
    if (std::fabs(normal[a]) > std::fabs(normal[axis])) axis = a;
  }
  Place at = shifted_cell(patch, p);
  for (std::int32_t& index : at) --index;
  if (normal[axis] < 0.0) ++at[axis];
  return {static_cast<std::int32_t>(p), static_cast<std::int32_t>(axis), at};
}

void place_probes(const tsrf_module_patch::Data& patch, Data& data) {
  Beam& beam = data.beam;
  const std::int32_t layers = data.grid.cells[2];
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] == tsrf_module_patch::kTree) continue;
    const BeamProbe probe = probe_of(patch, p);
    // Nothing above the leaves is thinned.
    if (probe.at[2] < layers) beam.probes.push_back(probe);
  }
  std::stable_sort(beam.probes.begin(), beam.probes.end(),
                   [](const BeamProbe& a, const BeamProbe& b) { return a.at[2] < b.at[2]; });
  for (std::int32_t k = 0; k <= layers; ++k) {
    const auto first = std::lower_bound(
        beam.probes.begin(), beam.probes.end(), k,
        [](const BeamProbe& probe, std::int32_t layer) { return probe.at[2] < layer; });
    beam.probe_first.push_back(static_cast<std::int32_t>(first - beam.probes.begin()));
  }
}

}  // namespace

void place_patches(const tsrf_module_patch::Data& patch, Data& data) {
  place_tree_patches(patch, data);
  group_by_coarse_face(patch, data);
  place_probes(patch, data);
}

void check02(frame::Log& log, const tsrf_module_patch::Data& patch, const Data& data) {
  if (data.fault.kind == PatchFault::none) return;
  const auto p = static_cast<std::size_t>(data.fault.patch);
  if (data.fault.kind == PatchFault::out_of_range) {
    log.data_error("TreePatch data is out of range",
                   items("i,j,k,bcd=", patch.i[p], patch.j[p], patch.k[p], patch.SurfID[p]));
  }
  const frame::Tag tag(log, "(check02)");
  log.data_error("TreePatch data is invalid -2-",
                 items("i,j,k,dir=", patch.i[p], patch.j[p], patch.k[p], patch.SurfID[p]));
}

}  // namespace tsrf_module_jumoku
