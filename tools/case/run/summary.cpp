#include "run/summary.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace townskin_case {
namespace {

struct Sort {
  const char* name;
  bool (*counts)(const Group&);
};
bool is_roof(const Group& g) { return g.kind == PatchKind::building && g.face == FaceKind::roof; }
bool is_wall(const Group& g) { return g.kind == PatchKind::building && g.face == FaceKind::wall; }
bool is_land(const Group& g) { return g.kind == PatchKind::land; }
bool is_water(const Group& g) { return g.kind == PatchKind::water; }
bool is_tree(const Group& g) { return g.kind == PatchKind::tree; }
bool is_far(const Group& g) { return g.kind == PatchKind::far; }
constexpr std::array<Sort, 6> kSorts{{{"roofs", is_roof},
                                      {"walls", is_wall},
                                      {"ground", is_land},
                                      {"water", is_water},
                                      {"faces of crowns", is_tree},
                                      {"far boundary", is_far}}};

template <class... Values>
std::string text(const char* form, const Values&... values) {
  std::array<char, 256> line{};
  std::snprintf(line.data(), line.size(), form, values...);
  return line.data();
}

std::string duration(double seconds) {
  if (seconds < 120.0) return text("%.0f s", std::max(seconds, 1.0));
  if (seconds < 7200.0) return text("%.0f min", seconds / 60.0);
  return text("%.1f h", seconds / 3600.0);
}

double area_of(const RunData& run, std::size_t g) {
  return run.scene.groups[g].kind == PatchKind::far ? run.factors.area[g]
                                                    : run.scene.groups[g].area;
}

/// What a whole run of the flow takes, by the cells and steps of those measured.
double flow_seconds(const RunData& run) {
  constexpr double kOfACell = 4.5e-6;
  double cells = run.site.flow.seconds / run.site.flow.step;
  for (const std::vector<double>& nodes : run.flow.nodes) {
    cells *= static_cast<double>(nodes.size() - 1);
  }
  return kOfACell * cells;
}

std::string wind_of(const RunData& run) {
  const auto cells = [&](std::size_t axis) { return run.flow.nodes[axis].size() - 1; };
  return text("for the air flow: %zu x %zu x %zu cells with the land around, ", cells(0), cells(1),
              cells(2)) +
         text("wind %.1f m/s from %.0f degrees at %lld h", run.flow.station.speed,
              run.flow.station.direction, static_cast<long long>(run.site.flow.hour));
}

void add_counts(const RunData& run, std::vector<std::string>& lines) {
  std::vector<std::size_t> patches_of(run.scene.groups.size());
  for (const Patch& patch : run.scene.patches) ++patches_of[static_cast<std::size_t>(patch.group)];
  for (const Sort& sort : kSorts) {
    std::size_t groups = 0, patches = 0;
    double area = 0.0;
    for (std::size_t g = 0; g < run.scene.groups.size(); ++g) {
      if (!sort.counts(run.scene.groups[g])) continue;
      ++groups;
      patches += patches_of[g];
      area += area_of(run, g);
    }
    if (groups == 0) continue;
    lines.push_back(
        text("%-16s %8zu patches in %8zu groups, %12.1f m2", sort.name, patches, groups, area) +
        (sort.counts == is_far || sort.counts == is_tree
             ? ""
             : text(", mean sky view %.3f", mean_sky(run, sort.counts))));
  }
}

}  // namespace

double mean_sky(const RunData& run, bool (*counts)(const Group&)) {
  double area = 0.0, sky = 0.0;
  for (std::size_t g = 0; g < run.scene.groups.size(); ++g) {
    if (!counts(run.scene.groups[g])) continue;
    area += run.scene.groups[g].area;
    sky += run.scene.groups[g].area * run.factors.sky[g];
  }
  return area > 0.0 ? sky / area : -1.0;
}

std::vector<std::string> summary_of(const RunData& run, const Trial& trial) {
  std::vector<std::string> lines;
  const auto cells = [&](std::size_t axis) { return run.scene.grid.nodes[axis].size() - 1; };
  lines.push_back("days: " + run.days.text +
                  text(", mean air temperature %.1f deg C", run.days.mean_temperature));
  if (run.city.placed) {
    lines.push_back(
        text("centre: %.8f degrees north, %.8f east", run.city.latitude, run.city.longitude));
  }
  lines.push_back(text("%zu buildings, %zu trees, %zu x %zu x %zu cells", run.city.buildings.size(),
                       run.city.trees.size(), cells(0), cells(1), cells(2)));
  lines.push_back(wind_of(run));
  add_counts(run, lines);
  const RaySummary& rays = run.factors.summary;
  lines.push_back(text("%zu view factors; %.3g of the exchange is cut (at most %.3g of a group)",
                       run.factors.to.size(), rays.cut, rays.largest_cut));
  lines.push_back(text("standard error of the sky view: %.2g (at most %.2g)", rays.sky_error,
                       rays.largest_sky_error));
  lines.push_back(
      text("closure: rows are off by at most %.2g, which the model corrects by %.7f to ",
           rays.closure, trial.least_correction) +
      text("%.7f", trial.largest_correction));
  for (const std::string& warning : trial.warnings) lines.push_back("the model says: " + warning);
  lines.push_back(text("the run takes some %.0f MB and %s", trial.memory / 1e6,
                       run.days.dated ? "" : "at most ") +
                  duration(trial.seconds) + " of processor time, the air flow some " +
                  duration(flow_seconds(run)));
  return lines;
}

}  // namespace townskin_case
