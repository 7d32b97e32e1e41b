// What stays the same during a run, as the terms of an equation receive it.
#pragma once

#include "flow/grid_tables.hpp"
#include "flow/metrics.hpp"
#include "flow/rim.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "flow/urban/urban.hpp"
#include "frame/crew.hpp"

namespace flow {

/// Views on the run, which outlives them.
struct Domain {
  const Settings& settings;
  const GridTables& grid;
  const Metrics& metrics;
  const Boundary& boundary;
  const Rim& rim;
  const Openings& openings;
  const Urban& urban;
  frame::Crew& crew;  ///< shares the loops over the box
};

}  // namespace flow
