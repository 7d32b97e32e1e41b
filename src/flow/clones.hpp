// One routine in several forms for several processors.
//
// The package is built for any processor of its kind; a kernel marked FLOW_CLONES is compiled a
// second time with wider vectors, and the loader takes the form that the machine can run. Products
// and sums are rounded as they are written in both, so the forms give the same bits. Sanitizers and
// other compilers take the plain form.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define FLOW_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define FLOW_CLONES
#endif

#if defined(__GNUC__)
#define FLOW_INLINE __attribute__((always_inline)) inline
#else
#define FLOW_INLINE inline
#endif
