// The air around the city for townskin_flow: a grid that reaches far enough, and the wind that
// comes.
//
// Made once for a run; the writers of Grid, Porous and control, which both programs read, and of
// the flow's own files take it from here.
#pragma once

#include "report.hpp"
#include "scene/scene.hpp"
#include "site/site.hpp"
#include "weather/wind.hpp"

namespace townskin_case {

/// Law of the wind over rough land: u = friction/kappa ln((z + roughness)/roughness), with k and
/// epsilon in balance (Richards and Hoxey 1993).
struct WindLaw {
  double friction = 0.0, roughness = 1.0;  ///< [m/s], [m]

  [[nodiscard]] double speed(double z) const;
  [[nodiscard]] double energy() const;        ///< k [m2/s2]
  [[nodiscard]] double loss(double z) const;  ///< epsilon [m2/s3]
};

struct FlowSetup {
  /// Of the whole grid. The district's cells lie in it behind `before` others along x and y; above
  /// and around it cells grow by a fifth from one to the next.
  std::array<std::vector<double>, 3> nodes;
  std::array<std::int32_t, 2> before{}, behind{};
  Station station;
  WindLaw wind;
  /// Where the wind blows to in the cells' frame, length 1; a part that is nearly none is 0.
  double along_x = 1.0, along_y = 0.0;
};

/// From the weather of the hour. What the weather does not tell is told in the report.
FlowSetup flow_setup(const Site& site, const Scene& scene, const Days& days, Report& report);

}  // namespace townskin_case
