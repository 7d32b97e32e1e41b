// A run directory as its readers have it: what was modelled, and what came out so far.
//
// read_run fills it from the inputs, by the core's own readers, and from whatever results stand
// there: of a run that goes on, was cut short or is finished, of a day that repeats or of months.
// What is lacking leaves its part empty and a note in words. All forms of output (page, NetCDF,
// VTK, CSV, --why) work on it and on nothing else.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fault.hpp"
#include "frame/code_index.hpp"
#include "run/field.hpp"

namespace townskin_view {

/// What a patch is, from its type and, of a building's surface, the position of its material.
enum class Kind : std::uint8_t {
  roof,
  wall,
  window,
  ground,
  water,
  leaves,
  solar_panel,
  mirror,
  far_boundary,
  other,
};
inline constexpr std::size_t kKinds = 10;
/// In words: "roof", "solar panel", ...
[[nodiscard]] std::string_view name_of(Kind kind);

/// One layer of a material, from outside to inside.
struct Layer {
  std::int32_t SurfCD = 0;
  double thickness = 0.0;      ///< [m]
  double conductivity = 0.0;   ///< [W/m K]
  double heat_capacity = 0.0;  ///< per volume [J/m3 K]
};
struct Material {
  std::int32_t surfid = 0;
  double albedo = 0.0, emissivity = 0.0, wetness = 0.0;  ///< of the outermost layer, first month
  std::vector<Layer> layers;
};

/// Patches in the order of the Patch and TreePatch files; each list has one entry a patch.
struct Patches {
  std::vector<std::int32_t> PID;
  std::vector<Kind> kind;
  std::vector<std::int32_t> building;  ///< position in `buildings`, -1 for none
  std::vector<std::int32_t> BldID;     ///< as the file has it
  std::vector<std::int32_t> SurfID;    ///< as the file has it; of leaves the number of the face
  std::vector<std::int32_t> material;  ///< position in `materials`, -1 for none
  std::vector<std::array<std::int32_t, 3>> cell;  ///< i, j, k as the file has them
  std::vector<double> area;                       ///< [m2]
  std::vector<std::array<double, 3>> normal;      ///< outward: x east, y north, z up
  std::vector<std::int32_t> group;                ///< of the exchange of radiation, from 0
  std::vector<std::int32_t> surface_row;          ///< of the properties that are in force
  std::vector<std::uint8_t> balanced;  ///< 1 where a heat balance is solved (ground, buildings)

  [[nodiscard]] std::size_t size() const { return PID.size(); }
};

/// The outlines of all patches. A patch has none (far boundary), one or several rings; a hole
/// follows the outer ring that it lies in. Outer rings turn left seen from the side that the
/// normal points to, holes turn right.
struct Shapes {
  struct Ring {
    std::uint32_t first = 0;  ///< point in `xyz` / 3
    std::uint32_t count = 0;
    bool hole = false;
  };
  bool true_shapes = false;  ///< from geometry.txt; else rectangles of the patches' areas at the
                             ///< faces of their cells
  std::vector<double> xyz;   ///< x, y, z of each point [m]
  std::vector<Ring> rings;
  std::vector<std::uint32_t> first_ring;  ///< per patch, and one more

  [[nodiscard]] std::span<const Ring> of(std::size_t patch) const {
    return std::span(rings).subspan(first_ring[patch], first_ring[patch + 1] - first_ring[patch]);
  }
};

/// Lines of the grid [m]; empty axes where the Grid file has no coordinates.
struct Grid {
  std::array<std::int32_t, 3> cells{};
  std::array<std::vector<double>, 3> nodes;
  std::array<std::int32_t, 2> offset{};  ///< of the district in the grid, cells (DUMMYGRID)
  std::int32_t leaf_division = 1;        ///< tree cells to a cell along x and along y
};

/// An hour of results.
struct Hour {
  std::string text;        ///< "14 h", "day 2, 14 h", "August, 14 h"
  std::int32_t month = 0;  ///< 0: a day that repeats
  std::int32_t day = 1;    ///< counted from 1 in a file that holds several days, else 1
  std::int32_t hour = 0;   ///< 1 to 24
  double hours = 0.0;      ///< since the start of the first day, or since 1 January of `year`
};

struct Building {
  std::int32_t BldID = 0, use = 0, construction = 0, floors = 0;
  double floor_area = 0.0;  ///< of a storey [m2]
  double conditioned = 0.0;
  double cop = 0.0;
};

/// A cell with surfaces, by its place in the grid (offsets included, k counted from 1).
struct Cell {
  std::int32_t i = 0, j = 0, k = 0;
};

/// A group of patches that a patch receives radiation from.
struct Partner {
  std::int32_t patch = 0;    ///< the largest patch of the group
  double view_factor = 0.0;  ///< from the receiving group to this one, corrected as in the model
};

/// Values of surface properties in a month (the one month of a day that repeats).
struct Properties {
  std::int32_t month = 0;
  std::vector<double> albedo, emissivity, wetness;  ///< by Patches::surface_row
};

/// Where the sun stands at an hour and what comes from above.
struct Sky {
  std::array<double, 3> sun{};  ///< unit vector to the sun; dated runs: 0
  double direct = 0.0;          ///< on a plane that faces the sun [W/m2]
  double scattered = 0.0, longwave = 0.0;
  double air = 0.0;  ///< [deg C]
};

struct RunModel {
  std::string directory;            ///< as the user gave it
  std::string name;                 ///< last part of its full path
  std::vector<std::string> inputs;  ///< paths of all input files, in the order of file_name
  bool dated = false;
  std::int32_t year = 0;  ///< of a dated run's DATE0
  double latitude = 0.0, longitude = 0.0;
  /// True north in the plan of the run: a unit vector along x, y.
  std::array<double, 2> north{0.0, 1.0};
  double step = 0.0;        ///< [s]
  double convection = 0.0;  ///< coefficient outside [W/m2 K]
  bool has_leaves = false;  ///< a canopy of cells dims the light
  bool finished = false;    ///< the progress record tells an end

