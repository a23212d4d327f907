// Versions of a loop, for SSE2 and for AVX2, chosen once when the library is loaded, and a plain
// one for other processors. A column's eight products are added before the column is touched, so
// eight rows cost one load and one store of a column. With AVX2, limbs loaded for one vector of
// columns serve the next one, too, where they meet rows further on.
#include "bignum/magnitude/rows.h"

#include "bignum/digit_text.h"
#include "bignum/processor.h"

namespace omrel {
namespace {

#ifdef OMREL_VECTORS

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

// As number_of, for four words: digits are multiplied into pairs, pairs into fours, those into
// limbs.
__attribute__((target("avx2"))) void load_limbs_avx2(Limb* limbs, const char* digits, int count) {
  const __m256i low_four = _mm256_set1_epi8(0x0F);
  const __m256i low_field = _mm256_set1_epi64x(0xFFFFFFFF);
  int i = 0;
  for (; i + 4 <= count; i += 4) {
    const __m256i ones = _mm256_and_si256(OMREL_LOAD(digits + 8 * i), low_four);
    const __m256i pairs = _mm256_maddubs_epi16(ones, _mm256_set1_epi16(10 << 8 | 1));
    const __m256i fours = _mm256_madd_epi16(pairs, _mm256_set1_epi32(100 << 16 | 1));
    __m256i limb = _mm256_and_si256(fours, low_field);
    OMREL_ADD_PRODUCT(limb, _mm256_srli_epi64(fours, 32), OMREL_SPREAD(10000));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(limbs + i), limb);
  }
  for (; i < count; ++i) limbs[i] = number_of(load_word(digits + 8 * i));
}

// As word_of, for four limbs.
__attribute__((target("avx2"))) void store_limbs_avx2(char* digits, const Limb* limbs, int count) {
  int i = 0;
  for (; i + 4 <= count; i += 4) {
    __m256i word = OMREL_LOAD(limbs + i);
    __m256i high = _mm256_srli_epi64(_mm256_mul_epu32(word, OMREL_SPREAD(109951163)), 40);
    OMREL_ADD_PRODUCT(word, high, OMREL_SPREAD((1LL << 32) - 10000));
    high = _mm256_srli_epi16(_mm256_mulhi_epu16(word, _mm256_set1_epi16(5243)), 3);
    word = _mm256_add_epi32(word, _mm256_mullo_epi32(high, _mm256_set1_epi32((1 << 16) - 100)));
    high = _mm256_srli_epi16(_mm256_mullo_epi16(word, _mm256_set1_epi16(103)), 10);
    word = _mm256_add_epi16(word, _mm256_mullo_epi16(high, _mm256_set1_epi16((1 << 8) - 10)));
    word = _mm256_or_si256(word, OMREL_SPREAD(ASCII_ZEROS));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(digits + 8 * i), word);
  }
  for (; i < count; ++i) store_word(digits + 8 * i, word_of(limbs[i]));
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

void load_limbs_plain(Limb* limbs, const char* digits, int count) {
  for (int i = 0; i < count; ++i) limbs[i] = number_of(load_word(digits + 8 * i));
}

void store_limbs_plain(char* digits, const Limb* limbs, int count) {
  for (int i = 0; i < count; ++i) store_word(digits + 8 * i, word_of(limbs[i]));
}

}  // namespace

std::vector<AddRows> add_rows_versions() {
  std::vector<AddRows> versions;
#ifdef OMREL_VECTORS
  if (has_avx2()) versions.push_back(add_rows_avx2);
  versions.push_back(add_rows_sse2);
#endif
  versions.push_back(add_rows_plain);
  return versions;
}

const AddRows add_rows = add_rows_versions().front();

#ifdef OMREL_VECTORS
const LoadLimbs load_limbs = has_avx2() ? load_limbs_avx2 : load_limbs_plain;
const StoreLimbs store_limbs = has_avx2() ? store_limbs_avx2 : store_limbs_plain;
#else
const LoadLimbs load_limbs = load_limbs_plain;
const StoreLimbs store_limbs = store_limbs_plain;
#endif

}  // namespace omrel
