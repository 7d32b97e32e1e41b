#include "inputs/lyrstrct.hpp"

#include <algorithm>
#include <cmath>

namespace tsrf_module_lyrstrct {

namespace {

using frame::items;

constexpr std::int32_t kGroundCells = 20;

/// 1 + r + .. + r^(n-1), whose sum of powers has no difference of near numbers when r is near 1,
/// and its derivative.
struct GeometricSum {
  double value = 0.0;
  double slope = 0.0;
};
GeometricSum geometric_sum(std::int32_t n, double r) {
  GeometricSum sum;
  for (std::int32_t i = 0; i < n; ++i) {
    sum.slope = sum.slope * r + sum.value;
    sum.value = sum.value * r + 1.0;
  }
  return sum;
}

/// Growth ratio with which n cells sum to `total` first cells; false when Newton's method fails.
bool find_ratio(std::int32_t n, double total, double& r) {
  constexpr int kMostSteps = 100;
  r = std::pow(total / n, 1.0 / (n - 1));
  if ((r - 1.0) * (r - 1.0) < 1e-12) return true;
  for (int step = 0; step < kMostSteps; ++step) {
    const GeometricSum sum = geometric_sum(n, r);
    const double change = (sum.value - total) / sum.slope;
    r -= change;
    if (std::abs(change) <= 1e-12 * r) return true;
  }
  return false;
}

/// Number of cells for a layer of `total` first cells.
std::int32_t count_cells(std::int32_t nmin, double dz, double zl) {
  constexpr double kGrowth = 0.10000000000000009;     // 1.1 - 1
  constexpr double kLogGrowth = 0.09531017980432493;  // ln 1.1
  const double total = zl / dz;
  if (!std::isfinite(total)) return 0;
  if (dz * nmin < zl) {
    const double n = std::round(std::log(1.0 + total * kGrowth) / kLogGrowth);
    return std::max(static_cast<std::int32_t>(n), nmin);
  }
  return static_cast<std::int32_t>(std::lround(total));
}

}  // namespace

std::int32_t Structure::cells() const {
  std::int32_t sum = 0;
  for (const Part& part : parts) sum += part.cells;
  return sum;
}

void check_cells(frame::Log& log, double cells, const std::string& layer) {
  if (cells <= kMostCells) return;
  log.data_error(layer, items("no. of cells of its column =", cells),
                 items("it must be <=", kMostCells));
}

Grading cal_gemtrc(frame::Log& log, std::int32_t nmin, double dz, double zl,
                   std::string_view place) {
  Grading grading{count_cells(nmin, dz, zl), 1.0};
  if (grading.n < 2 || !find_ratio(grading.n, zl / dz, grading.ratio)) {
    log.program_error(place, "### program error -1- (tsrf_module_lyrstrct)", "(cal_gemtrc)");
  }
  return grading;
}

void lyrstrct_set_land(frame::Log& log, double dz, double zl, std::string_view place,
                       const tsrf_module_patch::Data& patch, const tsrf_module_matprp::Data& matprp,
                       Data& data) {
  const frame::Tag tag(log, "(tsrf_module_lyrstrct)(lyrstrct_set_land)");
  Grading grading{kGroundCells, 1.0};
  frame::attempt(log, [&] { grading = cal_gemtrc(log, kGroundCells, dz, zl, place); });
  log.line("%%% nz,dz,zl in land =", grading.n, dz, zl);
  if (!frame::attempt(log, [&] { check_cells(log, grading.n, items("dzg,zlg =", dz, zl)); })) {
    grading = {kGroundCells, 1.0};
  }
  std::vector<std::int32_t> shared;  // per material
  frame::allocating(log, "structure,material,building",
                    frame::bytes_of<std::int32_t>(static_cast<std::size_t>(patch.mpatch), 3), [&] {
                      const auto patches = static_cast<std::size_t>(patch.mpatch);
                      data.structure.assign(patches, -1);
                      data.material.assign(patches, -1);
                      data.building.assign(patches, -1);
                      shared.assign(matprp.materials.size(), -1);
                    });
  for (std::size_t p = 0; p < patch.type.size(); ++p) {
    if (patch.type[p] != tsrf_module_patch::kLand) continue;
    std::int32_t m = -1;
    frame::attempt(log, [&] { m = find_material(log, patch.SurfID[p], matprp); });
    if (m < 0) continue;
    const auto& material = matprp.materials[static_cast<std::size_t>(m)];
    data.material[p] = m;
    std::int32_t& position = shared[static_cast<std::size_t>(m)];
    if (position < 0) {
      position = static_cast<std::int32_t>(data.structures.size());
      // Of a stack of layers only the uppermost counts: ground is one layer as deep as the model.
      data.structures.push_back(
          {Kind::land, {{material.SurfCD.front(), zl, grading.n, dz, grading.ratio}}});
    }
    data.structure[p] = position;
  }
}

std::int32_t find_material(frame::Log& log, std::int32_t SurfID,
                           const tsrf_module_matprp::Data& matprp) {
  const std::int32_t m = matprp.by_surfid.find(SurfID);
  if (m < 0) {
    log.data_error(items("SurfID in Patch data =", SurfID), "it is not defined in MatEleProp data");
  }
  return m;
}

std::int32_t column_size(const Data& data) {
  std::int32_t most = 1;
  for (const Structure& structure : data.structures) most = std::max(most, structure.cells());
  return most + 1;
}

void list_arrays(const Data& data, frame::ArrayList& list) {
  list.add("layer structures", data.structure, data.material, data.building);
}

}  // namespace tsrf_module_lyrstrct
