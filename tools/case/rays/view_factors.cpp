#include "rays/view_factors.hpp"

#include <algorithm>
#include <cmath>

#include "rays/balance.hpp"
#include "rays/pair_table.hpp"
#include "rays/ray_counts.hpp"

namespace townskin_case {

namespace {

constexpr double kLeastArea = 1e-20;  // [m2], in place of none: as the surface model takes it

std::int32_t far_boundary(const Scene& scene, const RayScene& ray_scene) {
  for (std::size_t g = 0; g < scene.groups.size(); ++g) {
    if (scene.groups[g].kind == PatchKind::far && ray_scene.triangles_of(g).empty()) {
      return static_cast<std::int32_t>(g);
    }
  }
  return -1;
}

double nine_digits(double x) {
  if (!(x > 0.0)) return 0.0;
  const double scale = std::pow(10.0, 8.0 - std::floor(std::log10(x)));
  return std::round(x * scale) / scale;
}

/// The sky's shares and their errors. Neighbours among the rays share a stratum of their ways, so
/// that the error follows from the pairs that differ (Cochran 1977, strata of two). It is on the
/// safe side, for the starts of neighbours are not alike: the error found in streets is less than
/// half of it.
void find_sky(const RayCounts& counts, ViewFactors& result) {
  for (const RayFate& fate : counts.fate) {
    const double valid = std::max(fate.valid(), 1U);
    result.sky.push_back(nine_digits(fate.sky / valid));
    result.error.push_back(std::sqrt(fate.unlike) / valid);
  }
}

/// What the rows have to sum to [m2].
std::vector<double> targets(const ViewFactors& result, std::int32_t far) {
  std::vector<double> target(result.area.size());
  for (std::size_t i = 0; i < target.size(); ++i) {
    target[i] = static_cast<std::int32_t>(i) == far ? -1.0 : result.area[i] * (1.0 - result.sky[i]);
  }
  return target;
}

void give_far_its_area(const PairTable& table, std::int32_t far, ViewFactors& result) {
  if (far < 0) return;
  const auto f = static_cast<std::size_t>(far);
  double sum = 0.0;
  for (std::size_t e = table.start[f]; e < table.start[f + 1]; ++e) sum += table.exchange[e];
  result.area[f] = std::max({result.area[f], 2.0 * sum, 1e-3});
  result.sky[f] = nine_digits(1.0 - sum / result.area[f]);
}

/// Factors in place of exchanges, as they are written.
void divide_by_area(PairTable& table, ViewFactors& result) {
  for (std::size_t i = 0; i < result.area.size(); ++i) {
    double sum = result.sky[i];
    for (std::size_t e = table.start[i]; e < table.start[i + 1]; ++e) {
      table.exchange[e] = nine_digits(table.exchange[e] / result.area[i]);
      sum += table.exchange[e];
    }
    result.summary.closure = std::max(result.summary.closure, std::abs(sum - 1.0));
  }
  result.start = std::move(table.start);
  result.to = std::move(table.to);
  result.factor = std::move(table.exchange);
}

void sum_up_fates(const RayCounts& counts, std::int32_t far, RaySummary& summary) {
  for (std::size_t i = 0; i < counts.fate.size(); ++i) {
    const RayFate& fate = counts.fate[i];
    summary.rays += fate.sent;
    summary.below += fate.below;
    summary.inside += fate.inside;
    summary.in_crown += fate.in_crown;
    if (fate.sent > 0 && 2 * fate.inside >= fate.sent) ++summary.groups_inside;
    if (fate.valid() == 0 && static_cast<std::int32_t>(i) != far) ++summary.bare;
  }
}

void sum_up_errors(const PairTable& table, const ViewFactors& result, RaySummary& summary) {
  double area = 0.0;
  double squares = 0.0;
  double cut = 0.0;
  double exchanged = 0.0;
  for (std::size_t i = 0; i < result.area.size(); ++i) {
    const double a = result.area[i];
    area += a;
    squares += a * result.error[i] * result.error[i];
    cut += table.cut[i];
    exchanged += a * (1.0 - result.sky[i]);
    summary.largest_sky_error = std::max(summary.largest_sky_error, result.error[i]);
    if (a > 0.0) summary.largest_cut = std::max(summary.largest_cut, table.cut[i] / a);
  }
  if (area > 0.0) summary.sky_error = std::sqrt(squares / area);
  if (exchanged > 0.0) summary.cut = cut / exchanged;
}

}  // namespace

ViewFactors view_factors(const Scene& scene, const RayScene& ray_scene, const RaySettings& settings,
                         const Progress& progress) {
  ViewFactors result;
  for (const Group& group : scene.groups) result.area.push_back(std::max(group.area, kLeastArea));
  const std::int32_t far = far_boundary(scene, ray_scene);
  RayCounts counts =
      count_rays(scene, ray_scene, settings.rays, settings.seed, far, settings.threads, progress);
  find_sky(counts, result);
  sum_up_fates(counts, far, result.summary);
  PairTable table = join_pairs(counts, result.area, std::max<std::size_t>(settings.partners, 1),
                               far, settings.threads);
  sum_up_errors(table, result, result.summary);
  const Balance done = balance(table, result.area, targets(result, far));
  result.summary.unbalanced = done.before;
  result.summary.sweeps = done.sweeps;
  result.summary.on_itself = done.on_itself;
  give_far_its_area(table, far, result);
  divide_by_area(table, result);
  return result;
}

}  // namespace townskin_case
