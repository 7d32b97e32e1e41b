#include "run/flow_setup.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace townskin_case {
namespace {

constexpr double kKarman = 0.42;
constexpr double kRadian = std::numbers::pi / 180.0;

/// The station's wind is that over open land, 10 m up; 60 m up the wind is the same over the city
/// (Wieringa 1986).
constexpr double kStationHeight = 10.0, kStationRoughness = 0.03, kBlendingHeight = 60.0;

// Heights of the tallest thing between it and the ends of the grid (Franke et al. 2007).
constexpr double kAside = 5.0, kBehind = 15.0;
constexpr double kGrowth = 1.2;

/// Continues the nodes beyond their last by growing cells, at least as far as `reach`; the number
/// of new cells.
std::int32_t grow(std::vector<double>& nodes, double reach) {
  const double end = nodes.back();
  double size = end - nodes[nodes.size() - 2];
  std::int32_t count = 0;
  for (; nodes.back() < end + reach; ++count) {
    size *= kGrowth;
    nodes.push_back(nodes.back() + size);
  }
  return count;
}

/// The same before the first node.
std::int32_t grow_before(std::vector<double>& nodes, double reach) {
  const auto turn_round = [&nodes] {
    std::ranges::reverse(nodes);
    for (double& node : nodes) node = -node;
  };
  turn_round();
  const std::int32_t count = grow(nodes, reach);
  turn_round();
  return count;
}

void set_grid(const Site& site, const Scene& scene, FlowSetup& flow) {
  flow.nodes = scene.grid.nodes;
  const double height = std::max(scene.grid.nodes[2].back() - site.grid.above, site.grid.cell[2]);
  const std::array<double, 2> along{flow.along_x, flow.along_y};
  for (std::size_t a = 0; a < 2; ++a) {
    flow.before[a] = grow_before(flow.nodes[a], height * (along[a] < 0.0 ? kBehind : kAside));
    flow.behind[a] = grow(flow.nodes[a], height * (along[a] > 0.0 ? kBehind : kAside));
  }
  grow(flow.nodes[2], kAside * height - site.grid.above);
}

void set_wind(const SiteFlow& wanted, double turn, FlowSetup& flow, Report& report) {
  constexpr double kCalm = 0.5;
  constexpr double kWest = 270.0;
  constexpr double kNone = 0.01;  // about half a degree
  Station& station = flow.station;
  if (wanted.wind) station.speed = *wanted.wind;
  if (wanted.direction) station.direction = *wanted.direction;
  if (station.speed < (wanted.wind ? 0.0 : kCalm)) {
    report.warning("the wind of the flow's hour is calm: 0.5 m/s is taken");
    station.speed = kCalm;
  }
  if (station.direction < 0.0) {
    report.warning("the weather tells no direction of the wind: the flow's comes from the west");
    station.direction = kWest;
  }
  const double high = station.speed * std::log(kBlendingHeight / kStationRoughness) /
                      std::log(kStationHeight / kStationRoughness);
  flow.wind = {1.0, wanted.roughness};
  flow.wind.friction = high / flow.wind.speed(kBlendingHeight);
  // It blows away from where it comes from; the cells may be turned to the left.
  const double to = -station.direction * kRadian - 0.5 * std::numbers::pi - turn;
  flow.along_x = std::abs(std::cos(to)) < kNone ? 0.0 : std::cos(to);
  flow.along_y = std::abs(std::sin(to)) < kNone ? 0.0 : std::sin(to);
}

}  // namespace

double WindLaw::speed(double z) const {
  return friction / kKarman * std::log((z + roughness) / roughness);
}

double WindLaw::energy() const { return friction * friction / 0.3; }

double WindLaw::loss(double z) const {
  return friction * friction * friction / (kKarman * (z + roughness));
}

FlowSetup flow_setup(const Site& site, const Scene& scene, const Days& days, Report& report) {
  FlowSetup flow;
  flow.station = station_at(days, static_cast<int>(site.flow.hour));
  set_wind(site.flow, scene.grid.turn, flow, report);
  set_grid(site, scene, flow);
  return flow;
}

}  // namespace townskin_case