  Patches patches;
  Shapes shapes;
  Grid grid;
  std::vector<Material> materials;
  std::vector<Properties> properties;
  std::vector<Building> buildings;
  std::vector<Cell> cells;
  std::vector<Cell> leaf_cells;  ///< in the finer cells of trees
  std::vector<Hour> hours;
  std::vector<Sky> sky;       ///< per hour
  std::vector<Field> fields;  ///< in the order of the registry

  /// Partners of the exchange of radiation, the greatest view factor first, at most five a group.
  /// Filled by read_run where `Wanted::partners` asks for them; else empty.
  std::vector<Partner> partners;
  std::vector<std::uint32_t> first_partner;  ///< per group, and one more

  /// Patches by group, those of group g from first_member[g] to first_member[g + 1].
  std::vector<std::int32_t> members;
  std::vector<std::uint32_t> first_member;
  std::vector<Partner> all_partners;  ///< of the patch that `Wanted` names

  /// What is lacking, or differs from what a reader would expect, in whole sentences.
  std::vector<std::string> notes;

  frame::CodeIndex by_PID;  ///< PID -> position

  /// The field of a name; nullptr where the run has none.
  [[nodiscard]] const Field* field(std::string_view name) const;
  /// Position of a patch; -1 for a PID that is not there.
  [[nodiscard]] std::int64_t find_patch(std::int64_t PID) const;
  [[nodiscard]] std::span<const Partner> partners_of(std::size_t patch) const {
    if (first_partner.empty()) return {};
    const auto g = static_cast<std::size_t>(patches.group[patch]);
    return std::span(partners).subspan(first_partner[g], first_partner[g + 1] - first_partner[g]);
  }
  /// The patches of the group of a patch, itself among them.
  [[nodiscard]] std::span<const std::int32_t> group_of(std::size_t patch) const {
    const auto g = static_cast<std::size_t>(patches.group[patch]);
    return std::span(members).subspan(first_member[g], first_member[g + 1] - first_member[g]);
  }
  /// Albedo, emissivity and wetness of a patch at an hour.
  [[nodiscard]] double albedo(std::size_t patch, std::size_t hour) const;
  [[nodiscard]] double emissivity(std::size_t patch, std::size_t hour) const;
  [[nodiscard]] double wetness(std::size_t patch, std::size_t hour) const;
};

/// What of a run is to be read. Patches, shapes, buildings and notes always are.
struct Wanted {
  bool results = true;    ///< the fields
  bool cells = true;      ///< the fields of cells, from SurfTemp and BldLoad
  bool radiation = true;  ///< sky view and sunlit fractions, and what is derived from them
  bool partners = false;  ///< of each group, from the file of view factors
  std::optional<std::int32_t> all_partners_of{};  ///< PID of a patch whose partners are all wanted
};

/// Reads the run in `directory`. A directory that is none of a run, or whose patches cannot be
/// read, is a Fault with the reason.
[[nodiscard]] RunModel read_run(const std::string& directory, const Wanted& wanted);

/// What a partner gives to a patch at an hour: the part that the patch absorbs [W/m2]. The patches
/// of a group send out alike, but for leaves: there the mean of the group counts.
struct Gift {
  double longwave = 0.0, shortwave = 0.0;
};
[[nodiscard]] Gift gift_of(const RunModel& run, std::size_t patch, const Partner& partner,
                           std::size_t hour);

}  // namespace townskin_view
