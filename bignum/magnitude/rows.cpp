// Two versions of one loop, for SSE2 and for AVX2, chosen once when the library is loaded, and a
// plain one for other processors. A column's eight products are added before the column is
// touched, so eight rows cost one load and one store of a column. With AVX2, limbs loaded for one
// vector of columns serve the next one, too, where they meet rows further on.
#include "bignum/magnitude/rows.h"

#if (defined(__x86_64__) || defined(__SSE2__)) && !defined(OMREL_PLAIN_LIMBS)
#include <immintrin.h>
#define OMREL_VECTOR_LIMBS 1
#endif

namespace omrel {
namespace {

#ifdef OMREL_VECTOR_LIMBS

void add_rows_sse2(Limb* columns, const Limb* multiplicand, int count, const Limb* multipliers) {
  const auto load = [](const Limb* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  };
  __m128i factor[ROWS];
  for (int k = 0; k < ROWS; ++k)
    factor[k] = _mm_set1_epi64x(static_cast<long long>(multipliers[k]));
  for (int i = 0; i < count + ROWS - 1; i += 2) {
    __m128i sum = load(columns + i);
#pragma GCC unroll 8
    for (int k = 0; k < ROWS; ++k) {
      sum = _mm_add_epi64(sum, _mm_mul_epu32(load(multiplicand + i - k), factor[k]));
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(columns + i), sum);
  }
}

// A lambda does not take over its function's target, hence macros.
#define OMREL_LOAD(p) _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))
#define OMREL_SPREAD(x) _mm256_set1_epi64x(static_cast<long long>(x))
#define OMREL_ADD_PRODUCT(sum, x, y) sum = _mm256_add_epi64(sum, _mm256_mul_epu32(x, y))

__attribute__((target("avx2"))) void add_rows_avx2(Limb* columns, const Limb* multiplicand,
                                                   int count, const Limb* multipliers) {
  constexpr int HALF = ROWS / 2;
  __m256i factor[ROWS];
  for (int k = 0; k < ROWS; ++k) factor[k] = OMREL_SPREAD(multipliers[k]);
  __m256i before[HALF];  // before[k] = limbs at i - 4 - k
  for (int k = 0; k < HALF; ++k) before[k] = OMREL_LOAD(multiplicand - HALF - k);
  for (int i = 0; i < count + ROWS - 1; i += 4) {
    __m256i sum = OMREL_LOAD(columns + i);
    __m256i sum_before = _mm256_setzero_si256();
    for (int k = 0; k < HALF; ++k) {
      const __m256i here = OMREL_LOAD(multiplicand + i - k);
      OMREL_ADD_PRODUCT(sum, here, factor[k]);
      OMREL_ADD_PRODUCT(sum_before, before[k], factor[HALF + k]);
      before[k] = here;
    }
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(columns + i), _mm256_add_epi64(sum, sum_before));
  }
}

#undef OMREL_LOAD
#undef OMREL_SPREAD
#undef OMREL_ADD_PRODUCT

#endif

void add_rows_plain(Limb* columns, const Limb* multiplicand, int count, const Limb* multipliers) {
  for (int i = 0; i < count + ROWS - 1; ++i) {
    for (int k = 0; k < ROWS; ++k) columns[i] += multiplicand[i - k] * multipliers[k];
  }
}

}  // namespace

std::vector<AddRows> add_rows_versions() {
  std::vector<AddRows> versions;
#ifdef OMREL_VECTOR_LIMBS
  __builtin_cpu_init();  // this may run before the compiler runtime's own constructors have
  if (__builtin_cpu_supports("avx2")) versions.push_back(add_rows_avx2);
  versions.push_back(add_rows_sse2);
#endif
  versions.push_back(add_rows_plain);
  return versions;
}

const AddRows add_rows = add_rows_versions().front();

}  // namespace omrel
