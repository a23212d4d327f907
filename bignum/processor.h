// What the processor can do beyond the least that the build is for.
#pragma once

// The widest vectors to use: of 128 bits (SSE2), 256 (AVX2), 512 (AVX-512) or 0, none at all.
#ifndef OMREL_VECTOR_BITS
#define OMREL_VECTOR_BITS 512
#endif

#if (defined(__x86_64__) || defined(__SSE2__)) && OMREL_VECTOR_BITS > 0
#include <immintrin.h>
#define OMREL_VECTORS 1
#endif

namespace omrel {

// Bits of the widest vectors that the build may use and the processor has.
inline int vector_bits() {
#ifdef OMREL_VECTORS
  __builtin_cpu_init();  // this may be asked before the compiler runtime's own constructors have
                         // run
  if (OMREL_VECTOR_BITS >= 512 && __builtin_cpu_supports("avx512f") != 0) return 512;
  return OMREL_VECTOR_BITS >= 256 && __builtin_cpu_supports("avx2") != 0 ? 256 : 128;
#else
  return 0;
#endif
}

}  // namespace omrel
