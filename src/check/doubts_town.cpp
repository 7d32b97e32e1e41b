// Buildings, their rooms and what they are made of.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <variant>

#include "check/doubts.hpp"

namespace check {

namespace {

using frame::items;
using tsrf_main01::Run;

constexpr double kRoofNormal = 0.3;  // upward part of the normal from which a patch is roof
constexpr double kRoom = 1.5;  // so much more volume than its patches enclose is a fault of data

void add(Run& run, std::vector<std::string> lines, std::string hint) {
  run.desk.log.findings().add({.fault = false, .lines = std::move(lines), .hint = std::move(hint)});
}

/// What the patches of a building enclose: the space between its roofs and its lowest patch.
struct Hull {
  double roof = 0.0;    // area of roofs in plan [m2]
  double volume = 0.0;  // [m3]
  std::int32_t lowest = INT32_MAX;
};

std::vector<Hull> hulls_of(const Run& run) {
  const tsrf_module_patch::Data& patch = run.inputs.patch;
  std::vector<Hull> hulls(run.buildings.bldng.BldID.size());
  const auto each = [&](auto&& look) {
    for (std::size_t p = 0; p < patch.type.size(); ++p) {
      if (patch.type[p] != tsrf_module_patch::kBuilding) continue;
      const std::int32_t b = run.buildings.bldng.by_bldid.find(patch.BldID[p]);
      if (b >= 0) look(p, hulls[static_cast<std::size_t>(b)]);
    }
  };
  each([&](std::size_t p, Hull& hull) { hull.lowest = std::min(hull.lowest, patch.sk[p]); });
  const auto* axes = std::get_if<tsrf_main01::Axes>(&run.inputs.grid);
  each([&](std::size_t p, Hull& hull) {
    if (patch.nz[p] < kRoofNormal) return;
    const double plan = patch.area[p] * patch.nz[p];
    hull.roof += plan;
    if (axes == nullptr) return;
    const tsrf_main01::Axis& z = (*axes)[2];
    // The patch may lie anywhere in the cell in front of it.
    hull.volume += plan * (z.x(patch.sk[p] + 1) - z.x(hull.lowest));
  });
  return hulls;
}

}  // namespace

void doubt_buildings(const Parts& parts, Run& run) {
  if (!parts.rooms || !parts.whole_list) return;
  const tsrf_module_bldng::Data& bldng = run.buildings.bldng;
  const std::vector<Hull> hulls = hulls_of(run);
  for (std::size_t b = 0; b < hulls.size(); ++b) {
    const std::string id = items("BldID in Building data =", bldng.BldID[b]);
    if (!(hulls[b].roof > 0.0)) {
      add(run, {id, "it has no roof among its patches"}, "");
      continue;
    }
    const double height = bldng.floor[b] * bldng.settings.HEIGHT;
    const double volume = bldng.area[b] * height;
    const bool axes = hulls[b].volume > 0.0;
    const double most = axes ? hulls[b].volume : hulls[b].roof * height;
    if (volume <= kRoom * most) continue;
    add(run, {id, items("volume of its floors [m3] =", volume), items("its patches enclose", most)},
        "area is that of one storey");
  }
}

void doubt_set_points(Run& run) {
  constexpr double kColdest = 5.0, kWarmest = 40.0;  // deg C
  frame::TextInput& file = run.desk.units.input(frame::kUnitRmHeat);
  const std::size_t dates = dated_series::elements(run.buildings.rmheat.series.settings);
  std::vector<std::int32_t> date(dates);
  tsrf_module_rmheat::Line line;
  file.rewind();
  file.skip_line();
  while (tsrf_module_rmheat::read_line(file, date, line) == frame::ReadStatus::ok) {
    const double point = line.values[tsrf_module_rmheat::kRmtmp - 1];
    if (point >= kColdest && point <= kWarmest) continue;
    run.desk.log.findings().add(
        {.fault = false,
         .lines = {items("rmtmp in RmHeat data =", point), "usual are 5 to 40 deg C"},
         .file = file.name(),
         .line = file.record_line()});
  }
}

void doubt_materials(const Parts& parts, Run& run) {
  if (!parts.materials) return;
  struct Range {
    std::string_view name;
    double least, most;
    std::string_view unit;
  };
  constexpr std::array<Range, 5> kUsual{{{"alb", 0.02, 0.95, ""},
                                         {"ems", 0.02, 1.0, ""},
                                         {"rho cp", 1e3, 5e6, "J/m3 K"},
                                         {"rho cp alf", 0.01, 450.0, "W/m K"},
                                         {"thick", 1e-4, 10.0, "m"}}};
  const tsrf_module_srfprp::Data& table = run.inputs.srfprp;
  const auto look = [&](std::size_t which, double value, const std::string& words) {
    const Range& usual = kUsual.at(which);
    if (value >= usual.least && value <= usual.most) return;
    add(run,
        {words, items(usual.name, "=", value, usual.unit),
         items("usual are", usual.least, "to", usual.most)},
        "");
  };
  std::vector<bool> used(static_cast<std::size_t>(table.n));
  for (const tsrf_module_matprp::Material& material : run.inputs.matprp.materials) {
    for (const std::int32_t code : material.SurfCD) {
      const std::int32_t row = table.by_code.find(code);
      if (row >= 0) used[static_cast<std::size_t>(row)] = true;
    }
    for (const double thick : material.thick) {
      look(4, thick, items("surfid in MatEleProp data =", material.surfid));
    }
  }
  for (std::size_t row = 0; row < used.size(); ++row) {
    if (!used[row]) continue;
    const std::string words = items("SurfCD in SurfProp data =", table.SurfCD[row]);
    look(0, table.alb[row], words);
    look(1, table.ems[row], words);
    look(2, table.heat_capacity[row], words);
    look(3, table.conductivity[row], words);
  }
}

}  // namespace check
