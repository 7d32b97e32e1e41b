#include "results/sun_sky.hpp"

#include <array>
#include <cmath>
#include <string_view>

#include "results/row.hpp"

namespace tsrf_module_io {

void write_sunskyrad(frame::Log& log, frame::TextOutput& file, const Settings& settings, bool dated,
                     const StepDates& dates, const tsrf_module_phydat::SkyFluxes& sky,
                     FileStart& start) {
  if (!is_whole_hour(dates.sod1)) return;
  const std::int32_t hour = hour_slot(dates.sod1);
  if (std::lround(dates.date1[3]) != hour % kHours) {
    log.program_error("### program error -1- (tsrf_admin)(write_sunskyrad)");
  }
  constexpr std::string_view kHeading =
      "### hr, normal-direct-solar-rad., scattered-solar-rad, atmos.-long-rad";
  constexpr std::string_view kDatedHeading =
      "### mn, dy, hr, normal-direct-solar-rad., scattered-solar-rad, atmos.-long-rad";
  Settings rule = settings;
  if (dated) rule.REWIND_OUTFILE = 0;
  start_file(log, file, dated ? kDatedHeading : kHeading, rule, hour, start);
  Row row;
  if (dated) {
    const tsrf_module_calendar::Date& day = hour == kHours ? dates.date0 : dates.date1;
    row.integer(static_cast<std::int32_t>(std::lround(day[1])), 3);
    row.integer(static_cast<std::int32_t>(std::lround(day[2])), 3);
  }
  row.integer(hour, 3);
  row.real(sky.direct);
  row.real(sky.scattered);
  row.real(sky.longwave);
  if (!row.finite()) {
    constexpr std::array<std::string_view, 3> kTerms{"normal-direct-solar-rad.",
                                                     "scattered-solar-rad", "atmos.-long-rad"};
    refuse_result(log, "Sun & Sky", dates.iter, "all patches", kTerms[row.unsound()]);
  }
  row.end(log, file);
  file.flush(log);
}

}  // namespace tsrf_module_io
