// What the control data tell the flow solver: plain values, as they hold after all checks.
//
// Filled by the readers of the control unit (control.cpp, species.cpp, history_points.cpp,
// short_records.cpp), read by everything else; nothing changes them during a run but the
// schedules, which move on.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "flow/box.hpp"

namespace flow {

inline constexpr double kGasConstant = 8.314;  ///< [J/mol K], as the state equation has it

using Vector = std::array<double, 3>;

/// When a file is written: by iterations or by time.
struct Schedule {
  double start = -999.0;
  double end = -999.0;
  double interval = 0.0;
  bool by_time = false;
  bool met = false;  ///< the first call of the run is behind

  [[nodiscard]] bool none() const { return start == -999.0 && end == -999.0; }
};

/// Limits of a time step.
struct StepLimit {
  double dtsafe = 0.0;
  double dtmax = 0.0;  ///< [s]
};

enum class Turbulence : std::int32_t { none = 0, k_epsilon = 1, les = 2 };

/// The state that a uniform start or the ambient air has.
struct Air {
  std::vector<double> ys;  ///< mass fractions; those of the ambient air sum to 1
  double t = 0.0;          ///< [K]
};

/// The records of flw_read_cntdat.
struct Control {
  std::int32_t iters = -1;  ///< < 0 uniform start, 0 initial file, > 0 restart from that iteration
  std::int32_t itere = 0;
  double timee = 0.0;  ///< [s]
  Schedule restart;
  StepLimit momentum;  ///< first column; also of pressure, k and epsilon
  StepLimit scalar;    ///< second column: temperature and species
  StepLimit smaller;   ///< the smaller of both columns
  bool itemp = false;
  Turbulence iturb = Turbulence::none;
  bool ivisc = false, idift = false, idifk = false;
  std::int32_t intstp = 1;      ///< 1, 2: explicit; -1: implicit
  std::int32_t intacr = 1;      ///< read, checked and told; nothing depends on it
  bool keeps_pressure = false;  ///< intprs >= 1
  double acrkv = 0.0, acrkt = 0.0, acrky = 0.0, acrke = 0.0;
  std::int32_t itercg = 1;
  double epscg = 0.0, gsfcg = 0.0;
  std::int32_t itrbcg = 1;
  double epsbcg = 0.0;
  Air start;
  double pp0 = 0.0;  ///< [Pa]
  Vector velocity0{};
  double k0 = 0.0, eps0 = 0.0;
  Air ambient;
  Vector gravity{};  ///< [m/s2]; the solver sets it to 0 along an axis that is not computed
  double prturb = 0.0, scturb = 0.0;

  [[nodiscard]] bool implicit() const { return intstp == -1; }
};

/// The records of flw_read_spcies.
struct Species {
  bool sutherland = false;
  double mu = 0.0, T = 0.0, C = 0.0;
  double prlmnr = 1.0, sclmnr = 1.0;
  std::vector<double> wm;                   ///< [kg/mol]
  std::vector<std::array<double, 5>> acpk;  ///< coefficients of cp(T) [J/kg K]

  [[nodiscard]] std::size_t count() const { return wm.size(); }
};

/// The records of flw_read_hstpnt.
struct HistoryPoints {
  std::vector<Triple> points;  ///< cells, from 1
  Schedule schedule;
};

/// The four short records behind them.
struct ShortRecords {
  std::int32_t iamg = 0;
  double dumpp = 0.0, veldmp = 1e-20;
  std::int32_t ndv = 1, ipr2 = 1, jpr2 = 1;
  std::int32_t idrdp = 1, itmpt = 1, ifcro = 0;
  double clim = 0.0, xlim = 0.0;
};

/// What follows from the ambient air.
struct Ambient {
  double density = 0.0;  ///< [kg/m3]
  double ramb = 0.0;     ///< the density that buoyancy is measured from: `density`, or 0
  double aklw = 0.0;     ///< lower limit of k [m2/s2]
  double aelw = 0.0;     ///< lower limit of epsilon [m2/s3]
};

struct Settings {
  Control control;
  Species species;
  HistoryPoints history;
  ShortRecords records;
  Ambient ambient;
};

}  // namespace flow
