// Lists and work arrays of a step: made once (prepare), used by every step, part of the run.
#pragma once

#include <vector>

#include "flow/metrics.hpp"
#include "flow/pressure/clprs.hpp"
#include "flow/rim.hpp"
#include "flow/scalars/advance.hpp"
#include "flow/terms/momentum.hpp"
#include "flow/turbulence/turbulence.hpp"

namespace flow {

struct StepWork {
  Metrics metrics;
  Rim rim;
  Momentum momentum;
  PressureStep pressure;
  TurbulenceWork turbulence;
  ScalarSystem scalar_system;  ///< of the implicit steps of all scalars
  std::vector<double> scratch;  ///< three rows of cells
};

}  // namespace flow
