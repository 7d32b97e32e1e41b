// How the units of a dated series lie in time: the interval that is usual in the file, and whether
// its dates fill the cycle in which they repeat.
//
// A file that lacks lines, or ends a line early or late, is read all the same; what stands here
// lets the series (dated_series.hpp) warn of it.
#pragma once

#include <optional>
#include <vector>

#include "inputs/calendar.hpp"

namespace dated_series {

struct Spacing {
  double usual = 0.0;    ///< the middle one of the intervals [s]; 0: fewer than two units
  bool regular = false;  ///< at least half of two or more intervals are the usual one
};
/// From the intervals between successive units of a file [s].
Spacing spacing_of(std::vector<double> intervals);

/// What the dates of a file fill of its cycle.
struct Misfit {
  double filled;  ///< from the first unit to one usual interval behind the last [s]
  double cycle;   ///< after which the file repeats [s]
};
/// The misfit of a regular file that is all but a whole day, month or year (or more of them), yet
/// not its own cycle. None for a file that is plainly a part of its cycle: a few days of a month.
std::optional<Misfit> misfit(const Spacing& spacing, const tsrf_module_calendar::Date& first,
                             const tsrf_module_calendar::Date& last);

}  // namespace dated_series
