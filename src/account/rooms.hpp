// Rooms, slabs and plants in the energy account.
//
// The heat of walls and of the sun comes from the columns' part of the account, stored heat from
// the temperatures of rooms and slabs, use, ventilation, load and released heat from the budgets
// that the step leaves.
#pragma once

#include "account/account.hpp"

namespace tsrf_module_account {

/// The buildings as a step leaves them.
struct Rooms {
  const tsrf_module_bldng::Data& bldng;
  const tsrf_module_aircon::Data& aircon;
  const tsrf_building::Work& work;
};

/// What does not change of the buildings; once.
void prepare_rooms(frame::Log& log, const tsrf_module_patch::Data& patch,
                   const tsrf_module_data::Data& state, const Rooms& rooms, Data& data);
/// Notes the temperatures that a step begins with.
void note_rooms(const tsrf_module_bldng::Data& bldng, Data& data);
/// Adds the step of `dt` [s] from `time` [s]; needs its `add_columns`.
void add_rooms(const tsrf_module_patch::Data& patch, const tsrf_module_data::Data& state,
               const Rooms& rooms, double time, double dt, Data& data);

}  // namespace tsrf_module_account
