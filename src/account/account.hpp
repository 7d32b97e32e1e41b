// tsrf_module_account: the energy account of a run, day by day.
//
// With LACCOUNT = 1 in group ACCOUNT of the control data a run writes what heat came, went and
// stayed, for all kinds of patches, rooms and trees, and how far each balance closes. The account
// takes part in nothing: it forms its terms from the temperatures and fluxes that a step leaves,
// by formulas of its own, and stored heat from temperatures alone, so that a fault in what moves
// them shows as a remainder. What the method itself does not close is formed by itself too and
// has terms of its own; docs/method.md names them.
//
// Owned by the run, empty unless it is asked for. The driver (driver/account_step) sets it up
// before the first step, notes what a step begins with, adds each step when it has ended, and
// closes days. Parts: patches (surfaces.cpp, columns.cpp), exchange.cpp, rooms.cpp, leaves.cpp; the
// statement of a day (statement.cpp).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "buildings/aircon.hpp"
#include "buildings/bldng.hpp"
#include "buildings/building.hpp"
#include "frame/array_list.hpp"
#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "frame/patch_table.hpp"
#include "frame/text_input.hpp"
#include "inputs/lyrstrct.hpp"
#include "inputs/matprp.hpp"
#include "inputs/patch.hpp"
#include "inputs/srfprp.hpp"
#include "radiation/phydat.hpp"
#include "radiation/raddat.hpp"
#include "radiation/radref.hpp"
#include "surface/surface_state.hpp"
#include "surface/window.hpp"
#include "trees/prep.hpp"

namespace tsrf_module_account {

/// Group ACCOUNT.
struct Settings {
  std::int32_t LACCOUNT = 0;  ///< 1: the account is written
};

/// Kinds of patches.
enum Kind : std::uint8_t {
  kGround,
  kWall,
  kRoof,
  kWindow,
  kWater,
  kPanel,
  kLeaves,  ///< faces of crowns
  kMirror,
  kFarBoundary,
  kOther,
  kKinds
};

/// What a patch has to do with heat.
enum class Role : std::uint8_t {
  balanced,  ///< it has a heat balance and a column
  held,      ///< its temperature is given: what it absorbs and emits is taken up by nothing
  dark,      ///< the same, and it emits nothing in the exchange
  leaves     ///< the canopy gives what leaves it
};

/// Sums by kind [J].
enum Flow : std::size_t {
  kBeam,              ///< of the sun, on patches that take it
  kSkyLight,          ///< scattered light of the sky
  kSkyLongwave,       ///< long wave of the sky
  kLight,             ///< all incident light, that of neighbours with it
  kLongwave,          ///< all incident long wave
  kAbsorbedLight,     ///< of it
  kAbsorbedLongwave,  ///< of it
  kEmission,          ///< at the temperatures that the step found
  kSource,            ///< what the exchange was given as emission or from leaves
  kSourceLight,       ///< light that the exchange was given from leaves
  kNextSource,        ///< long wave that leaves give the exchange of the next step
  kNextSourceLight,   ///< light that they give it
  kConvection,        ///< from the air
  kLatent,            ///< by condensation
  kConduction,        ///< from the first cell as it was before the step
  kImplicit,          ///< what implicit columns give beyond that: by the change of that cell
  kBehind,            ///< from the room into the column
  kBehindShift,       ///< what rooms get beyond that: by the change of explicit columns
  kGlassBeam,         ///< what the beam is in the cells of glass, as the columns take it
  kStored,            ///< in the column
  kFlows
};
using Flows = std::array<double, kFlows>;

/// Patches of a block that are of one kind and role, and whose columns go forward in one way.
struct Lot {
  std::uint32_t first, last;  ///< positions in `order`
  Kind kind;
  Role role;
  bool implicit;
};

/// A patch with something behind its last cell.
struct Backed {
  std::uint32_t patch;
  std::int32_t last;      ///< node of its last cell
  std::int32_t building;  ///< or -1
  Kind kind;
  bool implicit;
  double conductance;  ///< from the last cell on, over its area [W/K]
  double before;       ///< temperature of the last cell before the step [K]
};

/// A pane: shares of the beam that enters it.
struct Pane {
  std::uint32_t patch;
  std::int32_t building;
  double passed;   ///< goes on into the room
  double entered;  ///< what the column takes: the change over each cell times its thickness [m]
};

/// What one band of the exchange does with the light of a day, all groups [J].
struct Exchange {
  double to_sky = 0.0;  ///< leaves into the sky
  double table = 0.0;   ///< goes where the table of view factors has nobody
  double sweeps = 0.0;  ///< sent, but not yet received by the last sweep
};

/// Sums of rooms, slabs and plants [J].
enum RoomFlow : std::size_t {
  kWalls,           ///< from walls, roofs and panes to rooms
  kSun,             ///< through panes
  kInternal,        ///< sensible heat of use
  kVentilation,     ///< sensible
  kToSlabs,         ///< from rooms to slabs
  kSlabSun,         ///< of kSun, to slabs
  kSlabOutside,     ///< from the outside air to slabs
  kCooling,         ///< sensible heat that plants take out of rooms
  kRoomStored,      ///< in the air of rooms
  kSlabStored,      ///< in slabs
  kWallsUntaken,    ///< of kWalls, what rooms in free run do not take
  kTransmission,    ///< what they take by the overall transmission in its place
  kSunTwice,        ///< of kSlabSun, what is in the load too
  kSetPoint,        ///< stored by rooms that are put to their set point
  kInternalVapour,  ///< latent heat of use
  kVentilationVapour,
  kDrying,          ///< latent heat that plants take out of rooms
  kVapourUnheld,    ///< latent heat of rooms whose plant stands still
  kDrive,           ///< of the plants
  kReleased,        ///< given to the outside air, sensible
  kReleasedVapour,  ///< and latent
  kReleaseUnheld,   ///< to be given, but by no surface
  kRoomFlows
};

/// A building's share of its patches; what does not change.
struct House {
  double area = 0.0;                        ///< of its surfaces [m2]
  std::array<double, 3> area_pos{};         ///< of each position class [m2]
  double transmission = 0.0;                ///< [W/K]
  double slab = 0.0;                        ///< heat capacity of a storey's slab [J/K]
  double walls = 0.0;                       ///< of the step: heat from its walls [W]
  double sun = 0.0;                         ///< of the step: through its panes [W]
  double P = 0.0, T = 0.0;                  ///< of the step: air outside, times area
  double Tr_before = 0.0, Tm_before = 0.0;  ///< [K]
};

/// Sums of the canopy [J].
enum LeafFlow : std::size_t {
  kLeafBeam,      ///< what leaves take out of the beam
  kFacesLight,    ///< by faces that take their light from others' patches or from the sky
  kFacesArea,     ///< by the difference of faces and their patches in area
  kLeafLight,     ///< absorbed by leaves
  kLightRelaxed,  ///< light that the sweeps among cells leave on its way
  kFacesLongwave,
  kFacesAreaLongwave,
  kLeafLongwave,  ///< net
  kLongwaveRelaxed,
  kLeafSensible,  ///< from the air
  kLeafLatent,
  kLeafSearch,  ///< what the last round of the search for leaf temperatures moves
  kLeafFlows
};

/// Sums of a stretch of patches or groups that one hand adds.
struct Block {
  std::size_t first_lot = 0, last_lot = 0;
  std::array<Flows, kKinds> flows{};
};

struct Data {
  Settings settings;
  std::string settings_place;  ///< where the group stands, for the log

