#include "results/monthly.hpp"

#include <algorithm>

#include "results/patch_surf_temp.hpp"

namespace tsrf_module_io {

namespace {

/// Takes a table of 24 rows at its first use.
template <class T>
void take(frame::Log& log, std::size_t columns, frame::PatchTable<T>& table) {
  if (table.patches() == columns && !table.all().empty()) return;
  frame::allocating(log, "sums of 24 hours", frame::bytes_of<T>(columns, kHours), [&] {
    table = frame::PatchTable<T>(static_cast<std::int32_t>(columns), kHours);
  });
}

void add(double& sum, double value) { sum += value; }
template <std::size_t N>
void add(std::array<double, N>& sum, const std::array<double, N>& value) {
  for (std::size_t n = 0; n < N; ++n) sum[n] += value[n];
}

void divide(double& sum, double count) { sum /= count; }
template <std::size_t N>
void divide(std::array<double, N>& sum, double count) {
  for (double& value : sum) value /= count;
}

/// Adds one step's values to row `row`.
template <class T>
void add_to(frame::Log& log, std::int32_t row, std::span<const T> values,
            frame::PatchTable<T>& table) {
  take(log, values.size(), table);
  const std::span<T> sums = table.row(row);
  for (std::size_t n = 0; n < values.size(); ++n) add(sums[n], values[n]);
}

template <class T>
void clear_table(frame::PatchTable<T>& table) {
  std::fill(table.all().begin(), table.all().end(), T{});
}

/// Turns the sums of a row into means, in place; an hour without a step has the mean 0.
template <class T>
std::span<const T> mean(const HourCounts& count, std::int32_t row, frame::PatchTable<T>& table) {
  if (table.all().empty()) return {};
  const double steps = std::max(count[static_cast<std::size_t>(row)], 1);
  for (T& sum : table.row(row)) divide(sum, steps);
  return table.row(row);
}

std::int32_t row_of(std::int32_t sod) { return hour_slot(sod) - 1; }
std::int32_t& count_of(HourCounts& count, std::int32_t row) {
  return count[static_cast<std::size_t>(row)];
}

/// The end of the hour of row `row`, as the step `iter` writes it.
When hour_of(std::int32_t row, std::int64_t iter) { return {(row + 1) * kSecondsPerHour, iter}; }

void write_patches(frame::Log& log, frame::Crew& crew, const MonthRows& rows,
                   frame::TextOutput& file, Monthly& monthly) {
  const tsrf_module_patch::Data& patch = rows.patch;
  TemperatureSums& temperature = monthly.temperature;
  FluxSums& fluxes = monthly.fluxes;
  take(log, patch.PID.size(), temperature.degC);
  take(log, patch.PID.size(), fluxes.latent);
  take(log, patch.PID.size(), fluxes.conductive);
  FileStart start;
  for (std::int32_t row = 0; row < kHours; ++row) {
    PatchColumns means{.temperature = mean(temperature.count, row, temperature.degC),
                       .zero = 0.0,
                       .JRl = mean(fluxes.count, row, fluxes.JRl),
                       .JRs = mean(fluxes.count, row, fluxes.JRs),
                       .latent = mean(fluxes.count, row, fluxes.latent),
                       .conductive = mean(fluxes.count, row, fluxes.conductive),
                       .area = patch.area};
    // The mean area of no steps is 0 as well.
    if (count_of(fluxes.count, row) == 0) means.area = means.latent;
    write_patchsurftemp(log, crew, file, rows.settings, hour_of(row, rows.iter), patch, means,
                        start);
  }
}

void write_cells(frame::Log& log, frame::Crew& crew, const MonthRows& rows, frame::TextOutput& file,
                 CellFieldSums& sums) {
  SurfTemp& surf_temp = rows.surf_temp;
  take(log, surf_temp.cells.size(), sums.tdrg);
  surf_temp.start = {};
  for (std::int32_t row = 0; row < kHours; ++row) {
    const std::span<const CellSums> tdrg = mean(sums.count, row, sums.tdrg);
    const bool none = count_of(sums.count, row) == 0;
    write_surftemp(log, crew, file, rows.settings, hour_of(row, rows.iter), tdrg,
                   none ? tdrg : std::span<const CellSums>(surf_temp.swlr), surf_temp);
  }
}

void write_buildings(frame::Log& log, const MonthRows& rows, const MonthFiles& files,
                     BuildingSums& sums) {
  const BuildingColumns& buildings = *rows.buildings;
  BldLoad& bld_load = rows.bld_load;
  take(log, buildings.BldID.size(), sums.bldat);
  take(log, buildings.BldID.size(), sums.Tr);
  take(log, buildings.BldID.size(), sums.Tm);
  take(log, bld_load.cells.size(), sums.released);
  FileStart start;
  bld_load.start = {};
  for (std::int32_t row = 0; row < kHours; ++row) {
    const When when = hour_of(row, rows.iter);
    BuildingColumns means = buildings;
    means.bldat = mean(sums.count, row, sums.bldat);
    means.Tr = mean(sums.count, row, sums.Tr);
    means.Tm = mean(sums.count, row, sums.Tm);
    if (count_of(sums.count, row) == 0) {  // 0 deg C, as all else is 0
      std::ranges::fill(sums.Tr.row(row), kCelsius);
      std::ranges::fill(sums.Tm.row(row), kCelsius);
    }
    write_heat(log, files.heat, rows.settings, when, means, start);
    write_bldload(log, files.bld_load, files.stheat, rows.settings, when,
                  mean(sums.count, row, sums.released), bld_load);
  }
}

}  // namespace

void add_temperatures(frame::Log& log, std::int32_t sod1, std::span<const double> surface,
                      std::span<const double> JRl, std::span<const double> JRs, Monthly& monthly) {
  const std::int32_t row = row_of(sod1);
  take(log, surface.size(), monthly.temperature.degC);
  const std::span<double> sums = monthly.temperature.degC.row(row);
  for (std::size_t p = 0; p < surface.size(); ++p) sums[p] += surface[p] - kCelsius;
  ++count_of(monthly.temperature.count, row);
  if (JRl.empty()) return;
  add_to(log, row, JRl, monthly.fluxes.JRl);
  add_to(log, row, JRs, monthly.fluxes.JRs);
}

void add_fluxes(frame::Log& log, std::int32_t sod1, std::span<const double> latent,
                std::span<const double> conductive, Monthly& monthly) {
  const std::int32_t row = row_of(sod1);
  add_to(log, row, latent, monthly.fluxes.latent);
  add_to(log, row, conductive, monthly.fluxes.conductive);
  ++count_of(monthly.fluxes.count, row);
}

void add_cells(frame::Log& log, std::int32_t sod1, std::span<const CellSums> tdrg,
               Monthly& monthly) {
  const std::int32_t row = row_of(sod1);
  add_to(log, row, tdrg, monthly.cells.tdrg);
  ++count_of(monthly.cells.count, row);
}

void add_buildings(frame::Log& log, std::int32_t sod1, const BuildingColumns& buildings,
                   std::span<const CellHeat> released, Monthly& monthly) {
  const std::int32_t row = row_of(sod1);
  add_to(log, row, buildings.bldat, monthly.buildings.bldat);
  add_to(log, row, buildings.Tr, monthly.buildings.Tr);
  add_to(log, row, buildings.Tm, monthly.buildings.Tm);
  add_to(log, row, released, monthly.buildings.released);
  ++count_of(monthly.buildings.count, row);
}

void clear(TemperatureSums& sums) {
  sums.count = {};
  clear_table(sums.degC);
}

void clear(FluxSums& sums) {
  sums.count = {};
  for (auto* table : {&sums.JRl, &sums.JRs, &sums.latent, &sums.conductive}) clear_table(*table);
}

void clear(CellFieldSums& sums) {
  sums.count = {};
  clear_table(sums.tdrg);
}

void clear(BuildingSums& sums) {
  sums.count = {};
  clear_table(sums.bldat);
  clear_table(sums.Tr);
  clear_table(sums.Tm);
  clear_table(sums.released);
}

void write_month(frame::Log& log, frame::Crew& crew, const MonthFiles& files, const MonthRows& rows,
                 Monthly& monthly) {
  write_cells(log, crew, rows, files.surf_temp, monthly.cells);
  write_patches(log, crew, rows, files.patch_surf_temp, monthly);
  if (rows.buildings != nullptr) {
    write_buildings(log, rows, files, monthly.buildings);
  }
  clear(monthly.temperature);
  clear(monthly.fluxes);
  clear(monthly.cells);
  clear(monthly.buildings);
}

void list_arrays(const Monthly& monthly, frame::ArrayList& list) {
  list.add("sums of the month: degC", monthly.temperature.degC);
  list.add("sums of the month: JRl,JRs", monthly.fluxes.JRl, monthly.fluxes.JRs);
  list.add("sums of the month: fluxes", monthly.fluxes.latent, monthly.fluxes.conductive);
  list.add("sums of the month: cells", monthly.cells.tdrg, monthly.buildings.released);
  list.add("sums of the month: buildings", monthly.buildings.bldat, monthly.buildings.Tr,
           monthly.buildings.Tm);
}

}  // namespace tsrf_module_io
