// Tries a written run: the surface model itself reads all files and takes a few steps.
#pragma once

#include <string>
#include <vector>

#include "run/run_data.hpp"

namespace townskin_case {

/// What the model said of a run, and what the whole of it will take.
struct Trial {
  std::vector<std::string> warnings;  ///< lines of the log that begin "%%% warning"
  double least_correction = 1.0, largest_correction = 1.0;  ///< of the rows of view factors
  double memory = 0.0;                                      ///< [bytes]
  double seconds = 0.0;                                     ///< of processor time, for all steps
};

/// Runs the model in the directory and leaves the directory as it was written. A run that the model
/// refuses is a fault with the model's own words.
Trial try_run(const RunData& run, const std::string& directory);

}  // namespace townskin_case