  // What does not change in a run.
  std::vector<std::uint32_t> order;     ///< patches by lots
  std::vector<Lot> lots;                ///< by blocks
  std::vector<Block> blocks;            ///< of lots, with the sums of the day
  std::array<double, kKinds> area{};    ///< [m2]
  std::array<double, kKinds> sky{};     ///< area times sky view factor [m2]
  std::array<bool, kKinds> balanced{};  ///< some patch has a balance
  double plan = 0.0;                    ///< ground, roofs and water seen from above [m2]
  std::vector<double> group_sky;        ///< per group: sky view factor
  std::vector<double> group_sent;       ///< per group: share of its power that others receive
  std::vector<Backed> backed;
  std::vector<Pane> panes;
  std::vector<std::uint32_t> leaf_patches;

  // What the step began with.
  std::vector<double> T0, T1;    ///< per patch: surface and first cell [K]
  std::vector<double> JRl, JRs;  ///< per patch of leaves [W/m2]
  std::vector<House> houses;     ///< per building

  // The day so far.
  bool open = false;
  double from = 0.0;                              ///< model time of its first step [s]
  double seconds = 0.0;                           ///< that are added
  frame::PatchTable<double> start;                ///< temperatures of all nodes at `from` [K]
  std::array<Flows, kKinds> flows{};              ///< what blocks do not hold
  std::vector<std::array<Exchange, 2>> exchange;  ///< per block of groups: long wave, light
  std::array<double, kRoomFlows> rooms{};
  std::array<double, kLeafFlows> leaves{};
  std::vector<std::array<double, kLeafFlows>> leaf_blocks;
  double floor_area = 0.0;  ///< of all storeys [m2]
  double leaf_area = 0.0;   ///< one side [m2]

  [[nodiscard]] bool on() const { return settings.LACCOUNT == 1; }
};

/// Patches or groups of a block: what one hand adds at a time, in the order of blocks whatever the
/// number of hands.
inline constexpr std::size_t kBlock = 4096;

/// Reads group ACCOUNT.
void inputdata(frame::Log& log, frame::TextInput& control, Data& data);
/// Everything added is 0 again: a day ends.
void clear(Data& data);
/// Sum over the blocks of a flow by kind [J].
[[nodiscard]] double total(const Data& data, Kind kind, Flow flow);

/// Tells what the arrays take.
void list_arrays(const Data& data, frame::ArrayList& list);

}  // namespace tsrf_module_account
