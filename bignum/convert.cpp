#include "bignum/convert.h"

#include <cstring>

#include "bignum/digit_text.h"

namespace omrel {

void load(Magnitude& m, const bignum& b, int shift) {
  const Digits digits(b);
  load(m, digits.text, digits.length, shift);
}

bignum value_of(const Magnitude& m, std::int16_t sign) {
  if (m.count() > MAX_DIGITS / LIMB_DIGITS + 1) overflow();
  bignum result;
  const int digit_count = store(result.vlstr, m);
  if (digit_count == 0) result.vlstr[0] = '0';
  result.finish(digit_count == 0 ? 1 : digit_count, sign);
  return result;
}

bignum value_of_shifted(const Magnitude& m, int shift) {
  bignum result;
  const int digit_count = store(result.vlstr, m) - shift;
  if (digit_count <= 0) return bignum(0);
  std::memmove(result.vlstr, result.vlstr + shift, static_cast<std::size_t>(digit_count));
  result.finish(digit_count, 0);
  return result;
}

}  // namespace omrel
