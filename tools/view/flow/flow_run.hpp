// A flow run: its grid, and the sets of fields of its restart file, one at a time.
//
// townskin_flow leaves whole fields in its restart file only, a set for each output. They are read
// by the core's own reader, one after the other, so that a long file needs the memory of one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace townskin_view {

struct FlowRun {
  std::string directory;
  std::string restart;                       ///< path of the restart file
  std::array<std::vector<double>, 3> nodes;  ///< lines of the grid [m]
  std::vector<double> open;                  ///< open fraction of each cell; empty: all are open
  std::vector<double> molar_masses;          ///< of the species [kg/mol]
  double pressure = 0.0;                     ///< of the start, `pp0` [Pa]
  std::array<double, 3> column{};            ///< rate of the pressure in the density [Pa/m]
  std::vector<std::string> inputs;           ///< paths of the files that flow_file_name names
  std::vector<std::string> notes;

  [[nodiscard]] std::size_t cells() const {
    return (nodes[0].size() - 1) * (nodes[1].size() - 1) * (nodes[2].size() - 1);
  }
};

/// The fields of a set, x fastest.
struct FlowFields {
  double time = 0.0;  ///< [s]
  std::int32_t iter = 0;
  std::vector<double> temperature;          ///< [deg C]
  std::vector<double> pressure;             ///< [Pa]
  std::vector<double> velocity;             ///< three a cell [m/s]
  std::vector<double> species;              ///< mass fraction of the second; empty with one
  std::vector<double> energy, dissipation;  ///< empty without k and epsilon
};

/// True where the directory holds a flow run.
[[nodiscard]] bool is_flow_run(const std::string& directory);
/// Reads what stands around the fields. A fault tells what lacks.
[[nodiscard]] FlowRun read_flow_run(const std::string& directory);
/// How a restart file was read: its whole sets, and why it ended before its end (empty: it did
/// not).
struct FlowSets {
  std::size_t count = 0;
  std::string note;
};
/// Gives each whole set of the restart file to `take`.
FlowSets read_flow_sets(const FlowRun& run, const std::function<void(const FlowFields&)>& take);

}  // namespace townskin_view
