// The run of the flow solver: what its files told, and the fields that a step works on.
//
// Built up by the driver (flw_main01) in the order of the start-up and handed whole to the step;
// an operator receives just the parts that its header names. Nothing of a run lives anywhere else.
#pragma once

#include "flow/boundary.hpp"
#include "flow/domains/domains.hpp"
#include "flow/grid_tables.hpp"
#include "flow/settings.hpp"
#include "flow/state.hpp"
#include "flow/step_work.hpp"
#include "flow/urban/urban.hpp"
#include "frame/crew.hpp"

namespace flow {

struct Run {
  explicit Run(frame::Hands hands = {}) : crew(hands) {}

  frame::Crew crew;  ///< shares the loops of the step
  Settings settings;
  GridTables grid;
  SubDomains domains;
  Boundary boundary;
  BoundaryFaces faces;
  Openings openings;
  Urban urban;
  State state;
  StepWork work;
};

}  // namespace flow
