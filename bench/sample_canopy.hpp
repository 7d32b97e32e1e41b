// A canopy built without files, for tests and benchmarks: grid widths, leaf cells, patches.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "../tests/recorded_log.hpp"
#include "frame/crew.hpp"
#include "trees/prep.hpp"

struct CanopyCase {
  using Widths = std::array<std::vector<double>, 3>;
  struct Leaf {
    std::int32_t i, j, k;  ///< fine cell from 0
    double lad;
  };

  CanopyCase(const Widths& widths, std::int32_t NDIV, const std::vector<Leaf>& leaves) {
    trees.cells.CALJMK = true;
    trees.canopy.settings.NDIV = NDIV;
    for (std::size_t a = 0; a < 3; ++a) {
      grid[a].cells = static_cast<std::int32_t>(widths[a].size());
      grid[a].widths = widths[a];
      grid[a].widths.insert(grid[a].widths.begin(), 2, 1.0);
      grid[a].widths.insert(grid[a].widths.end(), 2, 1.0);
    }
    for (const Leaf& leaf : leaves) {
      trees.cells.cells.push_back({leaf.i + 1, leaf.j + 1, leaf.k + 1, 1});
      lad.push_back(leaf.lad);
      trees.cells.highest_layer = std::max(trees.cells.highest_layer, leaf.k + 1);
    }
  }
  /// A box of leaves of one density in the middle of empty cells (`margin` coarse ones).
  static CanopyCase box(std::array<std::int32_t, 3> size, double width, double lad,
                        std::int32_t margin = 1) {
    Widths widths;
    for (std::size_t a = 0; a < 3; ++a) {
      widths[a].assign(static_cast<std::size_t>(size[a] + 2 * margin), width);
    }
    std::vector<Leaf> leaves;
    for (std::int32_t k = margin; k < margin + size[2]; ++k) {
      for (std::int32_t j = margin; j < margin + size[1]; ++j) {
        for (std::int32_t i = margin; i < margin + size[0]; ++i) leaves.push_back({i, j, k, lad});
      }
    }
    return {widths, 1, leaves};
  }

  void add_patch(std::int32_t type, std::array<std::int32_t, 3> shifted, double area,
                 std::array<double, 3> normal, std::int32_t code = 0) {
    patch.type.push_back(type);
    patch.PID.push_back(++patch.mpatch);
    for (auto [list, axis] :
         {std::pair(&patch.si, 0), std::pair(&patch.sj, 1), std::pair(&patch.sk, 2)}) {
      list->push_back(shifted[static_cast<std::size_t>(axis)]);
    }
    patch.i.push_back(shifted[0]);
    patch.j.push_back(shifted[1]);
    patch.k.push_back(shifted[2]);
    patch.area.push_back(area);
    patch.nx.push_back(normal[0]);
    patch.ny.push_back(normal[1]);
    patch.nz.push_back(normal[2]);
    patch.SurfID.push_back(code);
  }
  /// A tree patch on the face (0 to 5) of the fine cell (from 0).
  void add_tree_patch(std::array<std::int32_t, 3> cell, std::size_t face, double area) {
    const std::size_t axis = tsrf_module_jumoku::axis_of(face);
    std::array<double, 3> normal{};
    normal[axis] = tsrf_module_jumoku::outward(face);
    for (std::int32_t& index : cell) ++index;
    cell[axis] += tsrf_module_jumoku::outward(face);
    add_patch(2, cell, area, normal, static_cast<std::int32_t>(face) + 1);
  }
  /// A tree patch on every outer face of the canopy; needs `prepare`, and prepares anew.
  void cover() {
    for (const auto& outer : std::vector(trees.canopy.outer)) {
      add_tree_patch(trees.canopy.cells.at[static_cast<std::size_t>(outer.cell)],
                     static_cast<std::size_t>(outer.face), outer.area);
    }
    prepare();
  }

  void prepare() {
    const auto settings = trees.canopy.settings;
    trees.canopy = {};
    trees.canopy.settings = settings;
    set_grid(recorded.log, grid, trees.cells, patch, trees.canopy);
    place_patches(patch, trees.canopy);
    allocdata(patch.type.size(), trees.canopy);
    set_lad(lad, trees.radiat, trees.canopy);
    storetqair(101325.0, 300.0, 0.01, 2.0, trees.canopy);
  }

  tsrf_module_jumoku::Data& canopy() { return trees.canopy; }

  std::unique_ptr<RecordedLog> owned = std::make_unique<RecordedLog>();
  RecordedLog& recorded = *owned;
  std::unique_ptr<frame::Crew> crew = std::make_unique<frame::Crew>();
  jmk::Trees trees;
  tsrf_main01::Axes grid;
  tsrf_module_patch::Data patch;
  std::vector<double> lad;
};

/// Random numbers for tests.
struct Draw {
  explicit Draw(unsigned seed) : random(seed) {}
  double real(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }
  std::int32_t integer(std::int32_t low, std::int32_t high) {
    return std::uniform_int_distribution<std::int32_t>(low, high)(random);
  }
  std::mt19937 random;
};
