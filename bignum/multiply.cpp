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

}  // namespace

bignum bignum::operator*(const bignum& b) const {
  Magnitude x;
  Magnitude y;
  Magnitude product;
  load(x, *this);
  load(y, b);
  if (!multiply(product, x, y)) overflow();
  bignum result = value_of(product, (negative != 0) == (b.negative != 0) ? 0 : 1);
  const int shown = std::max(result.length, rows_length(length, b.length));
  std::memset(result.vlstr + result.length, '0', static_cast<std::size_t>(shown - result.length));
  result.finish(shown, result.negative);
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
    length += n;
    vlstr[length] = '\0';
  }
  return *this;
}

}  // namespace omrel
