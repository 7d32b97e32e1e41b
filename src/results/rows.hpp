// The lines of a large result file, formed by all hands and written in their order.
//
// Used by the writers with a line for each patch or cell.
#pragma once

#include <cstddef>
#include <optional>

#include "frame/crew.hpp"
#include "frame/function_ref.hpp"
#include "frame/log.hpp"
#include "frame/text_output.hpp"
#include "results/row.hpp"

namespace tsrf_module_io {

/// A real that is not finite.
struct Unsound {
  std::size_t line;  ///< from 0
  std::size_t real;  ///< its place among the reals of the line, from 0
};

/// Writes `count` lines; `fill` puts the fields of one. Stops before the first line with a real
/// that is not finite, and tells it.
std::optional<Unsound> write_rows(frame::Log& log, frame::Crew& crew, frame::TextOutput& file,
                                  std::size_t count,
                                  frame::FunctionRef<void(std::size_t line, Row& row)> fill);

}  // namespace tsrf_module_io
