// Multiplication: on limbs, with the stored length that adding one shifted row per digit would
// leave: both lengths less one, and one more if the last addition or row carried.
#include <algorithm>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/convert.h"

namespace omrel {
namespace {

// What the rows of leading zeros leave, as far as there is room. No row at all leaves the "0" that
// the sum starts from; rows without digits, their shifts.
int rows_length(int a_length, int b_length) {
  if (b_length == 0) return 1;
  return std::clamp(a_length + b_length - 1, 1, MAX_DIGITS - 1);
}

bignum product(const bignum& a, const bignum& b, std::int16_t sign) {
  std::uint64_t small_a = 0;
  std::uint64_t small_b = 0;
  if (a.length <= SMALL_DIGITS / 2 && b.length <= SMALL_DIGITS / 2 && load_small(small_a, a) &&
      load_small(small_b, b)) {
    return value_of(small_a * small_b, sign);
  }
  Magnitude x;
  Magnitude y;
  Magnitude xy;
  load(x, a);
  if (&a != &b) load(y, b);
  const bool fits = &a != &b ? multiply(xy, x, y) : x.is_zero() || square(xy, x);
  if (!fits) overflow();
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
    result.end_digits(shown, sign);
  }
  return result;
}

}  // namespace omrel
