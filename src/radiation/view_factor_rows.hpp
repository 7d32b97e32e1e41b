// Lines of the FormFactor file, parsed by all hands.
//
// The file is cut into pieces at line ends, which the hands parse side by side into rows of group
// positions; the caller takes the pieces in their order, so that every sum and table is that of one
// hand. Only plain lines are taken: five plain numbers on one line, groups that are known, a factor
// in its range. What is anything else, a fault above all, is left to the reader of records, which
// goes on from there. Used by read_viewfactor.
#pragma once

#include <cstdint>
#include <vector>

#include "frame/crew.hpp"
#include "frame/function_ref.hpp"
#include "frame/text_input.hpp"
#include "radiation/raddat.hpp"

namespace tsrf_module_raddat {

inline constexpr double kGreatestFactor = 1.0001;  ///< some rounding in the file is tolerated

/// One line: positions of its two groups, kSkyGroup for the sky as the second.
struct PlainRow {
  std::int32_t first;
  std::int32_t second;
  double factor;
};
inline constexpr std::int32_t kSkyGroup = -1;

/// Hands the rows of plain lines to `take`, from the present place of the file on, in the order of
/// the file. Stops, with the file there, at the first line that is not plain or that `take`
/// refuses.
void take_plain_rows(frame::Crew& crew, frame::TextInput& file, const Data& data,
                     frame::FunctionRef<bool(const PlainRow&)> take);

}  // namespace tsrf_module_raddat
