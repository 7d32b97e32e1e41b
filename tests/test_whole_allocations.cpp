// Whole runs of different length take the same from the heap: a step takes nothing.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <sstream>

#include "driver/flw_main00.hpp"
#include "run_case.hpp"

namespace {
std::atomic<std::size_t> allocations = 0;
}

// Not inline: the compiler would pair malloc and delete and complain.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++allocations;
  return std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

std::size_t allocations_of(const std::string& name, int steps) {
  const run_case::RunCase run(run_case::inputs_of(name));
  run_case::set_steps(run, -1, steps);
  std::ostringstream screen;
  const flw_main00::Place place{
      .directory = run.path().string(), .screen = screen, .errors = screen};
  const std::size_t before = allocations;
  EXPECT_EQ(flw_main00::run(place), 0);
  return allocations - before;
}

// The first step and the first whole hour take what later ones use again.
TEST(WholeRuns, TakeNoMemoryInAStep) {
  for (const std::string name : {"canyon", "block", "street_trees", "mixed", "two_months"}) {
    EXPECT_EQ(allocations_of(name, 42), allocations_of(name, 25)) << name;
  }
}

}  // namespace
