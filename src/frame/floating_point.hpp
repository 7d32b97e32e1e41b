// The floating-point mode of a run: denormal results are flushed to zero.
//
// All results of the model are computed in this mode. The mode belongs to the thread; the guard
// gives it back, so that a run leaves its caller's arithmetic as it was.
#pragma once

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

#include <cstdint>

namespace frame {

class FlushDenormals {
 public:
  FlushDenormals() : before_(get()) { set(before_ | kFlush); }
  ~FlushDenormals() { set(before_); }
  FlushDenormals(const FlushDenormals&) = delete;
  FlushDenormals& operator=(const FlushDenormals&) = delete;

 private:
#if defined(__SSE2__)
  static constexpr std::uint64_t kFlush = 0x8000;
  static std::uint64_t get() { return _mm_getcsr(); }
  static void set(std::uint64_t mode) { _mm_setcsr(static_cast<unsigned>(mode)); }
#elif defined(__aarch64__)
  static constexpr std::uint64_t kFlush = std::uint64_t{1} << 24;
  static std::uint64_t get() {
    std::uint64_t mode;
    asm volatile("mrs %0, fpcr" : "=r"(mode));
    return mode;
  }
  static void set(std::uint64_t mode) { asm volatile("msr fpcr, %0" : : "r"(mode)); }
#else
#error "the flush-to-zero mode of this processor is not known"
#endif
  std::uint64_t before_;
};

}  // namespace frame
