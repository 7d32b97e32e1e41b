// The statement of a day: what the account writes.
//
// A row a term: day, seconds that it holds, balance, whose, term, kWh, kWh per m2. The terms of a
// balance are signed, gains positive, and add up to its last one, the remainder.
#pragma once

#include <string_view>

#include "account/account.hpp"
#include "frame/text_output.hpp"

namespace tsrf_module_account {

/// Writes the day that is open and ends; `date` tells it in a dated run.
void write_day(frame::Log& log, frame::TextOutput& file, std::string_view date, const Data& data);

}  // namespace tsrf_module_account
