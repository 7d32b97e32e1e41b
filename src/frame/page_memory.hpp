// Memory in whole pages, taken from the system and given back to it at once.
//
// The heap keeps what is freed for later use; where a reader turns one large structure into
// another, piece by piece, that would hold both at full size. Used by the reader of view factors.
#pragma once

#include <sys/mman.h>

#include <memory>
#include <new>
#include <type_traits>

namespace frame {

template <class T>
struct GiveBackPages {
  void operator()(T* place) const noexcept { ::munmap(static_cast<void*>(place), sizeof(T)); }
};

template <class T>
using PagePtr = std::unique_ptr<T, GiveBackPages<T>>;

/// A T of zeros on pages of its own; those that are never written take no memory. Throws
/// std::bad_alloc.
template <class T>
PagePtr<T> make_on_pages() {
  static_assert(std::is_trivially_default_constructible_v<T> &&
                std::is_trivially_destructible_v<T>);
  void* place =
      ::mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (place == MAP_FAILED) throw std::bad_alloc();
  return PagePtr<T>(new (place) T);
}

}  // namespace frame
