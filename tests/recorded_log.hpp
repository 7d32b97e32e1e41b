// A log that a test can read back: what goes to the log and to standard output is one text.
#pragma once

#include <sstream>
#include <string>
#include <string_view>

#include "frame/log.hpp"

/// Lines in shorthand: a bar ends a line, a leading E is the heading of a data error.
inline std::string lines(std::string_view shorthand) {
  std::string text;
  if (shorthand.starts_with("E|")) {
    text = "### error : data error";
    shorthand.remove_prefix(1);
  }
  for (const char c : shorthand) text += c == '|' ? '\n' : c;
  if (!text.empty() && text.back() != '\n') text += '\n';
  return text;
}

struct RecordedLog {
  std::ostringstream screen;
  std::ostringstream errors;
  frame::Log log{screen, errors};

  /// Runs `work`; the lines that it wrote. Reported faults and stops end it.
  template <class Work>
  std::string lines_of(Work&& work) {
    screen.str("");
    try {
      work();
    } catch (const frame::Failure&) {
    } catch (const frame::Stop&) {
    }
    return screen.str();
  }
};
