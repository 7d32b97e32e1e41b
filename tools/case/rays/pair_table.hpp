// The exchange between pairs of groups, A_i F_ij, the same both ways: made from the counts of rays.
//
// Called by view_factors behind the rays; the balance then scales it.
#pragma once

#include <cstdint>
#include <vector>

#include "rays/ray_counts.hpp"

namespace townskin_case {

/// A symmetric table by rows: the partners of group i stand at start[i] .. start[i+1]-1, by rising
/// number.
struct PairTable {
  std::vector<std::size_t> start;
  std::vector<std::int32_t> to;
  std::vector<double> exchange;  ///< A_i F_ij [m2]
  std::vector<double> cut;       ///< by group, the exchange of the pairs that were cut [m2]
};

/// Joins what i sent to j with what j sent to i. Both estimate the same A_i F_ij, with a variance
/// that grows as the area from which a ray sets out; weighted so, the estimate is all rays between
/// the two over the sum of their rays per area. Takes the rows of `counts` and leaves them empty.
///
/// Of each group the `partners` largest pairs are kept, together with those that are among the
/// largest of the other one: what is cut is small for both. Pairs with `far` are never cut.
PairTable join_pairs(RayCounts& counts, const std::vector<double>& area, std::size_t partners,
                     std::int32_t far, unsigned threads);

}  // namespace townskin_case
