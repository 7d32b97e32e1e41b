// Findings as text for a reader, or as lines of JSON for a program.
#pragma once

#include <iosfwd>
#include <string>

#include "frame/findings.hpp"

namespace check {

/// Orders the findings by file and line, faults and doubts together, and keeps of those that say
/// the same of ever other places the first ones; the last tells how many more there are.
void put_in_order(frame::Findings& findings);

/// One finding a paragraph: "FILE:LINE: fault: what stands there; what is expected", the line
/// itself and a hint.
void print_text(const frame::Findings& findings, std::ostream& out);
/// One object a line: severity, file, line, found, expected, text, hint, count.
void print_json(const frame::Findings& findings, std::ostream& out);

/// 0: nothing found; 1: doubts only; 2: faults.
int status_of(const frame::Findings& findings);

}  // namespace check
