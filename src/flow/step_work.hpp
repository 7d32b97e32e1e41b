// Lists and work arrays of a step: made once (prepare), used by every step, part of the run.
#pragma once

#include <vector>

#include "flow/metrics.hpp"
#include "flow/pressure/clprs.hpp"
#include "flow/rim.hpp"
#include "flow/scalars/cldtdt.hpp"
#include "flow/terms/momentum.hpp"
#include "flow/turbulence/turbulence.hpp"

namespace flow {

struct StepWork {
  Metrics metrics;
  Rim rim;
  Momentum momentum;
  Scalars scalars;      ///< made where temperature and species are computed
  ScalarSystem system;  ///< of all scalars
  PressureStep pressure;
  TurbulenceWork turbulence;
  std::vector<double> scratch;  ///< three rows of cells for each hand
};

}  // namespace flow
