// Kernels that go along a row of cells or faces.
//
// The package is built for any processor of its kind; a kernel marked FLOW_CLONES is compiled a
// second time with wider vectors, and the loader takes the form that the machine can run. Products
// and sums are rounded as they are written in both, so the forms give the same bits. Sanitizers and
// other compilers take the plain form.
//
// A kernel serves the faces along its rows, each with coefficients of its own (Each), and those
// across them, which share one (Same).
#pragma once

#include <cstddef>

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define FLOW_CLONES __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define FLOW_CLONES
#endif

#if defined(__GNUC__)
#define FLOW_INLINE __attribute__((always_inline)) inline
#else
#define FLOW_INLINE inline
#endif

namespace flow {

struct Same {
  double value;
  double operator[](std::size_t) const { return value; }
};
using Each = const double*;

}  // namespace flow
