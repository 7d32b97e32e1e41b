// tsrf_module_radref: multiple reflection of short wave and exchange of long wave among groups.
//
// A fixed number of Jacobi sweeps over the view-factor table, on area-integrated powers of the
// groups of patches. Both bands go through one pass over the table, which is the largest structure
// of a run: its reading from memory is what a step costs. Called by rad_admin each step.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "frame/array_list.hpp"
#include "frame/crew.hpp"
#include "frame/instruction_set.hpp"
#include "radiation/raddat.hpp"

namespace tsrf_module_radref {

/// One band's problem, per patch; all fluxes in W/m2.
struct Band {
  std::span<const double> absorptivity;  ///< by row of the surface properties, 0..1
  std::span<const double> source;        ///< emitted flux
  std::span<double> radiosity;           ///< in: of the last step; out: of the patch's group
  std::span<double> incident;            ///< in: from sky and sun; out: total of the group
};

/// Arrays of one step, sized once.
struct Work {
  /// One value for each band of a group side by side, so that a gather touches one cache line.
  template <std::size_t Bands>
  using Powers = std::vector<std::array<double, Bands>>;
  template <std::size_t Bands>
  struct OfBands {
    Powers<Bands> absorptivity;
    Powers<Bands> source;    // S
    Powers<Bands> incident;  // E: from outside the exchange
    Powers<Bands> gathered;  // G
    Powers<Bands> J;         // radiosity before a sweep, by place (see view_factor_panels.hpp)
    Powers<Bands> J_next;    // and behind it

    /// What leaves group g behind the last sweep, and what left it before.
    [[nodiscard]] const std::array<double, Bands>& now(std::size_t g) const {
      return J[tsrf_module_raddat::place_of(g)];
    }
    [[nodiscard]] const std::array<double, Bands>& before(std::size_t g) const {
      return J_next[tsrf_module_raddat::place_of(g)];
    }
  };
  std::vector<double> area;  // A
  OfBands<1> one;
  OfBands<2> two;
  /// The patches of group g, in their order: members[first_member[g]] .. before first_member[g+1].
  std::vector<std::uint32_t> first_member;
  std::vector<std::uint32_t> members;
  /// Stretches of slices with about as many octets each, panel by panel: from cuts[n] to before
  /// cuts[n+1].
  std::vector<std::vector<std::uint32_t>> cuts;
  frame::InstructionSet set = frame::InstructionSet::common;

  /// Takes the arrays for the groups and the table of `raddat` and 1 or 2 bands at a time.
  void prepare(const tsrf_module_raddat::Data& raddat, std::size_t bands,
               frame::InstructionSet instruction_set = frame::widest_set());
};

/// Solves one band or two. `surface_row` and `area` are per patch. The sums keep the order of the
/// file for each group, so that the result of a band is the same bits alone and beside the other,
/// with any crew.
void tsrf_cal_radref(frame::Crew& crew, const tsrf_module_raddat::Data& raddat,
                     std::span<const std::int32_t> surface_row, std::span<const double> area,
                     std::span<const Band> bands, Work& work);

/// Tells what the arrays take.
void list_arrays(const Work& work, frame::ArrayList& list);

}  // namespace tsrf_module_radref
