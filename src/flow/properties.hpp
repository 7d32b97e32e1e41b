// flw_clprop: the molecular properties of the air.
//
// Called once a step, behind the density; the viscosity is what momentum needs, the rest serves
// temperature and species and is computed only where these are.
#pragma once

#include <cstddef>

#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "frame/crew.hpp"

namespace flow {

/// Viscosity at T [Pa s]: the constant, or the formula of Sutherland (1893).
double viscosity(const Species& species, double T);
/// Specific heat of species `s` at T [J/kg K], a polynomial; that of a mixture is their mean,
/// weighed by mass.
double specific_heat(const Species& species, std::size_t s, double T);
/// Diffusivity of species `s` with mass fraction y in a mixture of `moles` [mol/kg], times density
/// [kg/m s].
double diffusivity(const Species& species, std::size_t s, double y, double moles, double mu);

/// Reads t, ys with their halos; writes mu and, with temperature, cp and dif, halos of the computed
/// axes included. The conductivity is mu cp/prlmnr.
void flw_clprop(frame::Crew& crew, const Species& species, State& state);

}  // namespace flow
