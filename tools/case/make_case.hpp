// The whole way from the user's words to a run directory.
#pragma once

#include <functional>
#include <iosfwd>

#include "report.hpp"
#include "scene/scene.hpp"
#include "site/options.hpp"

namespace townskin_case {

/// How the city is cut: cut_city of cut.hpp.
using Cut = std::function<Scene(const City&, const Site&, Report&)>;

/// Where the tool talks: the summary goes to the screen, the line of progress to a terminal (null:
/// nowhere).
struct Voices {
  std::ostream& screen;
  std::ostream* terminal = nullptr;
};

/// Makes the run. Whatever cannot be done is a Fault, and then nothing is left on the disk.
void make_case(const Options& options, const Cut& cut, Report& report, const Voices& voices);

}  // namespace townskin_case
