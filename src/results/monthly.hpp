// Mean days of a dated run: results gathered by hour of the day and written month by month.
//
// Each step adds its values into the hour that it ends; when a month closes the 24 mean hours go
// through the line writers into that month's files. The sums are taken at first use and cleared
// after each month's output; they are not part of a run's restart state, so a run that resumes
// within a month has the means of the rest of it. The step calls the add routines, the driver
// calls output_month.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "frame/array_list.hpp"
#include "frame/patch_table.hpp"
#include "frame/unit_table.hpp"
#include "inputs/calendar.hpp"
#include "inputs/patch.hpp"
#include "results/bld_load.hpp"
#include "results/heat.hpp"
#include "results/io.hpp"
#include "results/surf_temp.hpp"

namespace tsrf_module_io {

using HourCounts = std::array<std::int32_t, kHours>;

/// Sums of the patches' surface temperature.
struct TemperatureSums {
  HourCounts count{};
  frame::PatchTable<double> degC;  ///< 24 rows
};
/// Sums of the patches' further columns; the last, the area, needs no sum.
struct FluxSums {
  HourCounts count{};
  frame::PatchTable<double> JRl, JRs;            ///< 24 rows [W/m2]
  frame::PatchTable<double> latent, conductive;  ///< 24 rows [W/m2]
};
/// Sums of the cells' heat transfer.
struct CellFieldSums {
  HourCounts count{};
  frame::PatchTable<CellSums> tdrg;  ///< 24 rows, a value per cell
};
/// Sums of the buildings' budgets and temperatures and of what they release into the cells.
struct BuildingSums {
  HourCounts count{};
  frame::PatchTable<Budget> bldat;  ///< 24 rows, a value per building [W]
  frame::PatchTable<double> Tr, Tm;
  frame::PatchTable<CellHeat> released;  ///< 24 rows, a value per cell [W]
};

struct Monthly {
  TemperatureSums temperature;
  FluxSums fluxes;
  CellFieldSums cells;
  BuildingSums buildings;
  std::int32_t month = 0;          ///< the month of the sums; 0: no step yet
  std::int32_t written_month = 0;  ///< the month whose files were written last; 0: none
};

/// Before the step: surface temperatures [K] and, where they are stored, radiosities (else empty).
void add_temperatures(frame::Log& log, std::int32_t sod1, std::span<const double> surface,
                      std::span<const double> JRl, std::span<const double> JRs, Monthly& monthly);
/// After the step: rows 5 and 6 of qsurf.
void add_fluxes(frame::Log& log, std::int32_t sod1, std::span<const double> latent,
                std::span<const double> conductive, Monthly& monthly);
/// After the step: the cells' sums of sum_surftemp.
void add_cells(frame::Log& log, std::int32_t sod1, std::span<const CellSums> tdrg,
               Monthly& monthly);
/// After the buildings' step: their values and the cells' sums of sum_bldload.
void add_buildings(frame::Log& log, std::int32_t sod1, const BuildingColumns& buildings,
                   std::span<const CellHeat> released, Monthly& monthly);

void clear(TemperatureSums& sums);
void clear(FluxSums& sums);
void clear(CellFieldSums& sums);
void clear(BuildingSums& sums);

/// Where a month's mean days go.
struct MonthFiles {
  frame::TextOutput& surf_temp;
  frame::TextOutput& patch_surf_temp;
  frame::TextOutput& heat;
  frame::TextOutput& bld_load;
  frame::TextInput& stheat;
};

/// What the rows are of.
struct MonthRows {
  const Settings& settings;
  const tsrf_module_patch::Data& patch;
  const BuildingColumns* buildings;  ///< BldID, floor and area; null: the building model is off
  SurfTemp& surf_temp;
  BldLoad& bld_load;
  std::int64_t iter = 0;  ///< number of the step that closes the month
};

/// Writes the 24 mean hours, each file from its start, and clears the sums. An hour without a step
/// is a row of zeros. Without buildings heat and BldLoad stay as they are.
void write_month(frame::Log& log, frame::Crew& crew, const MonthFiles& files, const MonthRows& rows,
                 Monthly& monthly);

/// Tells what the arrays take.
void list_arrays(const Monthly& monthly, frame::ArrayList& list);

}  // namespace tsrf_module_io
