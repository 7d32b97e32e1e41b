// tsrf_module_jumoku: the canopy of cells, meeting point of the surfaces and the trees.
//
// The fine grid divides each cell of the surfaces' grid NDIV x NDIV in plan and keeps its layers. A
// coarse cell with leaves anywhere in it is a canopy block; light is followed through all fine
// cells of the blocks, leafless ones too. Everything here that belongs to a cell stands in one list
// of these block cells, in the order k, j, i; what belongs to a face stands by (cell, face), faces
// numbered 0 to 5 as -x +x -y +y -z +z, which is one less than the BndC of a tree patch there.
//
// Set up once at the start (jmk2_prep_init); the arrays then live to the end of the run, and no
// step takes memory. Beam: trees/beam_sweep.hpp. Scattered light and long wave: trees/difrad.hpp.
// Leaf temperatures: trees/leaf_balance.hpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/log.hpp"
#include "inputs/grid.hpp"
#include "inputs/patch.hpp"
#include "trees/jmk_data.hpp"
#include "trees/jumoku_settings.hpp"
#include "trees/radiat.hpp"
#include "trees/scattering.hpp"

namespace tsrf_module_jumoku {

/// Indices i, j, k of a cell.
using Place = std::array<std::int32_t, 3>;

inline constexpr std::size_t kFaces = 6;
constexpr std::size_t axis_of(std::size_t face) { return face / 2; }
constexpr std::size_t opposite(std::size_t face) { return face ^ 1U; }
constexpr std::int32_t outward(std::size_t face) { return face % 2 == 0 ? -1 : 1; }
/// Slot of a face in the arrays by (cell, face).
constexpr std::size_t slot(std::size_t cell, std::size_t face) { return cell * kFaces + face; }

/// A value for each of the two solar bands.
using SolarPair = std::array<double, jmk_module_radiat::kSolarBands>;
/// The same of two beams, the free one and that in the canopy.
struct alignas(32) FourFractions : std::array<double, 2 * jmk_module_radiat::kSolarBands> {};

/// The fine grid, as high as leaves reach.
struct FineGrid {
  std::int32_t NDIV = 1;
  std::array<std::int32_t, 3> cells{};       ///< along x, y, z
  std::array<std::vector<double>, 3> width;  ///< of fine cells along each axis, from 0 [m]

  [[nodiscard]] std::size_t row(std::int32_t j, std::int32_t k) const {
    return static_cast<std::size_t>(k) * static_cast<std::size_t>(cells[1]) +
           static_cast<std::size_t>(j);
  }
  /// Width of a fine cell along an axis [m].
  [[nodiscard]] double size(const Place& place, std::size_t axis) const {
    return width[axis][static_cast<std::size_t>(place[axis])];
  }
  /// Area of its faces normal to an axis [m2].
  [[nodiscard]] double face_area(const Place& place, std::size_t axis) const {
    return size(place, (axis + 1) % 3) * size(place, (axis + 2) % 3);
  }
};

/// The fine cells of the canopy blocks, in the order k, j, i.
struct BlockCells {
  std::vector<Place> at;                ///< fine indices i, j, k from 0
  std::vector<std::int32_t> row_first;  ///< by row (j, k): its first cell
  std::vector<std::int32_t> leaf;       ///< position among the leaf cells, or -1
  /// By (cell, face): the slot that a flux which leaves the cell there enters next. Behind the
  /// slots of the cells come those of the outer faces.
  std::vector<std::int32_t> next;

