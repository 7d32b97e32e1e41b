// The rows of the surface model's result files, as the flow reads them.
//
// A row names a cell and an hour. Readers check what a row says by itself; kpc_chkdat then puts the
// rows onto the fluid cells of the grid. Used by the start-up only (mkofrac).
#pragma once

#include <string_view>
#include <vector>

#include "flow/box.hpp"
#include "flow/urban/urban.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"

namespace flow {

struct CityRow {
  Triple cell{};
  std::int32_t hour = 0;
  CityValues value{};
};
using CityRows = std::vector<CityRow>;

/// To be called behind each record that is read: warns of the first that takes more than one line,
/// mostly because a field is missing and is taken from the next.
void warn_if_ran_on(frame::Log& log, const frame::TextInput& file, std::string_view title,
                    bool& told);

/// kpc_read_surftemp: `i j k hour tdrg(1:3)` behind a title line, sums over the surfaces of a cell
/// [W/K, W, W/K]. The file's i and j are less by `offset` than those of the grid (group DUMMYGRID
/// of the surface model). Errors: a data error with file and line for a cell outside the grid, an
/// hour below 0, a coefficient below 0 and surfaces that are not above 0 K.
CityRows kpc_read_surftemp(frame::Log& log, frame::TextInput& file, const Box& box,
                           const std::array<std::int32_t, 2>& offset);

/// kpc_read_heat: BldLoad, `I J K Hr VclSens VclLant BldSens BldLant` behind a title line [W/m3];
/// further lines that begin with # are passed over. The value of a row is the sensible and the
/// latent heat of both kinds. Errors: as above for cell and hour.
CityRows kpc_read_heat(frame::Log& log, frame::TextInput& file, const Box& box);

/// kpc_read_lad: `i j k` and leaf area density [m2/m3] behind a title line; rows of one cell add
/// up. Returns adrg of all cells, 0.5 * 0.2 * density: leaves have a drag coefficient of 0.2.
/// Errors: as above for the cell, and for a density below 0.
Field kpc_read_lad(frame::Log& log, frame::TextInput& file, const Box& box);

}  // namespace flow
