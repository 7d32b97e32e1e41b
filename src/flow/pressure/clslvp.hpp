// flw_clslvp: the solution of the pressure equation, and the choice of its solver.
#pragma once

#include <cstdint>
#include <string_view>

#include "flow/box.hpp"
#include "flow/settings.hpp"
#include "frame/log.hpp"

namespace flow {

/// The solvers of the pressure equation, in the order of `iamg`.
enum class PressureMethod : std::int32_t { iccg = 0 };

/// The solver that record "iamg,dumpp,veldmp=" asks for; to be called when that record is read.
/// Errors: "### error : amg solver not available".
PressureMethod flw_amg_setup(frame::Log& log, std::int32_t iamg);

struct PressureSolver {
  PressureMethod method = PressureMethod::iccg;
};

}  // namespace flow
