// The files that are townskin_flow's alone: flow_file_name, control, boundary and LAD. The Grid
// it has in common with the surface model, whose results it reads.
#include <cmath>
#include <map>

#include "run/run_data.hpp"
#include "run/text_file.hpp"

namespace townskin_case {
namespace {

constexpr double kHour = 3600.0;

std::array<std::int64_t, 3> cells_of(const FlowSetup& flow) {
  std::array<std::int64_t, 3> cells{};
  for (std::size_t a = 0; a < 3; ++a) {
    cells[a] = static_cast<std::int64_t>(flow.nodes[a].size()) - 1;
  }
  return cells;
}

bool has_buildings(const RunData& run) {
  for (const Group& group : run.scene.groups) {
    if (group.kind == PatchKind::building) return true;
  }
  return false;
}

void write_names(const RunData& run, const RunFolder& folder) {
  const std::string of_month = folder.of_month(run.flow.station.month);
  TextFile out(folder.path("flow_file_name"));
  for (const std::string& name :
       {std::string(file::kFlowControl), std::string(file::kGrid), std::string(file::kFlowBoundary),
        std::string(), std::string(file::kFlowRestart), std::string(), std::string(),
        run.scene.air.empty() ? "" : std::string(file::kFlowPorous), of_month + "SurfTemp.txt",
        has_buildings(run) ? of_month + "BldLoad.txt" : "", std::string(file::kFlowLad)}) {
    out.line(name);
  }
  out.close();
}

/// Mass fractions of air and vapour.
std::array<double, 2> air_of(const FlowSetup& flow) {
  return {1.0 - flow.station.vapour, flow.station.vapour};
}

void write_flow_control(const RunData& run, const RunFolder& folder) {
  const FlowSetup& flow = run.flow;
  const SiteFlow& wanted = run.site.flow;
  const auto [mx, my, mz] = cells_of(flow);
  const auto [dry, vapour] = air_of(flow);
  constexpr double kStation = 10.0;
  const double speed = flow.wind.speed(kStation);
  TextFile out(folder.path(file::kFlowControl));
  out.line(mx, my, mz);
  out.line(2);
  out.line(-1, 1000000000, wanted.seconds);
  out.line("2000000000 1. 2000000000 0");  // the last step alone is kept
  out.line("0.5", wanted.step, "-999. -999.");
  out.put(
      "1 1\n"
      "1 1 1\n"
      "-1 1 1\n"
      "0.333333333333 0.333333333333 0.333333333333 0.333333333333\n"
      "500 1.0e-5 0.\n"  // the plain factor stands cells of any shape
      "200 1.0e-6\n"
      "2\n");
  out.line(dry, vapour);
  out.line(flow.station.temperature, flow.station.pressure);
  out.line(speed * flow.along_x, speed * flow.along_y, 0);
  out.line(flow.wind.energy(), flow.wind.loss(kStation));
  out.line(2);
  out.line(dry, vapour);
  out.line(flow.station.temperature);
  out.put(
      "0. 0. -9.8\n"
      "0.9 0.9\n"
      "0\n"
      "1.8e-5 300. 110.\n"
      "0.71 0.71\n"
      "2\n"
      "0.028964 1005. 0. 0. 0. 0.\n"
      "0.018015 1900. 0. 0. 0. 0.\n"
      "0\n"
      "1 0. 1.e-20\n"  // the pressure by multigrid
      "1 1 1\n"
      "1 1 0\n"
      "0. 0.\n");
  out.line("&VFRAC\n LVFRAC =", run.scene.air.empty() ? 0 : 1, "\n/");
  out.line("&KPC_DATA\n TIME0 =", flow_start(run), "\n/");
  out.line("&DUMMYGRID\n NXF =", flow.before[0], ", NYF =", flow.before[1],
           ", NXB =", flow.behind[0], ", NYB =", flow.behind[1], "\n/");
  out.close();
}

/// The groups of the boundary file.
class BoundaryGroups {
 public:
  explicit BoundaryGroups(const FlowSetup& flow) : flow_(flow), cells_(cells_of(flow)) {}

