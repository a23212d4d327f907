// Powers, factorials and Fibonacci numbers. Repetition that cannot change the answer is not walked:
// powers square, factorials multiply by halves, Fibonacci numbers double their index.
#include <algorithm>
#include <cstdint>

#include "bignum/bignum.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"
#include "bignum/magnitude/factorial.h"
#include "bignum/magnitude/fibonacci.h"
#include "bignum/magnitude/magnitude.h"
#include "bignum/magnitude/power.h"
#include "bignum/magnitude/power_table.h"

namespace omrel {
namespace {

// The value as 32 bits, INT32_MAX when it does not fit. Of a text with foreign characters, what the
// standard library's conversion reads: behind white space and a sign, up to the first such
// character. Not for negative values.
std::int32_t clamped(const bignum& n) {
  int i = significant_length(n.vlstr, n.text_length()) - 1;
  while (i >= 0 && (n.vlstr[i] == ' ' || (n.vlstr[i] >= '\t' && n.vlstr[i] <= '\r'))) --i;
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

constexpr std::int32_t MAX_WORD_FACTORIAL = 20;  // 21! has more than 64 bits

// Between these a factorial is multiplied in binary.
constexpr std::int32_t MIN_BINARY_FACTORIAL = 60;
constexpr std::int32_t MAX_BINARY_FACTORIAL = sizeof(void*) > 4 ? 350 : 130;

}  // namespace

bignum bignum::pow(const bignum& x, std::int32_t n) {
  if (n == 0) return value_of(1, 0);
  if (n <= 1) return x;
  const std::int16_t sign = x.negative != 0 && n % 2 != 0 ? 1 : 0;
  Magnitude scratch[2];
  const Magnitude* result = nullptr;
  if (std::uint64_t base = 0; load_small(base, x) && base <= MAX_FACTOR) {
    const WordPower begun = word_power(base, n);
    if (begun.bits_left == 0) return value_of(begun.word, sign);
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
  if (n < 64) return value_of(Limb{1} << std::max(n, 0), 0);
  if (n < POWER_OF_TWO_COUNT) return bignum(PowerOfTwoTable[static_cast<unsigned>(n)].data(), 0);
  Magnitude r;
  if (!power_of_two(r, n)) overflow();
  return value_of(r, 0);
}

bignum bignum::fact(std::int32_t n) {
  if (n <= MAX_WORD_FACTORIAL) {
    std::uint64_t product = 1;
    for (int i = 2; i <= n; ++i) product *= static_cast<std::uint64_t>(i);
    return value_of(product, 0);
  }
  if (n >= MIN_BINARY_FACTORIAL && n <= MAX_BINARY_FACTORIAL) {
    Binary product;
    factorial(product, n);
    return value_of(product);
  }
  Magnitude r;
  if (!factorial(r, n)) overflow();
  return value_of(r, 0);
}

bignum bignum::fib(std::int32_t n) {
  if (n == 0) return value_of(0, 0);
  if (n <= MAX_WORD_INDEX) return value_of(word_fibonacci(std::max(n, 1)).first, 0);
  Magnitude r;
  if (!fibonacci(r, n)) overflow();
  return value_of(r, 0);
}

}  // namespace omrel
