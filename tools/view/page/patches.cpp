// What the page knows of patches: codes, kinds, areas, surface properties, partners, outlines.
#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "page/payload.hpp"

namespace townskin_view {

namespace {

/// Partners of a group that are kept.
constexpr std::size_t kPartners = 5;
/// Shares of the view are kept in this many steps.
constexpr double kShareSteps = 65535.0;

std::size_t groups_of(const RunModel& run) {
  const auto& group = run.patches.group;
  const auto most = std::ranges::max_element(group);
  return most == group.end() ? 0 : static_cast<std::size_t>(*most) + 1;
}

void add_partners(const RunModel& run, BlockSink& sink, nlohmann::json& head) {
  const std::size_t groups = groups_of(run);
  head["groups"] = groups;
  head["partners"] = kPartners;
  if (run.first_partner.size() < groups + 1) return;
  std::vector<std::int32_t> partner(groups * kPartners, -1);
  std::vector<std::uint16_t> share(groups * kPartners, 0);
  for (std::size_t g = 0; g < groups; ++g) {
    const std::size_t first = run.first_partner[g];
    const std::size_t count = std::min<std::size_t>(kPartners, run.first_partner[g + 1] - first);
    for (std::size_t n = 0; n < count; ++n) {
      const Partner& one = run.partners[first + n];
      partner[g * kPartners + n] = one.patch;
      share[g * kPartners + n] = static_cast<std::uint16_t>(
          std::clamp(std::round(one.view_factor * kShareSteps), 0.0, kShareSteps));
    }
  }
  sink.add("partner", partner);
  sink.add("partner-share", share);
}

/// Lengths are kept in steps of a millimetre, or coarser where that many would not fit.
double step_of(double greatest) { return std::max(0.001, greatest / 2.0e9); }

struct Box {
  std::array<double, 3> low{}, high{};
};

Box box_of(const std::vector<double>& xyz) {
  Box box;
  for (std::size_t a = 0; a < 3 && xyz.size() >= 3; ++a) {
    box.low[a] = box.high[a] = xyz[a];
    for (std::size_t n = a; n < xyz.size(); n += 3) {
      box.low[a] = std::min(box.low[a], xyz[n]);
      box.high[a] = std::max(box.high[a], xyz[n]);
    }
  }
  return box;
}

std::vector<std::int32_t> corners_of(const std::vector<double>& xyz, const Box& box, double step) {
  // Heights stay as they are; the plan is told from its middle.
  const std::array<double, 3> origin{0.5 * (box.low[0] + box.high[0]),
                                     0.5 * (box.low[1] + box.high[1]), 0.0};
  std::vector<std::int32_t> corners(xyz.size());
  for (std::size_t n = 0; n < xyz.size(); ++n) {
    corners[n] = static_cast<std::int32_t>(std::lround((xyz[n] - origin[n % 3]) / step));
  }
  return corners;
}

}  // namespace

void add_patches(const RunModel& run, BlockSink& sink, nlohmann::json& head) {
  const Patches& patches = run.patches;
  std::vector<std::uint8_t> kind;
  std::vector<std::int32_t> area;
  for (std::size_t p = 0; p < patches.size(); ++p) {
    kind.push_back(static_cast<std::uint8_t>(patches.kind[p]));
    area.push_back(std::bit_cast<std::int32_t>(static_cast<float>(patches.area[p])));
  }
  sink.add("pid", patches.PID, 1);
  sink.add("kind", kind);
  sink.add("building", patches.building, 1);
  sink.add("material", patches.material, 1);
  sink.add("area", area);
  sink.add("property-row", patches.surface_row, 1);
  sink.add("group", patches.group, 1);
  head["patches"] = patches.size();
  add_partners(run, sink, head);
}

void add_shapes(const RunModel& run, BlockSink& sink, nlohmann::json& head) {
  const Shapes& shapes = run.shapes;
  std::vector<std::int32_t> size, owner;
  std::vector<std::uint8_t> hole;
  std::vector<double> xyz;
  for (std::size_t p = 0; p < run.patches.size(); ++p) {
    for (const Shapes::Ring& ring : shapes.of(p)) {
      size.push_back(static_cast<std::int32_t>(ring.count));
      owner.push_back(static_cast<std::int32_t>(p));
      hole.push_back(ring.hole ? 1 : 0);
      const auto first = shapes.xyz.begin() + 3 * static_cast<std::ptrdiff_t>(ring.first);
      xyz.insert(xyz.end(), first, first + 3 * static_cast<std::ptrdiff_t>(ring.count));
    }
  }
  const Box box = box_of(xyz);
  double greatest = 1.0;
  for (std::size_t a = 0; a < 3; ++a) {
    greatest = std::max({greatest, std::abs(box.low[a]), std::abs(box.high[a])});
  }
  const double step = step_of(greatest);
  sink.add("ring-size", size);
  sink.add("ring-patch", owner, 1);
  sink.add("ring-hole", hole);
  sink.add("vertex", corners_of(xyz, box, step), 3);
  head["rings"] = size.size();
  head["vertices"] = xyz.size() / 3;
  head["step"] = step;
}

}  // namespace townskin_view
