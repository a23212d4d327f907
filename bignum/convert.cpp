#include "bignum/convert.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "bignum/digit_text.h"

namespace omrel {

static_assert(BUFFER_BYTES >= MAX_DIGITS + MAX_SHIFT + LIMB_DIGITS + 8);

bool load_small(std::uint64_t& magnitude, const bignum& b) {
  const int length = b.length < 8 ? b.length : significant_length(b.vlstr, b.length);
  if (length > SMALL_DIGITS || !b.plain) return false;
  const auto eight_at = [&](int i) { return number_of(load_word(b.vlstr + i)); };
  magnitude = eight_at(0);
  if (length > 8) magnitude += eight_at(8) * LIMB_BASE;
  if (length > 16) magnitude += eight_at(16) * (LIMB_BASE * LIMB_BASE);
  return true;
}

void set(bignum& b, std::uint64_t magnitude) {
  b.plain = true;
  if (magnitude < 100) {
    b.length = magnitude < 10 ? 1 : 2;
    store_word(b.vlstr, magnitude < 10 ? '0' + magnitude : word_of_pair(magnitude) & 0xFFFF);
    return;
  }
  char* last = b.vlstr;
  for (; magnitude >= LIMB_BASE; magnitude /= LIMB_BASE, last += LIMB_DIGITS) {
    store_word(last, word_of(magnitude % LIMB_BASE));
  }
  const std::uint64_t top = word_of(magnitude);
  const int zero_bits = std::countl_zero(top ^ ASCII_ZEROS) & ~7;
  store_word(last, top & (~std::uint64_t{0} >> zero_bits));
  store_word(last + LIMB_DIGITS, 0);
  b.length = static_cast<int>(last - b.vlstr) + LIMB_DIGITS - zero_bits / 8;
}

bignum value_of(std::uint64_t magnitude, std::int16_t sign) {
  bignum result;
  result.negative = sign;
  set(result, magnitude);
  return result;
}

void load(Magnitude& m, const bignum& b, int shift) {
  const Digits digits(b);
  load(m, digits.text, digits.length, shift);
}

void load_binary(Binary& binary, const bignum& b, int digit_count) {
  const Digits digits(b);
  load(binary, digits.text, std::min(digits.length, digit_count));
}

bignum value_of(const Magnitude& m, std::int16_t sign) {
  if (m.count() > MAX_DIGITS / LIMB_DIGITS + 1) overflow();
  bignum result;
  const int digit_count = store(result.vlstr, m);
  if (digit_count == 0) result.vlstr[0] = '0';
  result.end_digits(digit_count == 0 ? 1 : digit_count, sign);
  return result;
}

bignum value_of_shifted(const Magnitude& m, int shift) {
  bignum result;
  const int digit_count = store(result.vlstr, m) - shift;
  if (digit_count <= 0) return bignum(0);
  std::memmove(result.vlstr, result.vlstr + shift, static_cast<std::size_t>(digit_count));
  result.end_digits(digit_count, 0);
  return result;
}

bignum value_of(const Binary& binary) {
  if (binary.count() <= 1) return value_of(binary.is_zero() ? 0 : binary.limb()[0], 0);
  bignum result;
  result.end_digits(store(result.vlstr, binary), 0);
  return result;
}

}  // namespace omrel
