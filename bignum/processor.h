// What the processor can do beyond the least that the build is for.
#pragma once

#if (defined(__x86_64__) || defined(__SSE2__)) && !defined(OMREL_PLAIN_LIMBS)
#include <immintrin.h>
#define OMREL_VECTORS 1
#endif

namespace omrel {

inline bool has_avx2() {
#ifdef OMREL_VECTORS
  __builtin_cpu_init();  // this may be asked before the compiler runtime's own constructors have
                         // run
  return __builtin_cpu_supports("avx2") != 0;
#else
  return false;
#endif
}

}  // namespace omrel
