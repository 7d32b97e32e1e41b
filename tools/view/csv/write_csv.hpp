// A run as tidy tables: one row an observation, one column a quantity, names and units in the head.
//
// patches.csv, buildings.csv and leaf_cells.csv tell what is there; patch_hours.csv,
// building_hours.csv, cell_hours.csv and weather.csv what came out, a row a place and hour. A
// missing value is an empty field. Numbers have the digits of the run's own files.
#pragma once

#include <string>

#include "run/run_model.hpp"
#include "stage.hpp"

namespace townskin_view {

void write_csv(const RunModel& run, const std::string& folder, Stage& stage);

}  // namespace townskin_view
