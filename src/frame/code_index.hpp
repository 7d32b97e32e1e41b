// From a code (PID, PgID, SurfCD, ...) to its position in a list.
//
// Codes may be any 32-bit integers. Where their range is not much wider than their count a plain
// table serves; otherwise a sorted list does, so that codes 1 and 2,000,000,000 in one file take
// no more memory than 1 and 2. Built by the readers, used by every reader that refers to another
// data set.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "frame/function_ref.hpp"

namespace frame {

class CodeIndex {
 public:
  CodeIndex() = default;
  /// Enters `codes` in order; of a repeated code the first position counts.
  explicit CodeIndex(std::span<const std::int32_t> codes);

  /// Position of `code` in the list, from 0; -1 when it is not there.
  [[nodiscard]] std::int32_t find(std::int32_t code) const;

  /// The first entry (in list order) that repeats an earlier code: positions of both, from 0.
  struct Repeat {
    std::int32_t first;
    std::int32_t second;
  };
  [[nodiscard]] const std::optional<Repeat>& repeat() const { return repeat_; }

 private:
  std::int64_t low_ = 0;
  std::vector<std::int32_t> table_;                            // by code - low_
  std::vector<std::pair<std::int32_t, std::int32_t>> sorted_;  // (code, position)
  std::optional<Repeat> repeat_;
};

class Log;

/// Calls `report` with the positions of a code's first place and of one that repeats it: of the
/// first repeat, which ends a run; where the log collects faults, of each.
void report_repeats(Log& log, const CodeIndex& index, std::span<const std::int32_t> codes,
                    FunctionRef<void(std::size_t first, std::size_t second)> report);

}  // namespace frame
