// Versions of a loop, for SSE2, AVX2 and AVX-512, chosen once when the library is loaded, and a
// plain one for other processors. A column's eight products are added before the column is touched,
// so eight rows cost one load and one store of a column. With AVX2, limbs loaded for one vector of
// columns serve the next one, too, where they meet rows further on.
//
// Columns become limbs in two passes at once: a column sends less than 2^38 up; with what it
// receives it is below 2^38 and sends less than 2^12 up. The carries of one that are left run
// through a vector as through the bits of a word: added to a number that has ones where a limb
// passes a carry on, they come out above it.
#include "bignum/magnitude/rows.h"

#include "bignum/digit_text.h"
#include "bignum/processor.h"

namespace omrel {
namespace {

void add_rows_plain(Limb* columns, const Limb* multiplicand, int count, const Limb* multipliers) {
  for (int i = 0; i < count + ROWS - 1; ++i) {
    for (int k = 0; k < ROWS; ++k) columns[i] += multiplicand[i - k] * multipliers[k];
  }
}

void settle_plain(Limb* limbs, const Limb* columns, int count) {
  constexpr std::uint32_t HIGH_FACTOR = LIMB_BASE >> 8;
  static_assert(LIMB_BASE == Limb{HIGH_FACTOR} << 8);
  Limb sent = 0;
  Limb sent_again = 0;
  for (int i = 0; i < count; ++i) {
    const Limb quotient = columns[i] / LIMB_BASE;
    const Limb received = columns[i] - quotient * LIMB_BASE + sent;
    const Limb again = Limb{static_cast<std::uint32_t>(received >> 8) / HIGH_FACTOR};
    limbs[i] = received - again * LIMB_BASE + sent_again;
    sent = quotient;
    sent_again = again;
  }
}

void carry_plain(Limb* limbs, int count) {
  Limb carry = 0;
  for (int i = 0; i < count; ++i) {
    const Limb total = limbs[i] + carry;
    carry = total >= LIMB_BASE ? 1 : 0;
    limbs[i] = total - (carry != 0 ? LIMB_BASE : 0);
  }
}

void load_plain(Limb* limbs, const char* digits, int count) {
  for (int i = 0; i < count; ++i) limbs[i] = number_of(load_word(digits + 8 * i));
}

void store_plain(char* digits, const Limb* limbs, int count) {
  for (int i = 0; i < count; ++i) store_word(digits + 8 * i, word_of(limbs[i]));
}

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
#define OMREL_STORE(p, x) _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), x)
#define OMREL_LANE_BITS(x) _mm256_movemask_pd(_mm256_castsi256_pd(x))
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
    OMREL_STORE(columns + i, _mm256_add_epi64(sum, sum_before));
  }
}

// Limbs at i - k are those of two neighbouring vectors, shifted together: loads would cross lines.
#define OMREL_ADD_ROW(sum, k)                                                                      \
  sum = _mm512_add_epi64(                                                                          \
      sum, _mm512_maskz_mul_epu32(0xFF, _mm512_maskz_alignr_epi64(0xFF, here, before, ROWS - (k)), \
                                  factor[k]))

__attribute__((target("avx512f"))) void add_rows_avx512(Limb* columns, const Limb* multiplicand,
                                                        int count, const Limb* multipliers) {
  __m512i factor[ROWS];
#pragma GCC unroll 8
  for (int k = 0; k < ROWS; ++k)
    factor[k] = _mm512_set1_epi64(static_cast<long long>(multipliers[k]));
  __m512i before = _mm512_loadu_si512(multiplicand - ROWS);
  for (int i = 0; i < count + ROWS - 1; i += ROWS) {
    const __m512i here = _mm512_loadu_si512(multiplicand + i);
    __m512i even = _mm512_loadu_si512(columns + i);
    even = _mm512_add_epi64(even, _mm512_maskz_mul_epu32(0xFF, here, factor[0]));
    __m512i odd = _mm512_maskz_mul_epu32(
        0xFF, _mm512_maskz_alignr_epi64(0xFF, here, before, ROWS - 1), factor[1]);
    OMREL_ADD_ROW(even, 2);
    OMREL_ADD_ROW(odd, 3);
    OMREL_ADD_ROW(even, 4);
    OMREL_ADD_ROW(odd, 5);
    OMREL_ADD_ROW(even, 6);
    OMREL_ADD_ROW(odd, 7);
    _mm512_storeu_si512(columns + i, _mm512_add_epi64(even, odd));
    before = here;
  }
}