  /// Nodes from..to of each axis, a sheet where two are equal.
  using Range = std::array<std::int64_t, 6>;
  /// `k` < 0: the wind has no part in it.
  void add(const Range& range, int side, const char* kinds, std::int64_t k = -1) {
    const double z = k < 0 ? 1.0 : middle(k);
    const double speed = k < 0 ? 0.0 : flow_.wind.speed(z);
    groups_.push_back({range, side, kinds, speed, flow_.wind.loss(z)});
  }
  /// One end of an axis: wind comes in, goes out, or passes along it.
  void add_end(std::size_t axis, bool far_end, double inward) {
    Range range{0, cells_[0], 0, cells_[1], 0, cells_[2]};
    range[2 * axis] = range[2 * axis + 1] = far_end ? cells_[axis] : 0;
    const int side = far_end ? -1 : 1;
    if (inward <= 0.0) return add(range, side, inward < 0.0 ? "1 2 2 2 2" : "2 4 2 2 2");
    for (std::int64_t k = 0; k < cells_[2]; ++k) {
      range[4] = k;
      range[5] = k + 1;
      add(range, side, "2 1 1 1 1", k);
    }
  }
  void write(TextFile& out) const {
    const auto [dry, vapour] = air_of(flow_);
    out.line("0 0 0 0 0 0\n2");
    out.line(groups_.size());
    for (const auto& [range, side, kinds, speed, loss] : groups_) {
      out.line(range[0], range[1], range[2], range[3], range[4], range[5], side);
      out.line(kinds);
      out.line(speed * flow_.along_x, speed * flow_.along_y, 0, flow_.station.temperature, 0);
      out.line(dry, vapour);
      out.line(flow_.wind.energy(), loss);
    }
  }
  [[nodiscard]] Range whole() const { return {0, cells_[0], 0, cells_[1], 0, cells_[2]}; }

 private:
  struct One {
    Range range;
    int side;
    const char* kinds;
    double speed, loss;
  };
  [[nodiscard]] double middle(std::int64_t k) const {
    const auto n = static_cast<std::size_t>(k);
    return 0.5 * (flow_.nodes[2][n] + flow_.nodes[2][n + 1]);
  }
  const FlowSetup& flow_;
  std::array<std::int64_t, 3> cells_;
  std::vector<One> groups_;
};

void write_boundary(const RunData& run, const RunFolder& folder) {
  constexpr const char* kWall = "2 3 2 2 3";
  BoundaryGroups groups(run.flow);
  const std::array<double, 2> along{run.flow.along_x, run.flow.along_y};
  for (std::size_t axis = 0; axis < 2; ++axis) {
    groups.add_end(axis, false, along[axis]);
    groups.add_end(axis, true, -along[axis]);
  }
  BoundaryGroups::Range top = groups.whole();
  top[4] = top[5];
  groups.add(top, -1, "2 4 2 2 2");
  BoundaryGroups::Range ground = groups.whole();
  ground[5] = 0;
  groups.add(ground, 1, kWall);
  groups.add(groups.whole(), 0, kWall);  // whatever stands in the air
  TextFile out(folder.path(file::kFlowBoundary));
  groups.write(out);
  out.close();
}

/// Leaf area of the grid's cells, from that of the tree cells in them.
void write_leaf_area(const RunData& run, const RunFolder& folder) {
  const std::int32_t division = run.scene.tree_division;
  std::map<std::array<std::int32_t, 3>, double> density;
  for (const LeafCell& leaf : run.scene.leaves) {
    density[{(leaf.cell[0] - 1) / division + 1, (leaf.cell[1] - 1) / division + 1, leaf.cell[2]}] +=
        leaf.density / (division * division);
  }
  TextFile out(folder.path(file::kFlowLad));
  out.line("# i j k leaf area density");
  for (const auto& [cell, value] : density) {
    out.line(cell[0] + run.flow.before[0], cell[1] + run.flow.before[1], cell[2], value);
  }
  out.close();
}

}  // namespace

double flow_start(const RunData& run) {
  constexpr double kDay = 24.0 * kHour;
  const double start = kHour * static_cast<double>(run.site.flow.hour) - run.site.flow.seconds;
  return start - kDay * std::floor(start / kDay);
}

void write_flow(const RunData& run, const RunFolder& folder) {
  write_names(run, folder);
  write_flow_control(run, folder);
  write_boundary(run, folder);
  write_leaf_area(run, folder);
}

}  // namespace townskin_case
