// Lines of the Sun files, as both forms of the shade schedule read them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

#include "frame/crew.hpp"
#include "frame/log.hpp"
#include "frame/text_input.hpp"
#include "inputs/dated_series.hpp"
#include "inputs/patch.hpp"

namespace tsrf_module_shade {

inline constexpr dated_series::Words kWords{"Sun",
                                            "(tsrf_module_shade)",
                                            "(set_shade_oneday)",
                                            "%%% read shade : date=",
                                            "Sun",
                                            "Sun",
                                            "time no. =",
                                            true};
inline constexpr std::size_t kColumns = 3;

/// A line behind its date.
struct Line {
  std::int32_t index = 0;  ///< running number, of no use here
  std::int32_t PID = 0;
  float fraction = 0.0F;
};

inline frame::ReadStatus read_line(frame::TextInput& file, std::span<std::int32_t> date,
                                   Line& line) {
  return file.read(date, line.index, line.PID, line.fraction);
}

/// Enters the fraction of the n-th line of block `block` (a number that grows) at its patch. A
/// patch that is not in the list, or that the block has named before, stops the run; the line is
/// the record at `place` of `file`.
template <class Real>
void enter(frame::Log& log, const frame::TextInput& file, std::size_t place,
           const tsrf_module_patch::Data& patch, const Line& line, std::size_t n,
           std::int32_t block, std::string_view routine, std::span<std::int32_t> seen,
           std::span<Real> row) {
  // As a rule the lines come in the order of the patches.
  const bool in_order = n < patch.PID.size() && patch.PID[n] == line.PID;
  const auto p = in_order ? n : static_cast<std::size_t>(patch.by_pid.find(line.PID));
  if (p >= seen.size() || seen[p] == block) {
    log.program_error(file.line_text(file.line_at(place)),
                      "### program error -2- (tsrf_module_shade)", routine);
  }
  seen[p] = block;
  row[p] = std::clamp(line.fraction, 0.0F, 1.0F);
}

/// Reads the next block of the file by all hands when its lines are what they nearly always are:
/// plain numbers, one date, a line for every patch in the order of the list. Fills the elements of
/// `date` that a line holds and `row` (an empty one stays so), and goes on behind the block. Else
/// false, the file where it was and the date as it was: the reader of records has the word then, a
/// fault above all.
template <class Real>
bool take_plain_block(frame::Crew& crew, frame::TextInput& file,
                      const tsrf_module_patch::Data& patch, std::span<std::int32_t> date,
                      std::span<Real> row);

}  // namespace tsrf_module_shade
