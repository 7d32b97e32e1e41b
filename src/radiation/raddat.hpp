// tsrf_module_raddat: what the exchange of radiation works on.
//
// The map from patches to patch groups (PatchIndex file), the table of view factors among groups
// (FormFactor file), the periodic pairs (PgidPrd file), the correction of areas, and the
// radiosities that are carried from step to step. Settings: group TSRF_RADDAT.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/code_index.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/patch.hpp"
#include "radiation/view_factor_panels.hpp"

namespace tsrf_module_raddat {

struct Settings {
  std::int32_t LCRADL = 1;   ///< > 0: long-wave exchange on
  std::int32_t LCRADS = 1;   ///< > 0: short-wave exchange on
  std::int32_t LOPREF = 10;  ///< sweeps a step
  std::int32_t LVFSKY = 0;   ///< > 0: FormFactor rows carry the sky
  std::int32_t LVFSWP = 0;   ///< > 0: rows are given in the reverse sense
};

struct Data {
  Settings settings;
  std::string settings_place;      ///< where their group stands, for the log
  std::int32_t NPGID = 0;          ///< number of groups
  std::vector<std::int32_t> pgx;   ///< per patch: its group, from 0
  std::vector<std::int32_t> PgID;  ///< per group: its identifier
  frame::CodeIndex pgmap;          ///< PgID -> group; emptied after reading
  ViewFactors view_factors;
  std::vector<std::pair<std::int32_t, std::int32_t>> prd;  ///< periodic pairs of groups
  std::vector<double> c;                                   ///< per group: area correction
  std::vector<double> JRl;  ///< per patch: long-wave radiosity [W/m2], 405 at first
  std::vector<double> JRs;  ///< per patch: short-wave radiosity [W/m2], 0 at first
};

/// Reads group TSRF_RADDAT.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// Reads the PatchIndex file: the group of every patch.
void read_lf2fr(frame::Log& log, frame::TextInput& file, const tsrf_module_patch::Data& patch,
                Data& data);
/// Reads the PgidPrd file; one without lines gives no pairs. Needs the groups of read_lf2fr.
void read_pgidprd(frame::Log& log, frame::TextInput& file, Data& data);
/// Reads the FormFactor file; `skyvf0` receives each patch's sky view factor. The last of the
/// readers: it drops `pgmap`.
void read_viewfactor(frame::Log& log, frame::Crew& crew, frame::TextInput& file,
                     const tsrf_module_patch::Data& patch, Data& data, std::vector<double>& skyvf0);
/// Takes the radiosity stores and the corrections, at their first values.
void allocdata01(frame::Log& log, std::int32_t mpatch, Data& data);
/// Sums of a value per patch over the patches of each group, in the order of patches.
std::vector<double> group_sums(const Data& data, std::span<const double> values);
/// The correction of areas: what a group receives through its view factors is scaled to the part
/// of its area that the sky leaves, so that a table whose rows were truncated still closes.
/// Patches whose group nothing sees get the whole sky.
void tsrf_set_rdata(frame::Log& log, const tsrf_module_patch::Data& patch, Data& data,
                    std::vector<double>& skyvf0);

/// Tells what the arrays take.
void list_arrays(const Data& data, frame::ArrayList& list);

}  // namespace tsrf_module_raddat