  [[nodiscard]] std::size_t count() const { return at.size(); }
  /// Position of the fine cell (i, j, k), or -1 where it is in no block.
  [[nodiscard]] std::int32_t find(const FineGrid& grid, const Place& place) const;
  /// True where a face of a cell borders free air.
  [[nodiscard]] bool is_outer(std::size_t cell, std::size_t face) const {
    return static_cast<std::size_t>(next[slot(cell, face)]) >= count() * kFaces;
  }
};

/// Cells of one density and size.
struct Kind {
  double lad = 0.0;
  std::array<double, 3> width{};
};

/// A face between a block cell and free air.
struct OuterFace {
  std::int32_t cell;
  std::int32_t face;
  double area;              ///< [m2]
  std::int32_t tree = -1;   ///< the tree patch on it (position among the tree patches)
  std::int32_t group = -1;  ///< else: tree patches on other parts of the same coarse face

  /// The slot by which light from outside enters the cell.
  [[nodiscard]] std::size_t entry() const {
    return slot(static_cast<std::size_t>(cell), static_cast<std::size_t>(face));
  }
};

/// A patch of type 2: it covers one fine face of a block's surface.
struct TreePatch {
  std::int32_t patch;  ///< position in the list of patches
  std::int32_t outer;  ///< the outer face that it covers
};

/// Tree patches that share a coarse face: a stretch of `group_trees`.
struct FaceGroup {
  std::int32_t first, last;
  double area;  ///< of its patches [m2]
};

/// The first tree patch that does not fit the blocks.
struct PatchFault {
  enum Kind : std::uint8_t { none, out_of_range, no_outer_face };
  Kind kind = none;
  std::int32_t patch = 0;
};

/// One band of the exchange among block cells. Fluxes are powers [W].
struct BandFluxes {
  std::vector<jmk::CellWeights> weights;  ///< by kind of cell
  std::vector<double> source;             ///< by cell: light that starts in it, into all directions
  std::vector<double> entering;  ///< by slot: into a cell by a face; last, out of the canopy
  std::vector<double> outside;   ///< by outer face: what comes in from outside
  double total = 0.0;            ///< all that came in and started when `entering` was found
};

/// A patch of another type whose beam the leaves may thin: where on the face stores it lies.
struct BeamProbe {
  std::int32_t patch;
  std::int32_t axis;
  Place at;                       ///< coarse cell; along `axis`, the coarse face
  std::int32_t seen;              ///< its first fine face in `seen`, in the order j, i
  std::int32_t parts_i, parts_j;  ///< fine faces along x and y
};

/// What a sweep asks of a block cell.
struct BeamCell {
  std::int32_t column;
  std::int32_t leaf;  ///< position among the leaf cells, or -1
  std::int32_t kind;
  std::int32_t borders_air;  ///< 1 where a face of the cell is an outer one
};

/// A fine face of a probe by which the beam leaves a cell.
struct BeamFace {
  std::int32_t column;  ///< of the cell
  std::int32_t axis;
  std::int32_t seen;
};

/// The direct beam (trees/sundir.hpp).
struct Beam {
  // Work of a sweep (trees/beam_cells.hpp): what is left of both beams on the faces on its way.
  std::vector<FourFractions> x;       ///< by row (j, k)
  std::vector<FourFractions> y;       ///< by layer and column
  std::vector<FourFractions> z;       ///< by column
  std::vector<std::int32_t> reached;  ///< by row (j, k): first cell on the way that is not free
  std::vector<BeamCell> cells;        ///< the block cells
  std::vector<FourFractions> passed;  ///< by kind of cell: what its leaves let pass
  std::vector<double> fsun;           ///< by slot: sunlit fraction of the outer face

  std::vector<BeamProbe> probes;
  std::vector<BeamFace> faces;              ///< those of the probes, by row (j, k) and column
  std::vector<std::int32_t> face_first;     ///< by row: its first face
  std::array<std::int32_t, 2> faces_for{};  ///< steps of the beam along x and y that they stand for
  std::vector<SolarPair> seen;  ///< by probe and fine face: what is left of the free beam

