#include "bignum/magnitude/power.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "bignum/digit_text.h"
#include "bignum/magnitude/power_table.h"

namespace omrel {
namespace {

// Raises *now, the base to the power that n has without its lowest bits, to the power n, and
// returns where that is: each product goes from one of the two magnitudes to the other.
// `times_base` multiplies *now by the base, and may exchange the two.
template <class TimesBase>
const Magnitude* raise(Magnitude* now, Magnitude* next, int n, int bits_left,
                       const TimesBase& times_base) {
  while (--bits_left >= 0) {
    if (!square(*next, *now)) return nullptr;
    std::swap(now, next);
    if (((n >> bits_left) & 1) != 0 && !times_base(now, next)) return nullptr;
  }
  return now;
}

}  // namespace

WordPower word_power(Limb base, int n) {
  if (base < 2) return {base, 0};
  WordPower p = {base, 31 - __builtin_clz(static_cast<unsigned>(n))};
  for (; p.bits_left > 0; --p.bits_left) {
    Limb next = 0;
    if (__builtin_mul_overflow(p.word, p.word, &next)) break;
    const bool bit_is_set = ((n >> (p.bits_left - 1)) & 1) != 0;
    if (bit_is_set && __builtin_mul_overflow(next, base, &next)) break;
    p.word = next;
  }
  return p;
}

const Magnitude* power(Magnitude& r, Magnitude& other, Limb base, int n, const WordPower& begun) {
  r = Magnitude(begun.word);
  return raise(&r, &other, n, begun.bits_left, [base](Magnitude* now, Magnitude*) {
    if (now->count() >= MAX_LIMBS - 1) return false;
    multiply_add(*now, base, 0);
    return true;
  });
}

const Magnitude* power(Magnitude& r, Magnitude& other, Magnitude& base, int n) {
  r = base;
  if (base.count() == 0 || (base.count() == 1 && base.limb()[0] == 1)) return &r;
  const int bits_left = 31 - __builtin_clz(static_cast<unsigned>(n));
  return raise(&r, &other, n, bits_left, [&base](Magnitude*& now, Magnitude*& next) {
    std::swap(now, next);
    return multiply(*now, *next, base);
  });
}

bool power_of_two(Magnitude& r, int n) {
  if (n > MAX_EXPONENT_OF_TWO) return false;
  int doublings = 0;  // of the exponent
  while (n >> doublings >= POWER_OF_TWO_COUNT) ++doublings;
  const PowerOfTwo& text = PowerOfTwoTable[static_cast<unsigned>(n >> doublings)];
  char digits[POWER_OF_TWO_DIGITS + 8];
  const auto length = static_cast<int>(std::strlen(text.data()));
  reverse_into_buffer(digits, text.data(), length);
  load(r, digits, length, 0);
  while (--doublings >= 0) {
    Magnitude root = r;
    square(r, root);
    if (((n >> doublings) & 1) != 0) add(r, r);
  }
  return true;
}

}  // namespace omrel
