// Either way is Horner's rule (Knuth, The Art of Computer Programming, vol. 2, 4.4, method 1b), a
// word a step: quadratic, and for all but long numbers the fastest. Those are converted by radix.h,
// in limbs of fewer bits.
#include "bignum/magnitude/binary.h"

#include <algorithm>
#include <bit>

#include "bignum/digit_text.h"
#include "bignum/magnitude/radix.h"
#include "bignum/processor.h"

namespace omrel {
namespace {

// What a step reads: as many digits as a limb has room for.
constexpr int STEP_DIGITS = 19;
constexpr Limb TWO_LIMBS = LIMB_BASE * LIMB_BASE;

// So many bits of a number from bit `first` on, which it has.
Limb bits_at(const Binary& binary, int first, int count) {
  const int i = first / BINARY_LIMB_BITS;
  const int offset = first % BINARY_LIMB_BITS;
  Limb bits = binary.limb()[i] >> offset;
  if (offset + count > BINARY_LIMB_BITS && i + 1 < binary.count()) {
    bits |= binary.limb()[i + 1] << (BINARY_LIMB_BITS - offset);
  }
  return bits & ((Limb{1} << count) - 1);
}

// The number of up to STEP_DIGITS digits.
Limb step_at(const char* digits, int count) {
  if (count < LIMB_DIGITS) return number_of(load_few(digits, count));
  const Limb low = number_of(load_word(digits));
  if (count < 2 * LIMB_DIGITS) {
    return low + number_of(load_few(digits + LIMB_DIGITS, count - LIMB_DIGITS)) * LIMB_BASE;
  }
  return low + number_of(load_word(digits + LIMB_DIGITS)) * LIMB_BASE +
         number_of(load_few(digits + 2 * LIMB_DIGITS, count - 2 * LIMB_DIGITS)) * TWO_LIMBS;
}

// What a step back takes in, and the limbs that it takes it into.
constexpr int CHUNK_BITS = 59;
constexpr int UNIT_DIGITS = 18;
constexpr Limb UNIT = 100 * TWO_LIMBS;

// How many steps are taken together.
constexpr int TOGETHER = 2;

// Up to so many digits, and limbs, the ways of this file are the faster ones.
#ifdef __SIZEOF_INT128__
constexpr int FEW_DIGITS = 1600;
constexpr int FEW_LIMBS = 220;
const int few_limbs = vector_bits() >= 256 ? 80 : FEW_LIMBS;
#else
constexpr int FEW_DIGITS = 350;
constexpr int FEW_LIMBS = 6;
constexpr int few_limbs = FEW_LIMBS;
#endif

// x * factor + carry, the upper half of which is the next carry.
Limb multiply_limb(Limb x, Limb factor, Limb& carry) {
#ifdef __SIZEOF_INT128__
  __extension__ using Wide = unsigned __int128;
  const Wide total = Wide{x} * factor + carry;
  carry = static_cast<Limb>(total >> 64);
  return static_cast<Limb>(total);
#else
  constexpr Limb LOW = 0xFFFFFFFF;
  const Limb low = (x & LOW) * (factor & LOW) + (carry & LOW);
  const Limb middle = (x >> 32) * (factor & LOW) + (low >> 32) + (carry >> 32);
  const Limb other = (x & LOW) * (factor >> 32) + (middle & LOW);
  carry = (x >> 32) * (factor >> 32) + (middle >> 32) + (other >> 32);
  return other << 32 | (low & LOW);
#endif
}

// So many steps of Horner's rule, the first of which adds chunk[0] last: `step` multiplies a limb
// by the base that is left, adds a carry and leaves the next one there. Steps that are taken
// together load and store a limb once. Returns the new count of limbs.
template <int STEPS, class Step>
int take_in(Limb* limb, int count, const Limb* chunk, const Step& step) {
  Limb carry[STEPS];
  for (int k = 0; k < STEPS; ++k) carry[k] = chunk[STEPS - 1 - k];
  for (int i = 0; i < count; ++i) {
    Limb x = limb[i];
#pragma GCC unroll 8
    for (int k = 0; k < STEPS; ++k) x = step(x, carry[k]);
    limb[i] = x;
  }
  for (int first = 0; first < STEPS; ++first) {
    Limb x = carry[first];
    for (int k = first + 1; k < STEPS; ++k) x = step(x, carry[k]);
    limb[count + first] = x;
  }
  count += STEPS;
  while (count > 0 && limb[count - 1] == 0) --count;
  return count;
}

// limbs = the number that has these digits in the base that is left. There is room for TOGETHER
// more; returns their count.
template <class Step>
int take_all(Limb* limb, const Limb* chunk, int chunk_count, const Step& step) {
  int count = 0;
  while (chunk_count % TOGETHER != 0) count = take_in<1>(limb, count, chunk + --chunk_count, step);
  while (chunk_count > 0) {
    chunk_count -= TOGETHER;
    count = take_in<TOGETHER>(limb, count, chunk + chunk_count, step);
  }
  return count;
}

void multiply_up(Binary& binary, const char* digits, int length) {
  Limb chunk[FEW_DIGITS / STEP_DIGITS + 1];
  int count = 0;
  for (int at = 0; at < length; at += STEP_DIGITS) {
    chunk[count++] = step_at(digits + at, std::min(length - at, STEP_DIGITS));
  }
  binary.trim(take_all(binary.limb(), chunk, count,
                       [](Limb x, Limb& carry) { return multiply_limb(x, 10 * UNIT, carry); }));
}

// Writes limbs below 2.8 UNIT as digits; returns the count without leading zeros.
int store_units(char* digits, const Limb* limb, int count) {
  char* next = digits;
  Limb carry = 0;
  for (int i = 0; i < count || carry != 0; ++i, next += UNIT_DIGITS) {
    const Limb settled = i < count ? limb[i] : 0;
    const Limb quotient = settled / UNIT;
    const Limb total = settled - quotient * UNIT + carry;
    const bool overflows = total >= UNIT;
    carry = quotient + (overflows ? 1 : 0);
    const Limb unit = total - (overflows ? UNIT : 0);
    store_word(next, word_of(unit % LIMB_BASE));
    store_word(next + LIMB_DIGITS, word_of(unit / LIMB_BASE % LIMB_BASE));
    store_word(next + 2 * LIMB_DIGITS, word_of_pair(unit / TWO_LIMBS));
  }
  return significant_length(digits, static_cast<int>(next - digits));
}

// Limbs in base UNIT need not be below it on the way, only below 2.8 UNIT, so that none waits for a
// carry: a quotient by the reciprocal is too small by less than 1 + limb / 2^64, and the carry that
// is added to what it leaves is less than 0.58 limbs: 1 + 2.8 * (0.055 + 0.577) < 2.8.
int multiply_out(char* digits, const Binary& binary) {
  constexpr Limb RECIPROCAL = [] {
    Limb quotient = 0;
    Limb rest = 1;
    for (int i = 0; i < 64 + CHUNK_BITS; ++i) {
      rest *= 2;
      quotient = 2 * quotient + rest / UNIT;
      rest %= UNIT;
    }
    return quotient;
  }();
  static_assert(RECIPROCAL >> 63 == 1, "the largest chunk for which it is a word");
  constexpr int MAX_CHUNKS = FEW_LIMBS * BINARY_LIMB_BITS / CHUNK_BITS + 1;
  Limb chunk[MAX_CHUNKS];
  Limb limb[MAX_CHUNKS + TOGETHER];
  const int count = (bit_count(binary) + CHUNK_BITS - 1) / CHUNK_BITS;
  for (int i = 0; i < count; ++i) chunk[i] = bits_at(binary, i * CHUNK_BITS, CHUNK_BITS);
  const int units = take_all(limb, chunk, count, [](Limb x, Limb& carry) {
    Limb quotient = 0;
    multiply_limb(x, RECIPROCAL, quotient);
    const Limb left = (x << CHUNK_BITS) - quotient * UNIT + carry;
    carry = quotient;
    return left;
  });
  return store_units(digits, limb, units);
}

}  // namespace

void load(Binary& binary, const char* digits, int length) {
  if (length <= STEP_DIGITS) {
    binary.limb()[0] = step_at(digits, length);
    return binary.trim(1);
  }
  if (length <= FEW_DIGITS) return multiply_up(binary, digits, length);
  Magnitude decimal;
  load(decimal, digits, length, 0);
  Lanes lanes;
  to_binary(lanes, decimal);
  pack(binary, lanes.limb(), lanes.count());
}

int store(char* digits, const Binary& binary) {
  if (binary.count() <= few_limbs) return multiply_out(digits, binary);
  Lanes lanes;
  const int count = (bit_count(binary) + LANE_BITS - 1) / LANE_BITS;
  for (int i = 0; i < count; ++i) lanes.limb()[i] = bits_at(binary, i * LANE_BITS, LANE_BITS);
  lanes.trim(count);
  Magnitude decimal;
  to_decimal(decimal, lanes);
  return store(digits, decimal);
}

void pack(Binary& binary, const Limb* lanes, int count) {
  Limb* limb = binary.limb();
  Limb bits = 0;
  int filled = 0;
  for (int i = 0; i < count; ++i) {
    bits |= lanes[i] << filled;
    filled += LANE_BITS;
    if (filled >= BINARY_LIMB_BITS) {
      filled -= BINARY_LIMB_BITS;
      *limb++ = bits;
      bits = lanes[i] >> (LANE_BITS - filled);
    }
  }
  *limb++ = bits;
  binary.trim(static_cast<int>(limb - binary.limb()));
}

int bit_count(const Binary& binary) {
  if (binary.is_zero()) return 0;
  const int top = binary.count() - 1;
  return top * BINARY_LIMB_BITS + static_cast<int>(std::bit_width(binary.limb()[top]));
}

void multiply(Binary& x, Limb factor) {
  Limb carry = 0;
  for (int i = 0; i < x.count(); ++i) x.limb()[i] = multiply_limb(x.limb()[i], factor, carry);
  const int count = x.count();
  x.limb()[count] = carry;
  x.trim(count + 1);
}

void shift_left(Binary& x, int n) {
  const int limbs = n / BINARY_LIMB_BITS;
  const int bits = n % BINARY_LIMB_BITS;
  Limb* limb = x.limb();
  limb[x.count()] = 0;
  for (int i = x.count(); i >= 0; --i) {
    const Limb below = i > 0 ? limb[i - 1] >> 1 >> (BINARY_LIMB_BITS - 1 - bits) : 0;
    limb[i + limbs] = limb[i] << bits | below;
  }
  std::fill_n(limb, limbs, 0);
  x.trim(x.count() + limbs + 1);
}

void shift_right(Binary& x, int n) {
  const int limbs = n / BINARY_LIMB_BITS;
  const int bits = n % BINARY_LIMB_BITS;
  const int count = std::max(x.count() - limbs, 0);
  Limb* limb = x.limb();
  limb[x.count()] = 0;
  for (int i = 0; i < count; ++i) {
    const Limb above = limb[i + limbs + 1] << 1 << (BINARY_LIMB_BITS - 1 - bits);
    limb[i] = limb[i + limbs] >> bits | above;
  }
  x.trim(count);
}

void cut(Binary& x, int width) {
  const int limbs = width / BINARY_LIMB_BITS;
  if (limbs >= x.count()) return;
  x.limb()[limbs] &= (Limb{1} << width % BINARY_LIMB_BITS) - 1;
  x.trim(limbs + 1);
}

}  // namespace omrel
