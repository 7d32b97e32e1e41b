#include "flow/urban/mkofrac.hpp"

#include "flow/halo.hpp"
#include "flow/urban/chkdat.hpp"
#include "flow/urban/porous.hpp"
#include "frame/namelist.hpp"
#include "inputs/grid_index.hpp"

namespace flow {

namespace {

/// Reads a group and goes back to where the records stand.
void read_group(frame::Log& log, frame::TextInput& control, frame::Group&& group) {
  const std::size_t place = control.tell();
  group.read(log, control);
  control.seek(place);
}

std::array<std::int32_t, 2> grid_offset(frame::Log& log, frame::TextInput& control) {
  tsrf_module_grdindx::Data index;
  const std::size_t place = control.tell();
  tsrf_module_grdindx::inputdata(log, control, 1, 1, index);
  control.seek(place);
  return {index.ox, index.oy};
}

/// Tells what the cells of a table take at each hour: `value` of a cell, times its volume.
template <class Value>
void tell_sums(frame::Log& log, const GridTables& grid, const HourTable& table,
               std::string_view title, Value&& value) {
  const Box& box = grid.box;
  for (std::size_t h = 0; h < table.hours.size(); ++h) {
    double sum = 0.0;
    for (std::size_t c = 0; c < table.cells.size(); ++c) {
      const std::size_t place = table.cells[c];
      const auto index = [&](int axis) {
        const std::size_t across = place / box.stride(axis) % box.extent(axis);
        return static_cast<std::int32_t>(across) - kHalo + 1;
      };
      sum += value(table.at_hour(h)[c]) * grid.volume(index(0), index(1), index(2));
    }
    log.line("%%% sum of heat (" + std::string(title) + ", hour", table.hours[h], ") [W] =", sum);
  }
}

void read_surfaces(frame::Log& log, frame::TextInput& control, frame::TextInput& file,
                   const Settings& settings, const GridTables& grid, const Boundary& boundary,
                   const Openings& openings, HourTable& tdrg) {
  const auto rows = kpc_read_surftemp(log, file, grid.box, grid_offset(log, control));
  tdrg = kpc_chkdat(log, grid, boundary, openings, {.title = "SurfTemp data"}, rows);
  const double air = settings.control.ambient.t;
  tell_sums(log, grid, tdrg, "surfaces to air of tamb",
            [air](const CityValues& value) { return value[1] - value[0] * air; });
}

void read_buildings(frame::Log& log, frame::TextInput& file, const GridTables& grid,
                    const Boundary& boundary, const Openings& openings, HourTable& heat) {
  const auto rows = kpc_read_heat(log, file, grid.box);
  heat = kpc_chkdat(log, grid, boundary, openings,
                    {.title = "BldLoad data", .per_volume = true, .adds_up = true}, rows);
  tell_sums(log, grid, heat, "buildings, sensible",
            [](const CityValues& value) { return value[0]; });
  tell_sums(log, grid, heat, "buildings, latent", [](const CityValues& value) { return value[1]; });
}

void keep_leaves_in_air(frame::Log& log, const Openings& openings, Field& adrg) {
  std::int32_t filled = 0;
  for (std::size_t c = 0; c < adrg.all().size(); ++c) {
    if (openings.gmc[c] >= kClosedFace || adrg[c] == 0.0) continue;
    adrg[c] = 0.0;
    ++filled;
  }
  if (filled > 0) log.warn("LAD data has leaves in cells that are not fluid ; cells =", filled);
}

}  // namespace

double kcp_inputdata(frame::Log& log, frame::TextInput& control) {
  const frame::Tag tag(log, "(kcp_module_data)(inputdata)");
  double TIME0 = 0.0;
  read_group(log, control,
             frame::Group("KPC_DATA", {{"TIME0", TIME0, frame::not_negative("time0 =", TIME0)}}));
  return TIME0;
}

bool wants_fractions(frame::Log& log, frame::TextInput& control) {
  const frame::Tag tag(log, "(flw_module_fv)   (inputdata)");
  std::int32_t LVFRAC = 0;
  read_group(log, control, frame::Group("VFRAC", {{"LVFRAC", LVFRAC}}));
  return LVFRAC != 0;
}

Openings mkofrac(frame::Log& log, frame::TextInput& control, const CityFiles& files,
                 const Settings& settings, const GridTables& grid, const Boundary& boundary,
                 Urban& urban) {
  const frame::Tag tag(log, "(flw_module_fv)   (mkofrac)");
  Openings openings;
  frame::allocating(log, "open fractions", frame::bytes_of<double>(grid.box.size(), 5),
                    [&] { openings = Openings(grid.box); });
  if (files.porous != nullptr) {
    kpc_read_porous(log, *files.porous, settings.records, boundary, openings);
  }
  if (files.surftemp != nullptr) {
    read_surfaces(log, control, *files.surftemp, settings, grid, boundary, openings, urban.tdrg);
  }
  if (files.lad != nullptr) {
    urban.adrg = kpc_read_lad(log, *files.lad, grid.box);
    keep_leaves_in_air(log, openings, urban.adrg);
    fill_halos(urban.adrg, boundary.ends);
  }
  if (files.bldload != nullptr) {
    read_buildings(log, *files.bldload, grid, boundary, openings, urban.heat);
  }
  return openings;
}

}  // namespace flow
