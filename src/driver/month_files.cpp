#include "driver/month_files.hpp"

#include "frame/file_names.hpp"

namespace tsrf_module_io {

namespace {

/// A month begins. Its results must not go where those of another month are.
void enter_month(frame::Log& log, const frame::UnitTable& units,
                 const ubx_module_filnam::Data& filnam, std::int32_t month, Monthly& monthly) {
  monthly.month = month;
  const std::int32_t written = monthly.written_month;
  if (written == 0 || written == month) return;
  for (const auto index : {ubx_module_filnam::kSurfTemp, ubx_module_filnam::kPatchSurfTemp,
                           ubx_module_filnam::kHeat, ubx_module_filnam::kBldLoad}) {
    const std::string name = make_month_name(filnam, index, month);
    if (!frame::same_file(units.path_of(name),
                          units.path_of(make_month_name(filnam, index, written)))) {
      continue;
    }
    log.data_error(frame::items("mon = '" + filnam.MON + "'"),
                   frame::items("results of month", month, "would replace those of month", written),
                   frame::items("file =", name));
  }
}

}  // namespace

void output_month(frame::Log& log, frame::Crew& crew, frame::UnitTable& units,
                  const ubx_module_filnam::Data& filnam, tsrf_module_calendar::Data& calendar,
                  double time, bool lend, const MonthRows& rows, Monthly& monthly) {
  const auto closing = tsrf_module_calendar::date_month(log, calendar, time);
  if (closing.month != monthly.month) enter_month(log, units, filnam, closing.month, monthly);
  if (!closing.at_start && !lend) return;
  monthly.written_month = closing.month;
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
  write_month(log, crew, files, rows, monthly);
  units.flush_outputs(log);
  for (const int unit : {frame::kUnitSurfTemp, frame::kUnitPatchSurfTemp, frame::kUnitHeat,
                         frame::kUnitBldLoad, frame::kUnitStHeat}) {
    units.close(unit);
  }
}

}  // namespace tsrf_module_io
