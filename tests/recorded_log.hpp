// A log that a test can read back: what goes to the log and to standard output is one text.
#pragma once

#include <sstream>
#include <string>

#include "frame/log.hpp"

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
