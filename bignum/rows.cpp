// Two versions of one loop, for SSE2 and for AVX2, chosen once when the library is loaded, and a
// plain one for other processors. A column's four products are added before the column is
// touched, so each column costs one load and one store for four rows.
#include "bignum/rows.h"

#if (defined(__x86_64__) || defined(__SSE2__)) && !defined(OMREL_PLAIN_LIMBS)
#include <immintrin.h>
#define OMREL_VECTOR_LIMBS 1
#endif

namespace omrel {
namespace {

#ifdef OMREL_VECTOR_LIMBS

void add_rows_sse2(Limb* columns, const Limb* lanes, int count, const Limb* m) {
  const auto load = [](const Limb* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  };
  const auto spread = [](Limb x) { return _mm_set1_epi64x(static_cast<long long>(x)); };
  const __m128i m0 = spread(m[0]), m1 = spread(m[1]), m2 = spread(m[2]), m3 = spread(m[3]);
  for (int i = 0; i < count + 3; i += 2) {
    const __m128i p01 =
        _mm_add_epi64(_mm_mul_epu32(load(lanes + i), m0), _mm_mul_epu32(load(lanes + i - 1), m1));
    const __m128i p23 = _mm_add_epi64(_mm_mul_epu32(load(lanes + i - 2), m2),
                                      _mm_mul_epu32(load(lanes + i - 3), m3));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(columns + i),
                     _mm_add_epi64(load(columns + i), _mm_add_epi64(p01, p23)));
  }
}

// A lambda does not take over its function's target, hence the macro's plain calls.
__attribute__((target("avx2"))) void add_rows_avx2(Limb* columns, const Limb* lanes, int count,
                                                   const Limb* m) {
  const __m256i m0 = _mm256_set1_epi64x(static_cast<long long>(m[0]));
  const __m256i m1 = _mm256_set1_epi64x(static_cast<long long>(m[1]));
  const __m256i m2 = _mm256_set1_epi64x(static_cast<long long>(m[2]));
  const __m256i m3 = _mm256_set1_epi64x(static_cast<long long>(m[3]));
  for (int i = 0; i < count + 3; i += 4) {
    const auto* lane = reinterpret_cast<const __m256i*>(lanes + i);
    const auto* lane1 = reinterpret_cast<const __m256i*>(lanes + i - 1);
    const auto* lane2 = reinterpret_cast<const __m256i*>(lanes + i - 2);
    const auto* lane3 = reinterpret_cast<const __m256i*>(lanes + i - 3);
    auto* column = reinterpret_cast<__m256i*>(columns + i);
    const __m256i p01 = _mm256_add_epi64(_mm256_mul_epu32(_mm256_loadu_si256(lane), m0),
                                         _mm256_mul_epu32(_mm256_loadu_si256(lane1), m1));
    const __m256i p23 = _mm256_add_epi64(_mm256_mul_epu32(_mm256_loadu_si256(lane2), m2),
                                         _mm256_mul_epu32(_mm256_loadu_si256(lane3), m3));
    _mm256_storeu_si256(column,
                        _mm256_add_epi64(_mm256_loadu_si256(column), _mm256_add_epi64(p01, p23)));
  }
}

AddRows choose() {
  __builtin_cpu_init();  // this runs before the compiler runtime's own constructors may have
  return __builtin_cpu_supports("avx2") ? add_rows_avx2 : add_rows_sse2;
}

#else

void add_rows_plain(Limb* columns, const Limb* lanes, int count, const Limb* m) {
  for (int i = 0; i < count + 3; ++i) {
    columns[i] += lanes[i] * m[0] + lanes[i - 1] * m[1] + lanes[i - 2] * m[2] + lanes[i - 3] * m[3];
  }
}

AddRows choose() { return add_rows_plain; }

#endif

}  // namespace

const AddRows add_rows = choose();

}  // namespace omrel
