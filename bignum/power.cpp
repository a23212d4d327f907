// Powers, factorial, Fibonacci, square root and the selectors.
//
// Repetition that cannot change the answer is not walked: powers square, factorials multiply by
// halves, Fibonacci numbers double their index, and a square root is found limb by limb. Only the
// root of a number that is negative (or has no digits) takes Newton's steps, which are its
// definition; so does every root while the debug switch shows the divisions.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "bignum/bignum.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"
#include "bignum/limbs.h"
#include "bignum/magnitude_power.h"
#include "bignum/power_table.h"

namespace omrel {
namespace {

// The value as 32 bits, INT32_MAX when it does not fit. Of a text with foreign characters, what the
// standard library's conversion reads: behind white space and a sign, up to the first such
// character. Not for negative values.
std::int32_t clamped(const bignum& n) {
  int i = significant_length(n.vlstr, n.text_length()) - 1;
  while (i >= 0 && (n.vlstr[i] == ' ' || (n.vlstr[i] >= '\t' && n.vlstr[i] <= '\r'))) --i;
  if (i >= 0 && n.vlstr[i] == '-') return 0;
  if (i >= 0 && n.vlstr[i] == '+') --i;
  std::int64_t value = 0;
  for (; i >= 0; --i) {
    const int digit = n.vlstr[i] - '0';
    if (digit < 0 || digit > 9) break;
    value = value * 10 + digit;
    if (value > INT32_MAX) return INT32_MAX;
  }
  return static_cast<std::int32_t>(value);
}

// The square root of a number below 2^60. It may be taken of a number rounded down, but that is no
// more than half a step of the root's own from a whole root, which it then is rounded to.
std::uint64_t short_root(std::uint64_t n) {
  // In 32 bits the processor has instructions for signed words only.
  const double near_root = std::sqrt(static_cast<double>(static_cast<std::int64_t>(n)));
  const std::uint64_t root = static_cast<std::uint32_t>(static_cast<std::int32_t>(near_root));
  return root * root > n ? root - 1 : root;
}

// s / 2 with s's sign, as operator/ gives it.
bignum half(const bignum& s) {
  if (debug_switch != 0) return s / bignum(2);
  bignum t = s.div2();
  if (s.negative != 0 && !t.equals_digit('0')) t.negative = 1;
  return t;
}

// Newton's steps from n downwards, until one does not lead below the estimate.
//
// A negative operand makes them wander, and some (-17 is the first) come back to an earlier
// estimate, which would repeat for ever. The estimate is compared with one kept from before, a new
// one after twice as many steps each time (R. P. Brent, An improved Monte Carlo factorization
// algorithm, BIT 20, 1980), so a circle is found with two values in hand.
bignum newton_root(const bignum& n) {
  bignum y(n);
  bignum kept(n);
  long steps = 0;
  for (long next_kept = 1;; ++steps) {
    const bignum q = n.quotient(y);
    bignum t = half(y + q);
    if (!(t < y)) return y;
    y = std::move(t);
    if (y == kept) throw EngineFailure();
    if (steps == next_kept) {
      kept = bignum(y);
      next_kept *= 2;
    }
  }
}

constexpr std::int32_t MAX_SHORT_FACTORIAL = 20;

}  // namespace

bignum bignum::pow(const bignum& x, std::int32_t n) {
  if (n == 0) return value_of_short(1, 0);
  if (n <= 1) return x;
  const std::int16_t sign = x.negative != 0 && n % 2 != 0 ? 1 : 0;
  Magnitude scratch[2];
  const Magnitude* result = nullptr;
  if (std::uint64_t base = 0; load_short(base, x) && base <= MAX_FACTOR) {
    const WordPower begun = word_power(base, n);
    if (begun.bits_left == 0) return value_of_short(begun.word, sign);
    result = power(scratch[0], scratch[1], base, n, begun);
  } else {
    Magnitude long_base;
    load(long_base, x);
    result = power(scratch[0], scratch[1], long_base, n);
  }
  if (result == nullptr) overflow();
  return value_of(*result, sign);
}

bignum bignum::pow2(const bignum& n) { return pow2(n.negative != 0 ? 0 : clamped(n)); }

bignum bignum::pow2(std::int32_t n) {
  if (n < POWER_OF_TWO_COUNT) {
    return bignum(PowerOfTwoTable[static_cast<unsigned>(std::max(n, 0))].data(), 0);
  }
  Magnitude r;
  if (!power_of_two(r, n)) overflow();
  return value_of(r, 0);
}

bignum bignum::fact(std::int32_t n) {
  if (n <= MAX_SHORT_FACTORIAL) {
    std::uint64_t product = 1;
    for (int i = 2; i <= n; ++i) product *= static_cast<std::uint64_t>(i);
    return value_of_short(product, 0);
  }
  Magnitude r;
  if (!factorial(r, n)) overflow();
  return value_of(r, 0);
}

bignum bignum::fib(std::int32_t n) {
  if (n == 0) return value_of_short(0, 0);
  if (n <= MAX_WORD_INDEX) return value_of_short(word_fibonacci(std::max(n, 1)).first, 0);
  Magnitude r;
  if (!fibonacci(r, n)) overflow();
  return value_of(r, 0);
}

bignum bignum::sqrt(const bignum& n) {
  if (debug_switch == 0 && n.negative == 0 && n.length > 0) {
    if (std::uint64_t x = 0; load_short(x, n)) return value_of_short(short_root(x), 0);
  }
  if (n.equals_digit('0')) return bignum(0);
  const Digits digits(n);
  const int length = significant_length(digits.text, digits.length);
  if (debug_switch != 0 || n.negative != 0 || length == 0) return newton_root(n);
  // An even shift that fills the top pair of limbs; the root comes out shifted by half of it.
  const int shift = (2 * LIMB_DIGITS - length % (2 * LIMB_DIGITS)) % (2 * LIMB_DIGITS) / 2 * 2;
  Magnitude m;
  Magnitude root;
  load(m, digits.text, length, shift);
  square_root(root, m);
  return value_of_shifted(root, shift / 2);
}

}  // namespace omrel
