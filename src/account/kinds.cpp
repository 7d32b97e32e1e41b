// The patches of the account by kind and role, and what of them does not change in a run.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

#include "account/patches.hpp"
#include "surface/conduction.hpp"

namespace tsrf_module_account {

namespace {

constexpr double kUpward = 0.5;  // a building surface whose normal looks up more is a roof

Kind kind_of_building(const Town& town, std::size_t p) {
  constexpr std::array<Kind, 3> kByPosition{kRoof, kWall, kWindow};
  const std::int32_t material = town.lyrstrct.material[p];
  if (material < 0) return town.patch.nz[p] > kUpward ? kRoof : kWall;
  const std::int32_t pos = town.matprp.materials[static_cast<std::size_t>(material)].pos;
  return kByPosition.at(static_cast<std::size_t>(pos - 1));
}

Kind kind_of(const Town& town, std::size_t p) {
  using namespace tsrf_module_patch;
  const Type type = town.patch.type[p];
  if (type == kBuilding) return kind_of_building(town, p);
  if (type == kTree) return tsrf_module_account::kLeaves;
  if (type == kLand) return kGround;
  if (type == tsrf_module_patch::kWater) return tsrf_module_account::kWater;
  if (type == kSolarPanel) return kPanel;
  if (type == tsrf_module_patch::kMirror) return tsrf_module_account::kMirror;
  if (type == tsrf_module_patch::kFarBoundary) return tsrf_module_account::kFarBoundary;
  return tsrf_module_account::kOther;
}

Role role_of(const Town& town, std::size_t p, Kind kind) {
  if (town.state.lcal[p] > 0) return Role::balanced;
  if (kind == kLeaves) return Role::leaves;
  return kind == kMirror || kind == kOther ? Role::dark : Role::held;
}

/// Whether the column of a patch goes forward implicitly.
bool is_implicit(const tsrf_module_data::Data& state, std::size_t p, double dt) {
  double largest = 0.0;
  for (std::int32_t k = 1; k <= std::min(state.nlyr[p] + 1, state.mzg); ++k) {
    largest = std::max(largest, (state.gcond(p, k) + state.gcond(p, k - 1)) /
                                    (state.dzl(p, k - 1) * state.capa(p, k - 1)));
  }
  return largest * dt > solid1d::kExplicitLimit;
}

/// Adds a patch to what is known of its kind, and to those with something behind them.
void enter(const Town& town, std::size_t p, const Lot& lot, Data& data) {
  const double area = town.patch.area[p];
  data.area[lot.kind] += area;
  data.sky[lot.kind] += area * town.state.skyvf0[p];
  if (lot.kind == kGround || lot.kind == kRoof || lot.kind == kWater) {
    data.plan += area * std::max(0.0, town.patch.nz[p]);
  }
  if (lot.role == Role::leaves) data.leaf_patches.push_back(static_cast<std::uint32_t>(p));
  if (lot.role != Role::balanced) return;
  data.balanced[lot.kind] = true;
  const std::int32_t last = town.state.nlyr[p];
  if (!(town.state.gcond(p, last) > 0.0)) return;
  data.backed.push_back({.patch = static_cast<std::uint32_t>(p),
                         .last = last,
                         .building = town.lyrstrct.building[p],
                         .kind = lot.kind,
                         .implicit = lot.implicit,
                         .conductance = area * town.state.gcond(p, last),
                         .before = 0.0});
}

void sort_into_lots(const Town& town, double dt, Data& data) {
  const std::size_t patches = town.state.lcal.size();
  const auto key = [](const Lot& lot) { return std::tuple(lot.kind, lot.role, lot.implicit); };
  std::vector<Lot> of(patches);
  for (std::size_t p = 0; p < patches; ++p) {
    const Kind kind = kind_of(town, p);
    const Role role = role_of(town, p, kind);
    of[p] = {0, 0, kind, role, role == Role::balanced && is_implicit(town.state, p, dt)};
    enter(town, p, of[p], data);
  }
  data.order.resize(patches);
  std::iota(data.order.begin(), data.order.end(), 0U);
  for (std::size_t first = 0; first < patches; first += kBlock) {
    const std::size_t last = std::min(first + kBlock, patches);
    const auto begin = data.order.begin();
    std::stable_sort(begin + static_cast<std::ptrdiff_t>(first),
                     begin + static_cast<std::ptrdiff_t>(last),
                     [&](std::uint32_t a, std::uint32_t b) { return key(of[a]) < key(of[b]); });
    data.blocks.push_back({.first_lot = data.lots.size()});
    for (std::size_t n = first; n < last; ++n) {
      const Lot& lot = of[data.order[n]];
      if (n == first || key(lot) != key(data.lots.back())) {
        data.lots.push_back({static_cast<std::uint32_t>(n), 0, lot.kind, lot.role, lot.implicit});
      }
      data.lots.back().last = static_cast<std::uint32_t>(n + 1);
    }
    data.blocks.back().last_lot = data.lots.size();
  }
  std::ranges::stable_sort(data.backed, {}, &Backed::kind);
}

void list_panes(const Town& town, Data& data) {
  for (const std::int32_t patch : town.glass.patches) {
    const auto p = static_cast<std::size_t>(patch);
    Pane pane{static_cast<std::uint32_t>(p), town.lyrstrct.building[p], 1.0, 0.0};
    for (std::int32_t k = 0; k < town.state.nlyr[p]; ++k) {
      const double left = std::exp(-town.state.dzl(p, k) * town.state.extc(p, k)) * pane.passed;
      pane.entered += town.state.dzl(p, k) * (left - pane.passed);
      pane.passed = left;
    }
    data.panes.push_back(pane);
  }
}

}  // namespace

void prepare_patches(frame::Log& log, const Town& town, double dt, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_account)(prepare_patches)");
  const std::size_t patches = town.state.lcal.size();
  const auto rows = static_cast<std::size_t>(town.state.mzg) + 1;
  frame::allocating(log, "account", frame::bytes_of<double>(patches, rows + 4), [&] {
    sort_into_lots(town, dt, data);
    list_panes(town, data);
    data.T0.resize(patches);
    data.T1.resize(patches);
    data.JRl.resize(data.leaf_patches.size());
    data.JRs.resize(data.leaf_patches.size());
    data.start = frame::PatchTable<double>(town.state.mpatch, town.state.mzg + 1);
  });
}

}  // namespace tsrf_module_account
