#include "run/balance.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "inputs/moist_air.hpp"
#include "run/inputs.hpp"

namespace townskin_view {

namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
using moist_air::kStefanBoltzmann;

/// Albedos below this leave too little of the light in the radiosity to tell what came.
constexpr double kLeastAlbedo = 1e-3;

/// Means over the patches of each group, by area.
class GroupMeans {
 public:
  explicit GroupMeans(const RunModel& run) : run_(run) {
    const auto most = std::ranges::max_element(run.patches.group);
    const std::size_t groups =
        most == run.patches.group.end() ? 0 : static_cast<std::size_t>(*most) + 1;
    sum_.assign(groups, 0.0);
    area_.assign(groups, 0.0);
  }
  void add(std::size_t p, double value) {
    const auto g = static_cast<std::size_t>(run_.patches.group[p]);
    sum_[g] += value * run_.patches.area[p];
    area_[g] += run_.patches.area[p];
  }
  [[nodiscard]] double of(std::size_t p) const {
    const auto g = static_cast<std::size_t>(run_.patches.group[p]);
    return sum_[g] / area_[g];
  }

 private:
  const RunModel& run_;
  std::vector<double> sum_, area_;
};

bool takes_light(Kind kind) {
  return kind != Kind::leaves && kind != Kind::mirror && kind != Kind::other;
}

using Values = std::span<float>;

std::span<const float> stored(const RunModel& run, std::string_view name, std::size_t hour) {
  return run.field(name)->stored(hour);
}

/// Albedo of what a patch's group sends back.
GroupMeans albedos(const RunModel& run, std::size_t hour) {
  GroupMeans means(run);
  for (std::size_t p = 0; p < run.patches.size(); ++p) means.add(p, run.albedo(p, hour));
  return means;
}

void radiant_temperature(const RunModel& run, std::size_t hour, Values to) {
  const auto radiosity = stored(run, "longwave_radiosity", hour);
  for (std::size_t p = 0; p < to.size(); ++p) {
    to[p] = static_cast<float>(
        std::pow(std::max(0.0, static_cast<double>(radiosity[p])) / kStefanBoltzmann, 0.25) -
        kZeroCelsius);
  }
}

void absorbed_shortwave(const RunModel& run, std::size_t hour, Values to) {
  const auto radiosity = stored(run, "shortwave_radiosity", hour);
  const GroupMeans albedo = albedos(run, hour);
  for (std::size_t p = 0; p < to.size(); ++p) {
    const double of_group = albedo.of(p);
    const bool known = takes_light(run.patches.kind[p]) && of_group >= kLeastAlbedo;
    to[p] =
        known ? static_cast<float>((1.0 - run.albedo(p, hour)) * radiosity[p] / of_group) : kNone;
  }
}

void absorbed_beam(const RunModel& run, std::size_t hour, Values to) {
  const auto sunlit = stored(run, "sunlit_fraction", hour);
  const Sky& sky = run.sky[hour];
  GroupMeans means(run);
  for (std::size_t p = 0; p < to.size(); ++p) {
    const auto& n = run.patches.normal[p];
    const double cosine = std::max(0.0, n[0] * sky.sun[0] + n[1] * sky.sun[1] + n[2] * sky.sun[2]);
    const bool lit = takes_light(run.patches.kind[p]);
    means.add(p, lit ? cosine * sky.direct * static_cast<double>(sunlit[p]) : 0.0);
  }
  for (std::size_t p = 0; p < to.size(); ++p) {
    to[p] = takes_light(run.patches.kind[p])
                ? static_cast<float>((1.0 - run.albedo(p, hour)) * means.of(p))
                : kNone;
  }
}

/// What a share of the sky gives: the mean sky view of the group.
void from_sky(const RunModel& run, Values to, double flux,
              const std::function<double(std::size_t)>& absorptivity) {
  const std::vector<double>& view = run.field("sky_view_factor")->exact;
  GroupMeans means(run);
  for (std::size_t p = 0; p < to.size(); ++p) means.add(p, view[p]);
  for (std::size_t p = 0; p < to.size(); ++p) {
    to[p] = takes_light(run.patches.kind[p])
                ? static_cast<float>(absorptivity(p) * means.of(p) * flux)
                : kNone;
  }
}

void absorbed_sky_light(const RunModel& run, std::size_t hour, Values to) {
  from_sky(run, to, run.sky[hour].scattered,
           [&](std::size_t p) { return 1.0 - run.albedo(p, hour); });
}

void absorbed_sky_longwave(const RunModel& run, std::size_t hour, Values to) {
  from_sky(run, to, run.sky[hour].longwave, [&](std::size_t p) { return run.emissivity(p, hour); });
}

/// Takes another field off the values.
void subtract(const RunModel& run, std::string_view name, std::size_t hour, Values from) {
  std::vector<float> values(from.size());
  run.field(name)->take(run, hour, values);
  for (std::size_t p = 0; p < from.size(); ++p) from[p] -= values[p];
}

void absorbed_reflected(const RunModel& run, std::size_t hour, Values to) {
  absorbed_shortwave(run, hour, to);
  subtract(run, "absorbed_beam", hour, to);
  subtract(run, "absorbed_sky_light", hour, to);
}

void emitted(const RunModel& run, std::size_t hour, Values to) {
  const auto temperature = stored(run, "surface_temperature", hour);
  for (std::size_t p = 0; p < to.size(); ++p) {
    const double T = static_cast<double>(temperature[p]) + kZeroCelsius;
    to[p] = static_cast<float>(-run.emissivity(p, hour) * kStefanBoltzmann * (T * T) * (T * T));
  }
}

void convected(const RunModel& run, std::size_t hour, Values to) {
  const auto temperature = stored(run, "surface_temperature", hour);
  for (std::size_t p = 0; p < to.size(); ++p) {
    to[p] = run.patches.balanced[p] != 0
                ? static_cast<float>(run.convection *
                                     (run.sky[hour].air - static_cast<double>(temperature[p])))
                : kNone;
  }
}

/// Formed in double precision: the terms are some hundred times what single precision may lose.
void absorbed_longwave(const RunModel& run, std::size_t hour, Values to) {
  const auto temperature = stored(run, "surface_temperature", hour);
  const auto latent = stored(run, "latent_heat", hour);
  const auto conducted = stored(run, "conducted_heat", hour);
  absorbed_shortwave(run, hour, to);
  for (std::size_t p = 0; p < to.size(); ++p) {
    const double t = static_cast<double>(temperature[p]);
    const double T = t + kZeroCelsius;
    const double rest = run.convection * (run.sky[hour].air - t) -
                        run.emissivity(p, hour) * kStefanBoltzmann * (T * T) * (T * T) +
                        static_cast<double>(to[p]) + static_cast<double>(latent[p]) -
                        static_cast<double>(conducted[p]);
    to[p] = run.patches.balanced[p] != 0 ? static_cast<float>(-rest) : kNone;
  }
}

void neighbour_longwave(const RunModel& run, std::size_t hour, Values to) {
  absorbed_longwave(run, hour, to);
  subtract(run, "absorbed_sky_longwave", hour, to);
}

/// Mean temperature of the surfaces of a cell by their exchange.
void cell_temperature(const RunModel& run, std::size_t hour, Values to) {
  const auto exchange = stored(run, "cell_exchange", hour);
  const auto heat = stored(run, "cell_exchange_temperature", hour);
  for (std::size_t c = 0; c < to.size(); ++c) {
    to[c] =
        exchange[c] > 0.0F
            ? static_cast<float>(static_cast<double>(heat[c]) / static_cast<double>(exchange[c]) -
                                 kZeroCelsius)
            : kNone;
  }
}

/// A derived quantity, and the fields that it needs.
struct Rule {
  std::string_view name;
  Field::Derive derive;
  std::vector<std::string_view> needs;
};

const std::vector<Rule>& rules() {
  static const std::vector<Rule> kRules{
      {"radiant_temperature", radiant_temperature, {"longwave_radiosity"}},
      {"absorbed_shortwave", absorbed_shortwave, {"shortwave_radiosity"}},
      {"absorbed_beam", absorbed_beam, {"sunlit_fraction", "direct_sun"}},
      {"absorbed_sky_light", absorbed_sky_light, {"sky_view_factor", "scattered_sun"}},
      {"absorbed_reflected_light",
       absorbed_reflected,
       {"absorbed_shortwave", "absorbed_beam", "absorbed_sky_light"}},
      {"absorbed_longwave",
       absorbed_longwave,
       {"surface_temperature", "absorbed_shortwave", "latent_heat", "conducted_heat",
        "air_temperature"}},
      {"absorbed_sky_longwave", absorbed_sky_longwave, {"sky_view_factor", "sky_longwave"}},
      {"absorbed_neighbour_longwave",
       neighbour_longwave,
       {"absorbed_longwave", "absorbed_sky_longwave"}},
      {"emitted_longwave", emitted, {"surface_temperature"}},
      {"convected_heat", convected, {"surface_temperature", "air_temperature"}},
      {"cell_surface_temperature",
       cell_temperature,
       {"cell_exchange", "cell_exchange_temperature"}},
  };
  return kRules;
}

Field steady(const RunModel& run, std::string_view name) {
  return {.quantity = &quantity(name), .size = run.patches.size(), .hours = 1};
}

void add_geometry(RunModel& run) {
  Field area = steady(run, "patch_area");
  area.exact = run.patches.area;
  run.fields.push_back(std::move(area));
  constexpr std::array<std::string_view, 3> kNormals{"normal_x", "normal_y", "normal_z"};
  for (std::size_t a = 0; a < 3; ++a) {
    Field normal = steady(run, kNormals[a]);
    for (const auto& n : run.patches.normal) normal.exact.push_back(n[a]);
    run.fields.push_back(std::move(normal));
  }
}

void put_in_order(RunModel& run) {
  std::ranges::stable_sort(run.fields, {}, [](const Field& field) { return field.quantity; });
}

}  // namespace

void add_derived(RunModel& run) {
  add_geometry(run);
  const bool properties = !run.properties.empty();
  for (const Rule& rule : rules()) {
    // Leaves take light out of the beam before it falls on a patch, so what they leave is not
    // known.
    if (rule.name == "absorbed_beam" && run.has_leaves) continue;
    if (!properties && rule.name != "radiant_temperature" &&
        rule.name != "cell_surface_temperature") {
      continue;
    }
    const bool can = std::ranges::all_of(
        rule.needs, [&](std::string_view name) { return run.field(name) != nullptr; });
    if (!can) continue;
    const bool of_cells = rule.name == "cell_surface_temperature";
    run.fields.push_back({.quantity = &quantity(rule.name),
                          .size = of_cells ? run.cells.size() : run.patches.size(),
                          .hours = run.hours.size(),
                          .derive = rule.derive});
  }
  put_in_order(run);
}

}  // namespace townskin_view
