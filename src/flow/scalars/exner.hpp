// flw_module_exner: the potential temperature, which air keeps when it rises or sinks.
//
// With `itmpt` 2 it goes forward in the place of the temperature: theta = T/(p/pp0)^(R/cp), p the
// start pressure and the column of the ambient air, R and cp those of the ambient air. The Exner
// function T/theta hangs on the place alone, so it is made once (flw_init_exner). Fields and files
// keep the temperature itself. Used by the step of temperature and species.
#pragma once

#include "flow/terms/advection.hpp"
#include "flow/terms/domain.hpp"

namespace flow {

struct Exner {
  Field function;       ///< T/theta of each cell, halos filled; empty when T itself goes forward
  RimFactors to_theta;  ///< theta/T at the faces of the rim
  Field theta;          ///< [K]

  [[nodiscard]] bool used() const { return !function.empty(); }
};

/// Empty unless `itmpt` is 2. A column that reaches no pressure is a data error.
Exner flw_init_exner(frame::Log& log, const Domain& domain);

/// theta of t, halos included.
void set_potential(frame::Crew& crew, const Field& t, Exner& exner);

}  // namespace flow