  bool swept = false;  ///< in this run
  // Results of the last sweep.
  std::vector<SolarPair> outer;   ///< by outer face: what is left of the beam in the canopy
  std::vector<SolarPair> lost;    ///< by leaf cell: what leaves took out of it [W]
  std::vector<double> tree_Jdir;  ///< by tree patch [W/m2]
  std::vector<double> left;       ///< by patch: what leaves left of its beam, 0 to 1
};

/// Leaf cells: state, air and balance, by leaf cell.
struct Leaves {
  std::vector<std::int32_t> cell;       ///< its block cell
  std::vector<double> lad;              ///< [m2/m3]
  std::vector<double> volume;           ///< [m3]
  std::vector<double> T;                ///< leaf temperature [K], kept from step to step
  std::vector<double> p, Ta, q, U;      ///< air: pressure, temperature, humidity, wind
  bool calm_told = false;               ///< the log has warned of calm air
  std::vector<double> PAR;              ///< absorbed visible light per leaf area [W/m2]
  std::vector<double> Sabs, Labs;       ///< absorbed short and net long wave [W]
  std::vector<double> h, e, qs, dqsdT;  ///< transfer coefficients
  std::vector<double> E, dEdT;          ///< emission per volume and sense, and its slope
  std::vector<double> escaping;         ///< of what starts in the cell as long wave: leaves it

  [[nodiscard]] std::size_t count() const { return cell.size(); }
};

struct Data {
  Settings settings;
  FineGrid grid;
  BlockCells cells;
  std::vector<OuterFace> outer;
  std::vector<TreePatch> trees;
  std::vector<FaceGroup> groups;
  std::vector<std::int32_t> group_trees;  ///< tree patches, those of a coarse face together
  PatchFault fault;
  std::vector<std::int32_t> kind;  ///< by cell: cells of one size and density are of one kind
  std::vector<Kind> kinds;
  std::array<BandFluxes, jmk_module_radiat::kBands> bands;
  Beam beam;
  Leaves leaves;

  [[nodiscard]] const jmk::CellWeights& weights(const BandFluxes& band, std::size_t cell) const {
    return band.weights[static_cast<std::size_t>(kind[cell])];
  }
};

/// The order of cells: k, j, i.
bool in_order(const Place& a, const Place& b);

/// Lays the fine grid over the grid of the surfaces and makes the lists of block cells, leaf cells
/// and outer faces. Needs the coordinates of the grid. A tree patch that does not fit the blocks is
/// noted and told by the first step; the lists then stay empty.
void set_grid(frame::Log& log, const tsrf_main01::Grid& surfaces,
              const jmk_module_data::Data& cells, const tsrf_module_patch::Data& patch, Data& data);

/// The first of the tree patches that covers no outer face of its own; a log that collects is told
/// of all. `layers` are those of the surfaces' grid, `blocks` the coarse cells with leaves, in
/// order.
PatchFault fault_of(frame::Log& log, const tsrf_module_patch::Data& patch, const FineGrid& grid,
                    std::int32_t layers, const std::vector<Place>& blocks);

/// Finds the faces that the tree patches cover and the places of the other patches in the beam.
void place_patches(const tsrf_module_patch::Data& patch, Data& data);

/// Warns of outer faces that no tree patch joins to the exchange of the district.
void warn_of_bare_faces(frame::Log& log, const Data& data);

/// Takes the arrays of the steps.
void allocdata(std::size_t mpatch, Data& data);

/// Takes the leaf area density of each leaf cell [m2/m3] and all that follows from it; also after
/// each month's reading.
void set_lad(std::span<const double> lad, const jmk_module_radiat::Data& radiat, Data& data);

/// The air that all leaves stand in during the coming step.
void storetqair(double p, double T, double q, double U, Data& data);

/// Tells the fault of the tree patches, if there is one.
void check02(frame::Log& log, const tsrf_module_patch::Data& patch, const Data& data);

/// Tells what the arrays take.
void list_arrays(const Data& data, frame::ArrayList& list);

}  // namespace tsrf_module_jumoku
