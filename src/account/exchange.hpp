// The exchange of radiation in the energy account.
//
// Of the power J that a group sends, the share v goes to the sky and K reaches other groups by the
// table of view factors, as it is corrected and rounded; 1 - v - K has nowhere to go. The groups
// receive what the last sweep found on its way, K J', and K (J - J') is not received yet.
#pragma once

#include "account/account.hpp"

namespace tsrf_module_account {

/// What the groups send and to whom; once, when the table is set. All groups share `skyvf0`
/// (per patch).
void prepare_exchange(frame::Log& log, const tsrf_module_raddat::Data& raddat,
                      std::span<const double> skyvf0, Data& data);

/// Notes the radiosities that leaves give the exchange of a step.
void note_exchange(const tsrf_module_raddat::Data& raddat, Data& data);

/// Adds a step of `dt` [s], with the powers of groups in `exchange`; `raddat` has what leaves give
/// the next one.
void add_exchange(frame::Crew& crew, const tsrf_module_patch::Data& patch,
                  const tsrf_module_raddat::Data& raddat, const tsrf_module_radref::Work& exchange,
                  double dt, Data& data);

}  // namespace tsrf_module_account
