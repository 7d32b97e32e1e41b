// Rows that close: the exchange of pairs is scaled until each group gives off all of what it has.
//
// Called by view_factors between the pairs and the factors that are written.
#pragma once

#include <vector>

#include "rays/pair_table.hpp"

namespace townskin_case {

struct Balance {
  int sweeps = 0;
  double before = 0.0;  ///< largest gap in the rows as the rays left them, as a share of the area
  double on_itself = 0.0;  ///< largest share of a group that is left to itself in the end
};

/// Scales the table to d_i A_i F_ij d_j so that the row of each group sums to `target` [m2], by
/// coordinate descent of the convex function whose minimum that is: each d in turn is set so that
/// its row closes (Sinkhorn 1967, symmetric). A negative target leaves a row free, its d at 1.
///
/// Scales stay below 100, so that a row that does not fit its partners' cannot draw all of theirs
/// to itself. Where no such scaling exists, or not within the sweeps, rows are lowered to their
/// target and what lacks is given to the group itself, which exchanges nothing with itself; so also
/// where a group has no partner. The table stays the same both ways.
Balance balance(PairTable& table, const std::vector<double>& area,
                const std::vector<double>& target);

}  // namespace townskin_case
