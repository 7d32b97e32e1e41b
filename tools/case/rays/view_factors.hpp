// View factors between the groups of a scene, and to the sky, by rays.
//
// From each group rays set out as often as the cosine to its normal is large, from points spread
// over its faces (ray_counts); what goes both ways between two groups is joined (pair_table) and
// scaled until all rows close (balance). The program calls this once; writers and the summary read
// it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rays/parallel.hpp"
#include "rays/ray_scene.hpp"

namespace townskin_case {

struct RaySettings {
  std::uint32_t rays = 1024;  ///< of each group; powers of two are spread best
  std::uint64_t seed = 1;
  std::size_t partners = 256;  ///< that each group keeps, at least 1; see join_pairs
  unsigned threads = 0;        ///< 0: one for each processor
};

/// What the rays met and how far the rows were from closing.
struct RaySummary {
  std::uint64_t rays = 0;
  std::uint64_t below = 0;        ///< left the scene below the horizon, to the far boundary
  std::uint64_t inside = 0;       ///< started inside a wall or below the ground; they do not count
  std::uint64_t in_crown = 0;     ///< started inside a crown: they see its face from within
  std::size_t groups_inside = 0;  ///< groups of which at least half the rays started inside a wall
  std::size_t bare = 0;           ///< groups without a triangle or a ray that counts
  double sky_error = 0.0;         ///< standard error of the sky's share: root mean square by area
  double largest_sky_error = 0.0;
  double cut = 0.0;  ///< share of what groups exchange in the pairs that were cut: mean by area
  double largest_cut = 0.0;
  double unbalanced = 0.0;  ///< largest gap of a row before the balance, cut pairs included
  int sweeps = 0;           ///< of the balance
  double on_itself = 0.0;   ///< largest share that could not be balanced and is left to the group
  double closure = 0.0;     ///< largest gap of a row as it is written
};

/// The summary in words, a line each; what was not met with is left out.
std::vector<std::string> lines_of(const RaySummary& summary);

/// The partners of each group in rows: those of group i stand at start[i] .. start[i+1]-1, by
/// rising number. Factors are rounded to the nine digits with which they are written.
struct ViewFactors {
  std::vector<std::size_t> start;
  std::vector<std::int32_t> to;
  std::vector<double> factor;  ///< share of what group i gives off that reaches `to`
  std::vector<double> sky;     ///< and that reaches the sky, by group
  std::vector<double> error;   ///< standard error of the sky's share, by group
  /// Of each group [m2]. It is the scene's but for a far boundary without triangles: that takes at
  /// least twice what it exchanges with the district, so that half of what it sees is sky.
  std::vector<double> area;
  RaySummary summary;
};

/// A group of type far without triangles is the far boundary: it meets all rays that leave below
/// the horizon, and what it does not give to the district goes to the sky. Without one such rays
/// count as the sky's.
ViewFactors view_factors(const Scene& scene, const RayScene& ray_scene, const RaySettings& settings,
                         const Progress& progress = {});

}  // namespace townskin_case
