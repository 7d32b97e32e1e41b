// flw_module_dc1: the table of sub-domains, and who gives what to whose halos.
//
// What a halo entry holds follows from its numbers along x, y and z one by one: along each of them
// it lies in the grid, beyond a periodic end (y), or beyond an end that repeats or mirrors the
// cells before it. So all that one domain gives to another is told by three short lists, one a
// direction, and mklist is nothing but those. Boxes may meet in any way: also one cell thick, or
// with corners that stand on another's side.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "flow/domains/domains.hpp"
#include "flow/halo.hpp"
#include "frame/log.hpp"

namespace flow::flw_module_dc1 {

/// One record of the domain file.
struct Record {
  std::int32_t rank = 0;
  Triple first{}, last{};
  std::string place;  ///< what the log says of it: file and line
};

/// Ends the run with "### program error -0-" when `count` domains are not one a process; `place`
/// is told before it.
void check_count(frame::Log& log, const std::string& place, std::int32_t count,
                 std::int32_t nprocs);
/// The records in the order of their ranks. Ends the run with "### program error -1-" when a rank
/// is missing, twice there or out of range, "-2-" when a box is empty or outside the grid, "-3-"
/// when two meet or cells are left over.
SubDomains make_table(frame::Log& log, const Triple& cells, const std::vector<Record>& records);

/// An entry of a receiver's box along one direction, halos included, and the giver's cell (or face)
/// that it takes; in the numbers of the whole grid.
struct Link {
  std::int32_t entry, source;
  bool turned;             ///< mirrored: a component along this direction changes its sign
  std::int32_t depth = 0;  ///< of the entry beyond the receiver's own; 0 within them
};
/// What a partner gives: all entries that the links along x, y and z combine to.
struct Partner {
  std::int32_t rank = 0;
  std::array<std::vector<Link>, 3> along;

  [[nodiscard]] std::int64_t count() const;
};

/// The faces of an axis; kCells: the cells.
using FaceAxis = int;
inline constexpr FaceAxis kCells = -1;

/// What `giver` gives to `receiver`; nothing when a direction has no link. A process gives to its
/// own halos too, and then its own entries are among those combined.
Partner given(const SubDomains& domains, const Ends& ends, std::int32_t receiver,
              std::int32_t giver, FaceAxis faces = kCells);
/// All partners that give to the halos of a process, by rank, itself included.
std::vector<Partner> mklist(const SubDomains& domains, const Ends& ends, std::int32_t receiver,
                            FaceAxis faces = kCells);

}  // namespace flow::flw_module_dc1
