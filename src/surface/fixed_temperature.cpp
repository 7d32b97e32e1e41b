#include "surface/fixed_temperature.hpp"

#include <algorithm>
#include <cmath>

#include "frame/namelist.hpp"
#include "surface/heat_balance.hpp"

namespace tsrf_module_fixtmp {

namespace {

std::vector<std::int32_t> patches_of_type(const tsrf_module_patch::Data& patch,
                                          tsrf_module_patch::Type type) {
  std::vector<std::int32_t> found;
  for (std::int32_t p = 0; p < patch.mpatch; ++p) {
    if (patch.type[static_cast<std::size_t>(p)] == type) found.push_back(p);
  }
  return found;
}

void set_column(tsrf_module_data::Data& state, std::size_t p, double temperature) {
  for (std::int32_t k = 0; k <= state.mzg; ++k) state.tlyr(p, k) = temperature;
}

/// Temperature of a panel, never below that of the air.
double panel_temperature(const Data& data, double air, double wind, double irradiance) {
  const double cooling = data.BB_PV * std::pow(std::abs(wind), 0.8);
  const double panel = (air - 2.0) + 0.001 * irradiance * (2.0 + data.AA_PV / (1.0 + cooling));
  return panel < air ? air : panel;
}

}  // namespace

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_fixtmp)(inputdata)");
  frame::Group group("TSRF_FIXTMP", {{"AA_PV", data.AA_PV}, {"BB_PV", data.BB_PV}});
  group.read(log, control);
}

void read_fixtmp(frame::Log& log, const tsrf_module_patch::Data& patch, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_fixtmp)(read_fixtmp)");
  frame::allocating(log, "tfix", frame::bytes_of<double>(static_cast<std::size_t>(patch.mpatch)),
                    [&] {
                      data.tfix.assign(static_cast<std::size_t>(patch.mpatch), -1.0);
                      data.far_boundary = patches_of_type(patch, tsrf_module_patch::kFarBoundary);
                      data.panels = patches_of_type(patch, tsrf_module_patch::kSolarPanel);
                    });
}

void calc_temp_farbd(frame::Log& log, const tsrf_module_patch::Data& patch,
                     const tsrf_module_data::Data& state, Data& data) {
  if (data.far_boundary.empty()) return;
  const auto surface = state.tlyr.row(0);
  data.tmean = 0.0;
  data.asum = 0.0;
  for (std::size_t p = 0; p < surface.size(); ++p) {
    if (state.lcal[p] <= 0) continue;
    data.asum += patch.area[p];
    data.tmean += patch.area[p] * surface[p];
  }
  if (!(data.asum > 0.0)) {
    // No patch has a heat balance, or those that have one have no area.
    log.program_error(
        "### program error -1- (tsrf_module_fixtmp)(calc_temp_farbd)",
        frame::items("PID =", patch.PID[static_cast<std::size_t>(data.far_boundary.front())]));
  }
  data.tmean /= data.asum;
  for (const std::int32_t p : data.far_boundary)
    data.tfix[static_cast<std::size_t>(p)] = data.tmean;
}

void apply(const Data& data, tsrf_module_data::Data& state) {
  if (data.far_boundary.empty()) return;
  for (std::size_t p = 0; p < data.tfix.size(); ++p) {
    if (data.tfix[p] > 0.0) set_column(state, p, data.tfix[p]);
  }
}

void calc_temp_pv(frame::Log& log, std::int64_t iter, const tsrf_module_patch::Data& patch,
                  std::span<const double> Rs, const Data& data, tsrf_module_data::Data& state) {
  const frame::Tag tag(log, "(tsrf_module_fixtmp)(calc_temp_pv)");
  for (const std::int32_t panel : data.panels) {
    const auto p = static_cast<std::size_t>(panel);
    const double air = state.airst(p, 1);
    const double wind = state.airst(p, 3);
    const double temperature = panel_temperature(data, air, wind, Rs[p]);
    if (!tsrf_therm1d::plausible(temperature)) {
      tsrf_therm1d::note_air(log, state);
      log.fail("### error : panel temperature out of range", frame::items("iter =", iter),
               frame::items("PID =", patch.PID[p]),
               frame::items("panel temperature =", temperature),
               frame::items("air temperature =", air), frame::items("wind =", wind),
               frame::items("incident short-wave =", Rs[p]), tsrf_therm1d::plausible_rule());
    }
    set_column(state, p, temperature);
  }
}

}  // namespace tsrf_module_fixtmp