// The quotient of a column is found in floating point from all but its lowest 26 bits, which leave
// out less than 0.7 of it, and is taken two too small, so that with a rounding of one either way it
// is never too large: what is left of a column is below 4 * LIMB_BASE.
__attribute__((target("avx2"))) void settle_avx2(Limb* limbs, const Limb* columns, int count) {
  constexpr Limb PER_HIGH = (Limb{1} << 50) / (LIMB_BASE >> 8) + 1;
  const __m256d units = _mm256_set1_pd(0x1p52);  // with doubles of this size bits are integers
  __m256i sent_before = _mm256_setzero_si256();
  __m256i again_before = _mm256_setzero_si256();
  for (int i = 0; i < count; i += 4) {
    const __m256i column = OMREL_LOAD(columns + i);
    const __m256i high_bits = _mm256_srli_epi64(column, 26);
    const __m256d high =
        _mm256_castsi256_pd(_mm256_or_si256(high_bits, _mm256_castpd_si256(units)));
    __m256d quotient = _mm256_mul_pd(_mm256_sub_pd(high, units),
                                     _mm256_set1_pd(0x1p26 / static_cast<double>(LIMB_BASE)));
    quotient = _mm256_max_pd(_mm256_sub_pd(quotient, _mm256_set1_pd(2)), _mm256_setzero_pd());
    const __m256i sent = _mm256_xor_si256(_mm256_castpd_si256(_mm256_add_pd(quotient, units)),
                                          _mm256_castpd_si256(units));
    __m256i rest = _mm256_sub_epi64(column, _mm256_mul_epu32(sent, OMREL_SPREAD(LIMB_BASE)));
    rest = _mm256_and_si256(rest, OMREL_SPREAD(0xFFFFFFFF));
    const __m256i sent_up = _mm256_permute4x64_epi64(sent, 0b10'01'00'11);
    rest = _mm256_add_epi64(rest, _mm256_blend_epi32(sent_up, sent_before, 0b11));
    sent_before = sent_up;
    const __m256i again =
        _mm256_srli_epi64(_mm256_mul_epu32(_mm256_srli_epi64(rest, 8), OMREL_SPREAD(PER_HIGH)), 50);
    rest = _mm256_sub_epi64(rest, _mm256_mul_epu32(again, OMREL_SPREAD(LIMB_BASE)));
    const __m256i again_up = _mm256_permute4x64_epi64(again, 0b10'01'00'11);
    OMREL_STORE(limbs + i,
                _mm256_add_epi64(rest, _mm256_blend_epi32(again_up, again_before, 0b11)));
    again_before = again_up;
  }
}

__attribute__((target("avx2"))) void carry_avx2(Limb* limbs, int count) {
  const __m256i greatest = OMREL_SPREAD(LIMB_BASE - 1);
  const __m256i lane_bits = _mm256_setr_epi64x(1, 2, 4, 8);
  if (count < MANY_COLUMNS) return carry_plain(limbs, count);
  int carry = 0;
  for (int i = 0; i < count; i += 4) {
    const __m256i limb = OMREL_LOAD(limbs + i);
    const int send = OMREL_LANE_BITS(_mm256_cmpgt_epi64(limb, greatest));
    const int pass_on = OMREL_LANE_BITS(_mm256_cmpeq_epi64(limb, greatest));
    const int sum = (send << 1 | carry) + pass_on;
    carry = sum >> 4;
    const __m256i receive = _mm256_and_si256(OMREL_SPREAD(sum ^ pass_on), lane_bits);
    const __m256i total = _mm256_sub_epi64(limb, _mm256_cmpeq_epi64(receive, lane_bits));
    const __m256i excess =
        _mm256_and_si256(_mm256_cmpgt_epi64(total, greatest), OMREL_SPREAD(LIMB_BASE));
    OMREL_STORE(limbs + i, _mm256_sub_epi64(total, excess));
  }
}

// As number_of, for four words: digits are multiplied into pairs, pairs into fours, those into
// limbs.
__attribute__((target("avx2"))) void load_avx2(Limb* limbs, const char* digits, int count) {
  const __m256i low_four = _mm256_set1_epi8(0x0F);
  const __m256i low_field = _mm256_set1_epi64x(0xFFFFFFFF);
  int i = 0;
  for (; i + 4 <= count; i += 4) {
    const __m256i ones = _mm256_and_si256(OMREL_LOAD(digits + 8 * i), low_four);
    const __m256i pairs = _mm256_maddubs_epi16(ones, _mm256_set1_epi16(10 << 8 | 1));
    const __m256i fours = _mm256_madd_epi16(pairs, _mm256_set1_epi32(100 << 16 | 1));
    __m256i limb = _mm256_and_si256(fours, low_field);
    OMREL_ADD_PRODUCT(limb, _mm256_srli_epi64(fours, 32), OMREL_SPREAD(10000));
    OMREL_STORE(limbs + i, limb);
  }
  for (; i < count; ++i) limbs[i] = number_of(load_word(digits + 8 * i));
}

// As word_of, for four limbs.
__attribute__((target("avx2"))) void store_avx2(char* digits, const Limb* limbs, int count) {
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
    OMREL_STORE(digits + 8 * i, word);
  }
  for (; i < count; ++i) store_word(digits + 8 * i, word_of(limbs[i]));
}

#undef OMREL_LOAD
#undef OMREL_STORE
#undef OMREL_LANE_BITS
#undef OMREL_SPREAD
#undef OMREL_ADD_PRODUCT

#endif

}  // namespace

std::vector<VectorFunctions> vector_versions() {
  std::vector<VectorFunctions> versions;
#ifdef OMREL_VECTORS
  if (vector_bits() >= 512) {
    versions.push_back({add_rows_avx512, settle_avx2, carry_avx2, load_avx2, store_avx2});
  }
  if (vector_bits() >= 256) {
    versions.push_back({add_rows_avx2, settle_avx2, carry_avx2, load_avx2, store_avx2});
  }
  versions.push_back({add_rows_sse2, settle_plain, carry_plain, load_plain, store_plain});
#endif
  versions.push_back({add_rows_plain, settle_plain, carry_plain, load_plain, store_plain});
  return versions;
}

const VectorFunctions vectors = vector_versions().front();

}  // namespace omrel
