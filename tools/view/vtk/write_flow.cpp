#include <array>
#include <cstdio>

#include "vtk/vtk_file.hpp"
#include "vtk/write_vtk.hpp"

namespace townskin_view {

namespace {

constexpr std::uint8_t kHidden = 32;  // what VTK knows as a cell that is not shown

std::string numbered(std::size_t n) {
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "flow_%03zu.vtr", n);
  return text.data();
}

/// Which cells are filled by buildings.
std::vector<std::uint8_t> hidden(const FlowRun& run) {
  std::vector<std::uint8_t> flags;
  for (const double open : run.open) flags.push_back(open > 0.0 ? 0 : kHidden);
  return flags;
}

VtkPart cell_data(const FlowRun& run, const FlowFields& fields,
                  std::span<const std::uint8_t> flags) {
  VtkPart part{"CellData", " Scalars=\"flow_air_temperature\" Vectors=\"air_velocity\"", {}};
  const auto add = [&](std::string_view name, std::span<const double> values, std::size_t parts) {
    if (values.empty()) return;
    part.arrays.push_back(vtk_array(std::string(name), values, parts, quantity(name).shown_units));
  };
  add("air_velocity", fields.velocity, 3);
  add("flow_air_temperature", fields.temperature, 1);
  add("flow_pressure", fields.pressure, 1);
  add("flow_species", fields.species, 1);
  add("turbulent_energy", fields.energy, 1);
  add("turbulent_dissipation", fields.dissipation, 1);
  add("open_fraction", run.open, 1);
  if (!flags.empty()) part.arrays.push_back(vtk_array("vtkGhostType", flags));
  return part;
}

}  // namespace

FlowSets write_vtk_flow(const FlowRun& run, const std::string& folder, Stage& stage) {
  const std::vector<std::uint8_t> flags = hidden(run);
  VtkFile file;
  file.type = "RectilinearGrid";
  std::string extent;
  VtkPart lines{"Coordinates", "", {}};
  for (std::size_t a = 0; a < 3; ++a) {
    extent += (a == 0 ? "0 " : " 0 ") + std::to_string(run.nodes[a].size() - 1);
    lines.arrays.push_back(vtk_array(std::string(1, "xyz"[a]), run.nodes[a], 1, "m"));
  }
  file.whole_attributes = " WholeExtent=\"" + extent + "\"";
  file.piece_attributes = " Extent=\"" + extent + "\"";
  std::vector<VtkTime> times;
  FlowSets sets = read_flow_sets(run, [&](const FlowFields& fields) {
    file.time = fields.time;
    file.parts = {cell_data(run, fields, flags), lines};
    times.push_back({file.time, numbered(times.size() + 1)});
    write_vtk(file, stage.file(folder + "/" + times.back().file));
  });
  if (sets.count > 0) write_pvd(times, stage.file(folder + "/flow.pvd"));
  return sets;
}

}  // namespace townskin_view
