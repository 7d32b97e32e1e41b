#include "results/patch_surf_temp.hpp"

#include <array>
#include <string_view>

#include "results/rows.hpp"

namespace tsrf_module_io {

namespace {

constexpr std::array<std::string_view, 6> kTerms{"surface temperature",  "long-wave radiosity",
                                                 "short-wave radiosity", "latent heat",
                                                 "conducted heat",       "area"};

}  // namespace

void write_patchsurftemp(frame::Log& log, frame::Crew& crew, frame::TextOutput& file,
                         const Settings& settings, When when, const tsrf_module_patch::Data& patch,
                         const PatchColumns& columns, FileStart& start) {
  if (!is_whole_hour(when.sod)) return;
  const std::int32_t hour = hour_slot(when.sod);
  start_file(log, file, "# PID, i, j, k, hour, Temp, Rad_L, Rad_S", settings, hour, start);
  const auto fill = [&](std::size_t p, Row& row) {
    row.integer(patch.PID[p], 8);
    row.integer(patch.i[p], 5);
    row.integer(patch.j[p], 5);
    row.integer(patch.k[p], 5);
    row.integer(hour, 3);
    row.real(columns.temperature[p] - columns.zero);
    row.real(columns.JRl.empty() ? 0.0 : columns.JRl[p]);
    row.real(columns.JRs.empty() ? 0.0 : columns.JRs[p]);
    row.real(columns.latent[p]);
    row.real(columns.conductive[p]);
    row.real(columns.area[p]);
  };
  if (const auto unsound = write_rows(log, crew, file, patch.PID.size(), fill)) {
    refuse_result(log, "PatchSurfTemp", when.iter, frame::items("PID =", patch.PID[unsound->line]),
                  kTerms[unsound->real]);
  }
  file.flush(log);
}

}  // namespace tsrf_module_io
