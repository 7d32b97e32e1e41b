// Whole runs of different length take the same from the heap: a step takes nothing.
#include <gtest/gtest.h>

#include <sstream>

#include "count_allocations.hpp"
#include "driver/flw_main00.hpp"
#include "run_case.hpp"

namespace {

std::size_t allocations_of(const std::string& name, int steps) {
  const run_case::RunCase run(run_case::inputs_of(name));
  run_case::set_steps(run, -1, steps);
  run_case::ask_for_account(run);
  std::ostringstream screen;
  const flw_main00::Place place{
      .directory = run.path().string(), .screen = screen, .errors = screen};
  const std::size_t before = allocations;
  EXPECT_EQ(flw_main00::run(place), 0);
  EXPECT_GT(allocations, before);  // they are counted
  return allocations - before;
}

// The first step and the first whole hour take what later ones use again.
TEST(WholeRuns, TakeNoMemoryInAStep) {
  for (const std::string name : {"canyon", "block", "street_trees", "mixed", "two_months"}) {
    EXPECT_EQ(allocations_of(name, 42), allocations_of(name, 25)) << name;
  }
}

}  // namespace
