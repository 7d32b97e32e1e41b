// Tables of bad input: what each puts on the log.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

/// A read on a fresh fixture (which holds a RecordedLog `recorded`) that must fail.
template <class Fixture>
struct Fault {
  std::function<void(Fixture&)> read;
  std::string lines;  ///< what is said between the heading and the reader's tag
};

/// Each fault ends the log with the heading, its lines and the tag.
template <class Fixture>
void expect_faults(const std::string& heading, const std::string& tag,
                   const std::vector<Fault<Fixture>>& faults) {
  for (const Fault<Fixture>& fault : faults) {
    Fixture fixture;
    const std::string text = fixture.recorded.lines_of([&] { fault.read(fixture); });
    const std::string expected = heading + fault.lines + tag + "\n";
    EXPECT_EQ(text.substr(text.size() - std::min(text.size(), expected.size())), expected);
  }
}

/// From a reader of the fixture a function that makes the read of a text.
template <class Fixture>
auto reads(void (Fixture::*reader)(const std::string&)) {
  return [reader](const std::string& text) {
    return [reader, text](Fixture& fixture) { (fixture.*reader)(text); };
  };
}
