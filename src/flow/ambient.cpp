#include "flow/ambient.hpp"

#include <cmath>
#include <numeric>

namespace flow {

namespace {

constexpr double kCmu = 0.09;
/// Eddy viscosity that the lower limits of k and epsilon leave, in parts of the molecular one.
constexpr double kLeastPart = 30.0;

void scale_to_one(std::vector<double>& ys) {
  const double sum = std::accumulate(ys.begin(), ys.end(), 0.0);
  for (double& y : ys) y /= sum;
}

}  // namespace

Ambient ambient_state(frame::Log& log, Control& control, const Species& species) {
  scale_to_one(control.ambient.ys);
  double moles = 0.0;
  for (std::size_t i = 0; i < species.count(); ++i) moles += control.ambient.ys[i] / species.wm[i];
  Ambient ambient;
  ambient.density = control.pp0 / (kGasConstant * control.ambient.t * moles);
  if (!(ambient.density > 0.0) || !std::isfinite(ambient.density)) {
    log.data_error(frame::items("ramb =", ambient.density), "it must be > 0");
  }
  ambient.ramb = ambient.density;
  ambient.aklw = ambient.aelw = species.mu / ambient.density / kCmu / kLeastPart;
  log.line("ambient density [kg/m^3] : ramb =", ambient.ramb);
  log.line("lower limit of k [m^2/s^2] : aklw =", ambient.aklw);
  log.line("lower limit of eps. [m^2/s^3] : aelw =", ambient.aelw);
  return ambient;
}

void chk_bc_exnr(frame::Log& log, const ShortRecords& records, Ambient& ambient) {
  if (records.idrdp == 2) ambient.ramb = 0.0;
  if (records.idrdp == 1 && records.itmpt == 2) {
    log.stop_with(frame::kStatusAbnormal, "### program error -1-", "(flw_module_exner)",
                  "(chk_bc_exnr)");
  }
}

}  // namespace flow
