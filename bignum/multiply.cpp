// Multiplication: on limbs, with the stored length that adding one shifted row per digit would
// leave: both lengths less one, and one more if the last addition or row carried.
#include <algorithm>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"
#include "bignum/limbs.h"

namespace omrel {
namespace {

// What the rows of leading zeros leave, as far as there is room. No row at all leaves the "0" that
// the sum starts from; rows without digits, their shifts.
int rows_length(int a_length, int b_length) {
  if (b_length == 0) return 1;
  return std::clamp(a_length + b_length - 1, 1, MAX_DIGITS - 1);
}

bignum product(const bignum& a, const bignum& b, std::int16_t sign) {
  std::uint64_t short_a = 0;
  std::uint64_t short_b = 0;
  if (a.length <= SHORT_DIGITS / 2 && b.length <= SHORT_DIGITS / 2 && load_short(short_a, a) &&
      load_short(short_b, b)) {
    return value_of_short(short_a * short_b, sign);
  }
  Magnitude x;
  Magnitude y;
  Magnitude xy;
  load(x, a);
  load(y, b);
  if (!multiply(xy, x, y)) overflow();
  return value_of(xy, sign);
}

}  // namespace

bignum bignum::operator*(const bignum& b) const {
  const std::int16_t sign = (negative != 0) == (b.negative != 0) ? 0 : 1;
  bignum result = product(*this, b, sign);
  const int shown = rows_length(length, b.length);
  if (shown > result.length) {
    const auto missing = static_cast<std::size_t>(shown - result.length);
    std::memset(result.vlstr + result.length, '0', missing);
    result.finish(shown, sign);
  }
  return result;
}

bignum bignum::multiply_digit(int m) const {
  const Digits digits(*this);
  bignum result;
  int carry = 0;  // 0 <= carry <= 8
  for (int i = 0; i < digits.length; ++i) {
    const int p = (digits.text[i] - '0') * m + carry;
    carry = p / 10;
    result.vlstr[i] = static_cast<char>('0' + p % 10);
  }
  int n = digits.length;
  if (carry != 0) result.vlstr[n++] = static_cast<char>('0' + carry);
  result.finish(n, 0);
  return result;
}

bignum bignum::shift_digits(int n) {
  if (n < MAX_DIGITS - length) {
    std::memmove(vlstr + n, vlstr, static_cast<std::size_t>(length));
    std::memset(vlstr, '0', static_cast<std::size_t>(n));
    const bool was_plain = plain;
    finish(length + n, negative);
    plain = was_plain;
  }
  return *this;
}

}  // namespace omrel
