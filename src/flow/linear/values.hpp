// An array of numbers for the linear solvers: aligned to a line of the cache, so that no load of a
// row's own numbers touches two.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace flow {

template <class T>
struct LineAllocator {
  using value_type = T;
  static constexpr std::align_val_t kLine{64};

  LineAllocator() = default;
  template <class U>
  explicit LineAllocator(const LineAllocator<U>& /*other*/) {}

  T* allocate(std::size_t count) {
    return static_cast<T*>(::operator new(count * sizeof(T), kLine));
  }
  void deallocate(T* place, std::size_t /*count*/) { ::operator delete(place, kLine); }
  friend bool operator==(const LineAllocator&, const LineAllocator&) { return true; }
};

using Values = std::vector<double, LineAllocator<double>>;

}  // namespace flow
