// Counts what is taken from the heap, for tests of what takes nothing. A test program that includes
// this has its new and delete replaced.
#pragma once

#include <atomic>
#include <cstdlib>
#include <new>

inline std::atomic<std::size_t> allocations = 0;

// Weak, so that several tests of one program may count; not inline: the compiler would pair malloc
// and delete and complain.
[[gnu::weak, gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::weak, gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++allocations;
  return std::malloc(size);
}
[[gnu::weak, gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::weak, gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
