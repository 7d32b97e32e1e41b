// tsrf_set_tqair: the air over the patches during the coming step.
//
// The surface model runs by itself: the air is the weather of the moment, the same over the whole
// district. Called by the driver at the start of each step.
#pragma once

#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/calendar.hpp"
#include "inputs/weather.hpp"
#include "surface/surface_state.hpp"

namespace tsrf_set_tqair {

/// Takes the weather at mid-step and gives every patch its air state.
void tsrf_set_tqair(frame::Log& log, frame::TextInput& weather_file, double time, double dtmax,
                    tsrf_module_calendar::Data& calendar, tsrf_module_weather::Data& weather,
                    tsrf_module_data::Data& state);

}  // namespace tsrf_set_tqair
