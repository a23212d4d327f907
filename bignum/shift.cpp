// Shifts: products and quotients by a power of two, or, where a width cuts them down, shifts of as
// many binary digits as are left.
#include <algorithm>
#include <array>
#include <bit>

#include "bignum/bignum.h"
#include "bignum/convert.h"
#include "bignum/magnitude/power.h"

namespace omrel {
namespace {

// Shifts by so few bits are doublings and halvings of the text, those by fewer than these a few
// products by one word.
constexpr int MAX_STEPS = 4;
constexpr int MAX_FACTOR_BITS = 37;
constexpr int MAX_DIVISOR_BITS = 40;

// What a right shift by fewer multiplies by: powers of five, those below 2^32 at once.
constexpr int MAX_FIVES = 13;
constexpr auto POWER_OF_FIVE = [] {
  std::array<Limb, MAX_FIVES + 1> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 5 * powers[i - 1];
  return powers;
}();
static_assert(POWER_OF_FIVE[MAX_FIVES] <= MAX_FACTOR);
static_assert((MAX_DIVISOR_BITS - 1) * 7 / 10 < MAX_SHIFT, "5^n has more than 0.699 n digits");

}  // namespace

bignum bignum::shift_left(std::int32_t n) const {
  if (std::uint64_t x = 0; load_small(x, *this) && n <= std::countl_zero(x)) {
    return value_of(n < 64 ? x << n : 0, 0);
  }
  if (n <= MAX_STEPS) {
    bignum result = mul2();
    for (int i = 1; i < n; ++i) result = result.mul2();
    return result;
  }
  Magnitude x;
  load(x, *this);
  if (x.is_zero()) return value_of(0, 0);
  if (n < MAX_FACTOR_BITS) {
    multiply_add(x, Limb{1} << n, 0);
    return value_of(x, 0);
  }
  Magnitude factor;
  Magnitude product;
  if (!power_of_two(factor, n) || !multiply(product, x, factor)) overflow();
  return value_of(product, 0);
}

bignum bignum::shift_right(std::int32_t n) const {
  if (std::uint64_t x = 0; load_small(x, *this)) return value_of(n < 64 ? x >> n : 0, 0);
  if (n >= most_bits(length)) return value_of(0, 0);
  if (n <= MAX_STEPS) {
    bignum result = div2();
    for (int i = 1; i < n; ++i) result.halve();
    return result;
  }
  Magnitude x;
  Magnitude q;
  if (n < MAX_DIVISOR_BITS) {
    // a / 2^n is a 5^n / 10^n, and multiplying is faster than dividing.
    load(x, *this);
    for (int left = n; left > 0; left -= MAX_FIVES) {
      multiply_add(x, POWER_OF_FIVE[static_cast<unsigned>(std::min(left, MAX_FIVES))], 0);
    }
    return value_of_shifted(x, n);
  }
  Magnitude divisor;
  if (!power_of_two(divisor, n)) return value_of(0, 0);
  const int shift = digits_to_fill(LIMB_DIGITS, digit_count(divisor));
  Limb scale = 1;
  for (int i = 0; i < shift; ++i) scale *= 10;
  multiply_add(divisor, scale, 0);
  load(x, *this, shift);
  divide_quotient(q, x, divisor);
  return value_of(q, 0);
}

bignum bignum::shift_left(std::int32_t n, std::int32_t width) const {
  const int bits = most_bits(length);
  // An uncut value that is too long ends the process.
  if (n > MAX_EXPONENT_OF_TWO - bits || width >= bits + n) return shift_left(n).low_bits(width);
  Binary x;
  load_binary(x, *this, std::max(width - n, 0));
  omrel::shift_left(x, n);
  cut(x, width);
  return value_of(x);
}

bignum bignum::shift_right(std::int32_t n, std::int32_t width) const {
  const int bits = most_bits(length);
  if (n >= bits || width >= bits - n) return shift_right(n).low_bits(width);
  Binary x;
  load_binary(x, *this, n + width);
  omrel::shift_right(x, n);
  cut(x, width);
  return value_of(x);
}

}  // namespace omrel
