// The run: one of each module's data, and the frame that all of them report and read through.
//
// Owned by the main program, walked through by the driver (tsrf_main01) and the step
// (tsrf_admin). It stands in parts, one a floor of the source; a routine of the driver receives the
// parts that it needs and hands on just the modules that a lower routine names. Nothing of a run
// lives anywhere else, so several runs can go side by side in one process.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <utility>
#include <vector>

#include "account/account.hpp"
#include "buildings/aircon.hpp"
#include "buildings/bldcmm.hpp"
#include "buildings/bldng.hpp"
#include "buildings/building.hpp"
#include "buildings/rmheat.hpp"
#include "driver/filnam.hpp"
#include "driver/progress.hpp"
#include "driver/rad_admin.hpp"
#include "frame/accounts.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "frame/process_layer.hpp"
#include "frame/unit_table.hpp"
#include "frame/whole_run.hpp"
#include "inputs/calendar.hpp"
#include "inputs/grid.hpp"
#include "inputs/grid_index.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/matprp.hpp"
#include "inputs/patch.hpp"
#include "inputs/srfprp.hpp"
#include "inputs/weather.hpp"
#include "inputs/wtrtmp.hpp"
#include "radiation/phydat.hpp"
#include "radiation/raddat.hpp"
#include "radiation/shade.hpp"
#include "results/bld_load.hpp"
#include "results/io.hpp"
#include "results/monthly.hpp"
#include "results/patch_surf_temp.hpp"
#include "results/sun_sky.hpp"
#include "results/surf_temp.hpp"
#include "surface/conduction.hpp"
#include "surface/fixed_temperature.hpp"
#include "surface/surface_state.hpp"
#include "surface/window.hpp"
#include "trees/prep.hpp"

namespace tsrf_main01 {

/// What the fixed lines of the control data tell the surface model.
struct ControlLines {
  std::int32_t iters = 0;         ///< iteration to resume after, or negative
  std::int32_t itere = 0;         ///< last iteration
  double dtsafe = 0.0;            ///< read and dropped
  double dtmax = 0.0;             ///< time step [s]
  double molar_mass_air = 0.0;    ///< [kg/mol]
  double molar_mass_water = 0.0;  ///< [kg/mol]
};

/// What every routine reports, reads and writes through.
struct Desk {
  frame::Log& log;
  frame::UnitTable& units;
  frame::ProcessLayer& layer;
  frame::Crew& crew;
  frame::Accounts accounts;
  std::ostream* terminal = nullptr;  ///< where one updating line shows how far the run is
};

/// What the files tell, and the series through time that stand at the present step.
struct Inputs {
  frame::GridSize size;
  ControlLines control;
  Grid grid;
  Porous porous;
  ubx_module_filnam::Data filnam;
  tsrf_module_calendar::Data calendar;
  tsrf_module_grdindx::Data grdindx;
  tsrf_module_patch::Data patch;
  tsrf_module_srfprp::Data srfprp;
  tsrf_module_matprp::Data matprp;
  tsrf_module_lyrstrct::Data lyrstrct;
  tsrf_module_weather::Data weather;
  tsrf_module_wtrtmp::Data wtrtmp;
};

/// The state of the patches and their columns.
struct Surface {
  tsrf_module_data::Data data;
  tsrf_module_fixtmp::Data fixtmp;
  tsrf_window::Glass glass;          ///< none without buildings
  frame::PatchTable<double> qlayer;  ///< mzg rows: heat absorbed in the cells; empty without glass
  solid1d::Work columns;
};

/// Radiation of the step on each patch; sized once at the start.
struct Incident {
  std::vector<double> fsun;   ///< sunlit fraction
  std::vector<double> skyvf;  ///< working copy of the sky view factor
  std::vector<double> Rl;     ///< incident long-wave [W/m2]
  std::vector<double> Rs;     ///< incident short-wave [W/m2]
  std::vector<double> Jdir;   ///< direct flux on the patch plane [W/m2]
};

/// Sun, sky, shade and the exchange among the patches.
struct Radiation {
  tsrf_module_phydat::Data phydat;
  tsrf_module_raddat::Data raddat;
  tsrf_module_shade::Data shade;
  tsrf_module_phydat::SkyFluxes sky;  ///< of the step
  Incident incident;
  rad_admin::Work work;
};

struct Buildings {
  tsrf_module_bldng::Data bldng;
  tsrf_module_bldcmm::Data bldcmm;
  tsrf_module_rmheat::Data rmheat;
  tsrf_module_aircon::Data aircon;
  tsrf_building::Work rooms;

  [[nodiscard]] bool on() const { return bldng.settings.LCBLD > 0; }
};

/// The result files: what their writers remember and, in a dated run, the sums of the month.
struct Results {
  tsrf_module_io::Data io;
  tsrf_module_io::SurfTemp surf_temp;
  tsrf_module_io::BldLoad bld_load;
  tsrf_module_io::FileStart heat;
  tsrf_module_io::FileStart patch_surf_temp;
  tsrf_module_io::FileStart sun_sky;
  tsrf_module_io::Monthly monthly;
};

/// One part a floor.
struct Run {
  explicit Run(Desk run_desk) : desk(std::move(run_desk)) {}

  Desk desk;
  Inputs inputs;
  Surface surface;
  Radiation radiation;
  jmk::Trees trees;
  Buildings buildings;
  Results results;
  tsrf_module_account::Data account;
  progress::Data progress;
};

}  // namespace tsrf_main01
