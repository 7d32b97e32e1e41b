// The patches in the canopy's grid.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

#include "trees/beam_probes.hpp"
#include "trees/canopy.hpp"

namespace tsrf_module_jumoku {

namespace {

using frame::items;

constexpr double kAreaTolerance = 0.01;  // the files round areas

/// Face of the canopy's cell that a tree patch covers.
std::size_t face_of(const tsrf_module_patch::Data& patch, std::size_t p) {
  return static_cast<std::size_t>(patch.SurfID[p] - 1);
}

/// The canopy's cell behind a tree patch, from 0. The patch's own cell lies outside.
Place leaf_side(const tsrf_module_patch::Data& patch, std::size_t p) {
  Place place{patch.si[p], patch.sj[p], patch.sk[p]};
  const std::size_t face = face_of(patch, p);
  place[axis_of(face)] -= outward(face);
  for (std::int32_t& index : place) --index;
  return place;
}

bool in_grid(const Place& place, const FineGrid& grid, std::int32_t layers) {
  return place[0] >= 0 && place[0] < grid.cells[0] && place[1] >= 0 && place[1] < grid.cells[1] &&
         place[2] >= 0 && place[2] < layers;
}

/// Whether a fine cell lies in one of the blocks.
bool in_blocks(const Place& place, const FineGrid& grid, const std::vector<Place>& blocks) {
  if (!in_grid(place, grid, grid.cells[2])) return false;
  return std::binary_search(blocks.begin(), blocks.end(),
                            Place{place[0] / grid.NDIV, place[1] / grid.NDIV, place[2]}, in_order);
}

void place_tree_patches(const tsrf_module_patch::Data& patch, Data& data) {
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] != tsrf_module_patch::kTree) continue;
    const auto cell = static_cast<std::size_t>(data.cells.find(data.grid, leaf_side(patch, p)));
    const std::size_t next =
        static_cast<std::size_t>(data.cells.next[slot(cell, face_of(patch, p))]);
    const std::size_t outer = next - data.cells.count() * kFaces;
    data.outer[outer].tree = static_cast<std::int32_t>(data.trees.size());
    data.trees.push_back({static_cast<std::int32_t>(p), static_cast<std::int32_t>(outer)});
  }
}

[[noreturn]] void report(frame::Log& log, const tsrf_module_patch::Data& patch,
                         const PatchFault& fault) {
  const auto p = static_cast<std::size_t>(fault.patch);
  if (fault.kind == PatchFault::out_of_range) {
    log.data_error("TreePatch data is out of range",
                   items("i,j,k,bcd=", patch.si[p], patch.sj[p], patch.sk[p], patch.SurfID[p]));
  }
  const frame::Tag tag(log, "(check02)");
  log.data_error("TreePatch data is invalid -2-",
                 items("i,j,k,dir=", patch.si[p], patch.sj[p], patch.sk[p], patch.SurfID[p]));
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

}  // namespace

PatchFault fault_of(frame::Log& log, const tsrf_module_patch::Data& patch, const FineGrid& grid,
                    std::int32_t layers, const std::vector<Place>& blocks) {
  std::set<std::pair<Place, std::int32_t>> covered;
  const auto kind_of = [&](std::size_t p) {
    if (patch.SurfID[p] < 1 || patch.SurfID[p] > static_cast<std::int32_t>(kFaces)) {
      return PatchFault::out_of_range;
    }
    const Place cell = leaf_side(patch, p);
    if (!in_grid(cell, grid, layers)) return PatchFault::out_of_range;
    Place air = cell;
    air[axis_of(face_of(patch, p))] += outward(face_of(patch, p));
    const bool is_outer = in_blocks(cell, grid, blocks) && !in_blocks(air, grid, blocks);
    if (!is_outer || !covered.emplace(cell, patch.SurfID[p]).second) {
      return PatchFault::no_outer_face;
    }
    const double area = grid.face_area(cell, axis_of(face_of(patch, p)));
    const bool fits = std::fabs(patch.area[p] - area) <= kAreaTolerance * area;
    return fits ? PatchFault::none : PatchFault::no_outer_face;
  };
  PatchFault first;
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] != tsrf_module_patch::kTree) continue;
    const PatchFault fault{kind_of(p), static_cast<std::int32_t>(p)};
    if (fault.kind == PatchFault::none) continue;
    if (!log.collects()) return fault;
    frame::attempt(log, [&] { report(log, patch, fault); });
    if (first.kind == PatchFault::none) first = fault;
  }
  return first;
}

void place_patches(const tsrf_module_patch::Data& patch, Data& data) {
  if (data.fault.kind != PatchFault::none) return;
  place_tree_patches(patch, data);
  group_by_coarse_face(patch, data);
  jmk::place_probes(patch, data);
}

void warn_of_bare_faces(frame::Log& log, const Data& data) {
  std::int64_t count = 0;
  double area = 0.0;
  for (const OuterFace& outer : data.outer) {
    if (outer.tree >= 0 || outer.group >= 0) continue;
    ++count;
    area += outer.area;
  }
  if (count == 0) return;
  log.line("%%% warning :", count, "outer faces of tree cells,", area,
           "m2, carry no tree patch; they see the sky alone, no ground and no walls");
}

void check02(frame::Log& log, const tsrf_module_patch::Data& patch, const Data& data) {
  if (data.fault.kind != PatchFault::none) report(log, patch, data.fault);
}

}  // namespace tsrf_module_jumoku
