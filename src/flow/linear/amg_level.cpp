#include "flow/linear/amg_level.hpp"

#include <algorithm>

namespace flow {

namespace {

std::size_t in_lanes(std::size_t count) { return (count + kAmgLanes - 1) / kAmgLanes * kAmgLanes; }

void bundle_rows(const AmgMerge& merge, AmgLevel& level) {
  const std::size_t ny = merge.parent.size();
  const bool round = ny % 2 != 0 && merge.cells > 1;  // the last bundle joins the first
  for (std::int32_t bundle = 0; bundle < merge.cells - (round ? 1 : 0); ++bundle) {
    level.bundles.push_back(level.rows.size());
    for (std::size_t j = 0; j < ny; ++j) {
      const bool joins = round && bundle == 0 && merge.parent[j] == merge.cells - 1;
      if (merge.parent[j] == bundle || joins) level.rows.push_back(j);
    }
  }
  level.bundles.push_back(level.rows.size());
}

}  // namespace

void note_equal_rows(AmgLevel& level, std::vector<Bytes> others) {
  for (const Floats* vector :
       {&level.c[0], &level.c[1], &level.c[2], &level.beyond, &level.inverse}) {
    others.push_back(std::as_bytes(std::span(*vector)));
  }
  level.ways = ways_to_equal_rows(others, level.size() / level.stride, level.stride);
}

AmgLevel sized_level(const Triple& cells) {
  AmgLevel level;
  level.n = cells;
  level.half = in_lanes((static_cast<std::size_t>(cells[0]) + 1) / 2);
  level.stride = 2 * level.half + kAmgLanes;
  level.natural = 2 * level.half;
  return level;
}

AmgLevel make_amg_level(const AmgGrid& grid) {
  AmgLevel level = sized_level(grid.n);
  for (Floats* vector :
       {&level.c[0], &level.c[1], &level.c[2], &level.beyond, &level.inverse, &level.z, &level.r}) {
    vector->assign(level.size(), 0.0F);
  }
  const std::vector<double> diagonal = grid.diagonal();
  const std::vector<double> beyond = grid.beyond();
  each_cell_slot(level, [&](std::size_t cell, std::size_t slot) {
    for (std::size_t a = 0; a < 3; ++a) level.c[a][slot] = static_cast<float>(grid.c[a][cell]);
    level.beyond[slot] = static_cast<float>(beyond[cell]);
    level.inverse[slot] = diagonal[cell] > 0.0 ? static_cast<float>(1.0 / diagonal[cell]) : 0.0F;
  });
  if (level.n[1] % 2 == 0 || level.n[1] == 1) return level;
  Floats wrap(level.stride * static_cast<std::size_t>(level.n[2]), 0.0F);
  for (std::int32_t k = 0; k < level.n[2]; ++k) {
    float* row = &level.c[1][level.slot(0, 0, k)];
    std::copy_n(row, level.stride, &wrap[level.stride * static_cast<std::size_t>(k)]);
    std::fill_n(row, level.stride, 0.0F);
  }
  if (std::any_of(wrap.begin(), wrap.end(), [](float c) { return c != 0.0F; })) {
    level.wrap = std::move(wrap);
    level.before.assign(level.half * static_cast<std::size_t>(level.n[2]), 0.0F);
  }
  return level;
}

void join_levels(const std::array<AmgMerge, 3>& merge, AmgLevel& fine, AmgLevel& coarse) {
  fine.merge = merge;
  fine.in_pairs = merge[0].in_pairs();
  for (std::size_t part = 0; part < 2; ++part) {
    for (std::size_t i = part; i < merge[0].parent.size(); i += 2) {
      fine.parent[part].push_back(merge[0].parent[i]);
    }
  }
  bundle_rows(merge[1], fine);
  // A row that is merged in pairs is written as a whole part of the finer one.
  coarse.natural = std::max(coarse.natural, fine.half);
  coarse.between.assign(coarse.natural * static_cast<std::size_t>(coarse.n[1]) *
                            static_cast<std::size_t>(coarse.n[2]),
                        0.0F);
}

}  // namespace flow
