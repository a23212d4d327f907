// Products and quotients by 2, by powers of ten and by one digit, on the digit text itself.
#include <algorithm>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/digit_text.h"

namespace omrel {

bignum bignum::div2() const {
  bignum half;
  half.set_to_half(*this);
  return half;
}

void bignum::set_to_half(const bignum& b) {
  const Digits digits(b);
  end_digits(std::max(halve_digits(vlstr, digits.text, digits.length), 1), 0);
}

bignum bignum::mul2() const {
  const Digits digits(*this);
  bignum result;
  const int n = significant_length(digits.text, digits.length);
  const int sum_length = n + add_digits(result.vlstr, digits.text, n, digits.text, n);
  result.end_digits(std::max(sum_length, 1), 0);
  return result;
}

bignum bignum::div10() {
  drop_digit();
  return *this;
}

void bignum::drop_digit() {
  const int n = text_length();
  if (n < 64) {
    // Words are read where they were stored, so that no load waits for two stores; a longer text
    // moves faster all at once.
    int i = 0;
    for (; i + 8 <= n; i += 8) {
      store_word(vlstr + i, (load_word(vlstr + i) >> 8) | (load_word(vlstr + i + 8) << 56));
    }
    store_word(vlstr + i, load_word(vlstr + i) >> 8);
  } else {
    std::memmove(vlstr, vlstr + 1, static_cast<std::size_t>(n));
  }
  length = std::max(n - 1, 0);
}

bignum bignum::multiply_digit(int m) const {
  bignum product = *this * bignum(m);
  if (length == 0) product.end_digits(0, 0);
  product.negative = 0;
  return product;
}

bignum bignum::shift_digits(int n) {
  if (n < MAX_DIGITS - length) {
    std::memmove(vlstr + n, vlstr, static_cast<std::size_t>(length));
    std::memset(vlstr, '0', static_cast<std::size_t>(n));
    length += n;
    store_word(vlstr + length, 0);
  }
  return *this;
}

}  // namespace omrel
