#include "driver/month_files.hpp"

namespace tsrf_module_io {

void output_month(frame::Log& log, frame::UnitTable& units, const ubx_module_filnam::Data& filnam,
                  tsrf_module_calendar::Data& calendar, double time, bool lend,
                  const MonthRows& rows, Monthly& monthly) {
  const auto closing = tsrf_module_calendar::date_month(log, calendar, time);
  if (!closing.at_start && !lend) return;
  const auto name = [&](std::int32_t index) {
    return ubx_module_filnam::make_month_name(filnam, index, closing.month);
  };
  const MonthFiles files{
      .surf_temp = units.open_output(log, frame::kUnitSurfTemp, name(ubx_module_filnam::kSurfTemp)),
      .patch_surf_temp = units.open_output(log, frame::kUnitPatchSurfTemp,
                                           name(ubx_module_filnam::kPatchSurfTemp)),
      .heat = units.open_output(log, frame::kUnitHeat, name(ubx_module_filnam::kHeat)),
      .bld_load = units.open_output(log, frame::kUnitBldLoad, name(ubx_module_filnam::kBldLoad)),
      .stheat = units.open_input_if_any(log, frame::kUnitStHeat, name(ubx_module_filnam::kStHeat))};
  write_month(log, files, rows, monthly);
  for (const int unit : {frame::kUnitSurfTemp, frame::kUnitPatchSurfTemp, frame::kUnitHeat,
                         frame::kUnitBldLoad, frame::kUnitStHeat}) {
    units.close(unit);
  }
}

}  // namespace tsrf_module_io
