#include <algorithm>
#include <filesystem>

#include "fault.hpp"
#include "flow/ambient.hpp"
#include "flow/density.hpp"
#include "flow/flow_run.hpp"
#include "flow/grid_tables.hpp"
#include "flow/input/control.hpp"
#include "flow/input/files.hpp"
#include "flow/output/flow_set.hpp"
#include "frame/whole_run.hpp"
#include "inputs/grid.hpp"
#include "run/input_files.hpp"

namespace townskin_view {

namespace {

namespace fs = std::filesystem;
constexpr double kZero = 273.15;
constexpr double kFilled = 1e-20;  // of a cell's volume

std::string path_in(const std::string& directory, const std::string& name) {
  return name.empty() ? std::string() : (fs::path(directory) / name).string();
}

flow::FileNames read_names(const std::string& directory) {
  const std::string path = path_in(directory, "flow_file_name");
  frame::TextInput table(path);
  if (!table.good()) throw Fault("cannot read " + path + ": " + table.reason());
  flow::FileNames names;
  std::string_view line;
  for (std::string& name : names) {
    if (!table.next_line(line)) break;
    name = line.substr(0, line.find_last_not_of(" \t\r") + 1);
  }
  return names;
}

/// Control data, grid and ambient air, as the program itself reads them.
void read_inputs(QuietLog& quiet, const flow::FileNames& names, FlowRun& run) {
  frame::TextInput control(path_in(run.directory, names[flow::kControl]));
  frame::TextInput grid_file(path_in(run.directory, names[flow::kGrid]));
  for (const frame::TextInput* file : {&control, &grid_file}) {
    if (!file->good()) throw Fault("cannot read " + file->name() + ": " + file->reason());
  }
  flow::Settings settings;
  const std::string fault = quiet.fault_of([&] {
    const frame::GridSize size = frame::read_grid_size(quiet.log, control);
    const flow::Triple cells{size.mx, size.my, size.mz};
    settings.control = flow::flw_read_cntdat(quiet.log, control, size.ns);
    settings.species = flow::flw_read_spcies(quiet.log, control, size.ns);
    settings.history = flow::flw_read_hstpnt(quiet.log, control, cells);
    settings.records = flow::read_short_records(quiet.log, control);
    settings.ambient = flow::ambient_state(quiet.log, settings.control, settings.species);
    const flow::GridTables grid = flow::flw_read_grid(quiet.log, grid_file, cells, false);
    for (std::size_t a = 0; a < 3; ++a) {
      for (std::int32_t n = 1; n <= cells[a] + 1; ++n) run.nodes[a].push_back(grid.axis[a].x(n));
      // An axis that is not computed has no gravity.
      if (cells[a] == 1) settings.control.gravity[a] = 0.0;
    }
    run.column = flow::state_column(settings, grid).slope;
  });
  if (!fault.empty()) throw Fault(run.directory + ": " + fault);
  run.molar_masses = settings.species.wm;
  run.pressure = settings.control.pp0;
}

void read_open(QuietLog& quiet, const std::string& path, FlowRun& run) {
  std::error_code error;
  if (path.empty() || !fs::is_regular_file(path, error)) return;
  frame::TextInput file(path);
  tsrf_main01::Porous porous;
  const tsrf_main01::Sizes sizes{static_cast<std::int32_t>(run.nodes[0].size()) - 1,
                                 static_cast<std::int32_t>(run.nodes[1].size()) - 1,
                                 static_cast<std::int32_t>(run.nodes[2].size()) - 1};
  const std::string fault =
      quiet.fault_of([&] { tsrf_main01::tsrf_dummyb(quiet.log, file, sizes, porous); });
  if (!fault.empty()) {
    run.notes.push_back("Open fractions are not known: " + fault + ".");
    return;
  }
  run.open.assign(run.cells(), 1.0);
  for (const tsrf_main01::PorousCell& cell : porous.cells) {
    const auto place = (static_cast<std::size_t>(cell.k - 1) * static_cast<std::size_t>(sizes[1]) +
                        static_cast<std::size_t>(cell.j - 1)) *
                           static_cast<std::size_t>(sizes[0]) +
                       static_cast<std::size_t>(cell.i - 1);
    run.open[place] = cell.fraction[0] < kFilled ? 0.0 : cell.fraction[0];
  }
}

double middle(const std::vector<double>& nodes, std::size_t n) {
  return 0.5 * (nodes[n] + nodes[n + 1]);
}

/// Velocities at the middles of cells: the mean flux of opposite faces over the density.
void take_velocity(const FlowRun& run, const flow::FlowSet& set, FlowFields& fields) {
  const std::array<std::size_t, 3> n{run.nodes[0].size() - 1, run.nodes[1].size() - 1,
                                     run.nodes[2].size() - 1};
  const std::size_t cells = run.cells();
  const double pt = set.has_pressure ? set.pressure[0] : run.pressure;
  fields.velocity.resize(3 * cells);
  std::size_t c = 0;
  std::array<std::size_t, 3> at{};
  for (at[2] = 0; at[2] < n[2]; ++at[2]) {
    for (at[1] = 0; at[1] < n[1]; ++at[1]) {
      for (at[0] = 0; at[0] < n[0]; ++at[0], ++c) {
        double moles = 0.0, pressure = pt;
        for (std::size_t s = 0; s < run.molar_masses.size(); ++s) {
          moles += set.ys[s * cells + c] / run.molar_masses[s];
        }
        for (std::size_t a = 0; a < 3; ++a) {
          pressure += run.column[a] * (middle(run.nodes[a], at[a]) - run.nodes[a][0]);
        }
        const double density = pressure / (flow::kGasConstant * set.t[c] * moles);
        for (std::size_t a = 0; a < 3; ++a) {
          std::array<std::size_t, 3> faces = n;
          ++faces[a];  // one more along its normal
          const std::size_t step = a == 0 ? 1 : a == 1 ? faces[0] : faces[0] * faces[1];
          const std::size_t below = (at[2] * faces[1] + at[1]) * faces[0] + at[0];
          fields.velocity[3 * c + a] = 0.5 * (set.ru[a][below] + set.ru[a][below + step]) / density;
        }
      }
    }
  }
}

FlowFields fields_of(const FlowRun& run, flow::FlowSet&& set) {
  FlowFields fields;
  const std::size_t cells = run.cells();
  fields.time = set.head.time;
  fields.iter = set.head.iter;
  take_velocity(run, set, fields);
  fields.pressure = std::move(set.p);
  fields.temperature = std::move(set.t);
  for (double& t : fields.temperature) t -= kZero;
  const auto part = [&](const std::vector<double>& values, std::size_t n) {
    const auto first = values.begin() + static_cast<std::ptrdiff_t>(n * cells);
    return std::vector<double>(first, first + static_cast<std::ptrdiff_t>(cells));
  };
  if (run.molar_masses.size() > 1) fields.species = part(set.ys, 1);
  if (!set.ak.empty()) {
    fields.energy = part(set.ak, 0);
    fields.dissipation = part(set.ak, 1);
  }
  return fields;
}

bool fits(const FlowRun& run, const flow::SetHead& head) {
  for (std::size_t a = 0; a < 3; ++a) {
    if (head.cells[a] != static_cast<std::int32_t>(run.nodes[a].size()) - 1) return false;
  }
  return head.ns == static_cast<std::int32_t>(run.molar_masses.size());
}

}  // namespace

bool is_flow_run(const std::string& directory) {
  std::error_code error;
  return fs::is_regular_file(path_in(directory, "flow_file_name"), error);
}

FlowRun read_flow_run(const std::string& directory) {
  FlowRun run;
  run.directory = directory;
  QuietLog quiet;
  const flow::FileNames names = read_names(directory);
  read_inputs(quiet, names, run);
  read_open(quiet, path_in(directory, names[flow::kPorous]), run);
  run.restart = path_in(directory, names[flow::kRestart]);
  run.inputs.push_back(path_in(directory, "flow_file_name"));
  for (const std::string& name : names) {
    if (!name.empty()) run.inputs.push_back(path_in(directory, name));
  }
  return run;
}

FlowSets read_flow_sets(const FlowRun& run, const std::function<void(const FlowFields&)>& take) {
  std::error_code error;
  FlowSets sets;
  if (run.restart.empty() || !fs::is_regular_file(run.restart, error)) return sets;
  using Found = flow::SetReader::Found;
  flow::SetReader reader(run.restart);
  for (;;) {
    flow::SetHead head;
    Found found = reader.next(head);
    if (found == Found::set && !fits(run, head)) found = Found::misfit;
    flow::FlowSet set;
    if (found == Found::set) {
      found = reader.rest(head, &set);
      set.head = head;
    }
    if (found == Found::end) return sets;
    if (found != Found::set) {
      sets.note = run.restart + " holds " + std::to_string(sets.count) +
                  (found == Found::cut ? " whole sets, the next is cut short"
                                       : " sets of this run, the next does not fit it");
      return sets;
    }
    take(fields_of(run, std::move(set)));
    ++sets.count;
  }
}

}  // namespace townskin_view
