// Binary texts and bitwise operations.
//
// Only a value that is not negative and has digits has a binary form. An operand a or b without
// one leaves a bitwise operation with the other: a & b, a | b and a ^ b are all b when a has none
// (0 when b has none either), and a copy of a when only b has none.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"
#include "bignum/magnitude/power.h"
#include "bignum/text_form.h"

namespace omrel {
namespace {

// The magnitude of a value that has a binary form, 0 of one that has none.
bignum binary_value(const bignum& x) {
  if (!x.has_binary_form()) return value_of(0, 0);
  if (x.plain) return x;
  Magnitude m;
  load(m, x);
  return value_of(m, 0);
}

// Combines two binary numbers.
template <class Combine>
bignum combined(Binary& x, Binary& y, Combine combine) {
  const int count = std::max(x.count(), y.count());
  std::fill(x.limb() + x.count(), x.limb() + count, 0);
  std::fill(y.limb() + y.count(), y.limb() + count, 0);
  for (int i = 0; i < count; ++i) x.limb()[i] = combine(x.limb()[i], y.limb()[i]);
  x.trim(count);
  return value_of(x);
}

// The same for two values that have binary forms, as far as the digits that are looked at reach.
template <class Combine>
bignum combined(const bignum& a, const bignum& b, int a_digits, int b_digits, Combine combine) {
  std::uint64_t small_a = 0;
  std::uint64_t small_b = 0;
  if (load_small(small_a, a) && load_small(small_b, b)) {
    return value_of(combine(small_a, small_b), 0);
  }
  Binary x;
  Binary y;
  load_binary(x, a, a_digits);
  load_binary(y, b, b_digits);
  return combined(x, y, combine);
}

// Reads the lowest bits of a value, width of them; without a binary form all of them are set.
void load_low_bits(Binary& x, const bignum& a, int width) {
  if (a.has_binary_form()) {
    load_binary(x, a, width);
  } else {
    const int count = width / BINARY_LIMB_BITS + 1;
    std::fill_n(x.limb(), count, ~Limb{0});
    x.trim(count);
  }
  cut(x, width);
}

// Combines two values, both cut to their lowest bits.
template <class Combine>
bignum combined_low_bits(const bignum& a, const bignum& b, std::int32_t width, Combine combine) {
  if (width > MAX_EXPONENT_OF_TWO) overflow();
  Binary x;
  Binary y;
  load_low_bits(x, a, width);
  load_low_bits(y, b, width);
  return combined(x, y, combine);
}

// Whether one value has so many more digits that their common bits are found much faster.
bool is_lopsided(const bignum& a, const bignum& b) {
  return most_bits(std::min(a.length, b.length)) < std::max(a.length, b.length);
}

// The eight bits at the bottoms of the bytes, the lowest byte's the highest: byte k goes to bit 7 -
// k of the top byte.
std::uint64_t gathered(std::uint64_t word) {
  return ((word & 0x0101010101010101) * 0x8040201008040201) >> 56;
}

// The bits that eight characters stand for, the first one the highest: 1 in a byte that is '1'.
std::uint64_t bits_of(std::uint64_t characters) {
  constexpr std::uint64_t LOW_SEVEN = 0x7F7F7F7F7F7F7F7F;
  const std::uint64_t other = characters ^ 0x3131313131313131;  // zero where there is a '1'
  return gathered(~(((other & LOW_SEVEN) + LOW_SEVEN) | other | LOW_SEVEN) >> 7);
}

// The value of up to 64 characters; `bits_of_word` reads eight.
template <class BitsOfWord>
std::uint64_t bits_at(const char* text, int count, const BitsOfWord& bits_of_word) {
  std::uint64_t bits = 0;
  for (; count >= 8; count -= 8, text += 8) bits = (bits << 8) | bits_of_word(load_word(text));
  for (; count > 0; --count) bits = 2 * bits + (*text++ == '1' ? 1 : 0);
  return bits;
}

template <class BitsOfWord>
void read_bits(Binary& binary, const char* first, std::size_t bits,
               const BitsOfWord& bits_of_word) {
  int count = 0;
  const char* end = first + bits;
  for (; end - first >= BINARY_LIMB_BITS; end -= BINARY_LIMB_BITS) {
    binary.limb()[count++] = bits_at(end - BINARY_LIMB_BITS, BINARY_LIMB_BITS, bits_of_word);
  }
  binary.limb()[count++] = bits_at(first, static_cast<int>(end - first), bits_of_word);
  binary.trim(count);
}

// The largest e with 2^e <= x, x > 0 without leading zeros; one less, perhaps, for an x just above
// 2^e.
int exponent_of(const char* digits, int length) {
  constexpr double LOG2_10 = 3.3219280948873626;
  // More than the digits left out come to, and rounding in any mode, which is below 10^-10: of a
  // value below 2^54, its logarithm, and a number of bits below 2^15.
  constexpr double MARGIN = 1e-6;
  const int left_out = std::max(length - 2 * LIMB_DIGITS, 0);
  Magnitude leading;
  load(leading, digits + left_out, length - left_out, 0);
  double value = 0;
  for (int i = leading.count() - 1; i >= 0; --i) {
    value = value * static_cast<double>(LIMB_BASE) + static_cast<double>(leading.limb()[i]);
  }
  return std::max(static_cast<int>(std::log2(value) + left_out * LOG2_10 - MARGIN), 0);
}

}  // namespace

char* bignum::inttobin(const bignum& x) {
  return x.has_binary_form() ? heap_text(BinaryText(x, false)) : nullptr;
}

bignum bignum::bintoint(const char* text) {
  const char* first = text == nullptr ? nullptr : std::strchr(text, '1');
  if (first == nullptr) return value_of(0, 0);
  const std::size_t bits = std::strlen(first);
  if (bits > MAX_EXPONENT_OF_TWO + 1) overflow();
  if (bits < 64) return value_of(bits_at(first, static_cast<int>(bits), bits_of), 0);
  // As a rule there is nothing but '0' and '1', which differ in one bit.
  Binary binary;
  std::uint64_t marks = 0;
  read_bits(binary, first, bits, [&marks](std::uint64_t characters) {
    marks |= characters ^ ASCII_ZEROS;
    return gathered(characters);
  });
  if ((marks & 0xFEFEFEFEFEFEFEFE) != 0) read_bits(binary, first, bits, bits_of);
  return value_of(binary);
}

bignum bignum::bit_and(const bignum& b, std::int32_t width) const {
  constexpr auto BOTH = [](Limb x, Limb y) { return x & y; };
  if (width > 0) return combined_low_bits(*this, b, width, BOTH);
  if (!has_binary_form()) return binary_value(b);
  if (!b.has_binary_form()) return *this;
  return combined(*this, b, most_bits(b.length), most_bits(length), BOTH);
}

// a | b is a + (b - (a & b)), where no step is longer than the answer.
bignum bignum::bit_or(const bignum& b, std::int32_t width) const {
  constexpr auto EITHER = [](Limb x, Limb y) { return x | y; };
  if (width > 0) return combined_low_bits(*this, b, width, EITHER);
  if (!has_binary_form()) return binary_value(b);
  if (!b.has_binary_form()) return *this;
  if (is_lopsided(*this, b)) return (bignum(b) - (*this & b)) + *this;
  return combined(*this, b, length, b.length, EITHER);
}

// a ^ b is (a - (a & b)) + (b - (a & b)).
bignum bignum::operator^(const bignum& b) const {
  if (!has_binary_form()) return binary_value(b);
  if (!b.has_binary_form()) return *this;
  if (is_lopsided(*this, b)) {
    const bignum common = *this & b;
    return (bignum(*this) - common) + (bignum(b) - common);
  }
  return combined(*this, b, length, b.length, [](Limb x, Limb y) { return x ^ y; });
}

bignum bignum::low_bits(std::int32_t width) const {
  if (width > MAX_EXPONENT_OF_TWO) overflow();
  if (has_binary_form() && width >= most_bits(length)) return binary_value(*this);
  Binary x;
  load_low_bits(x, *this, width);
  return value_of(x);
}

// 2^e - 1 - (x - 2^e), 2^e being the top bit of x: no number on the way is longer than x.
bignum bignum::operator~() const {
  if (!has_binary_form()) return value_of(0, 0);
  if (std::uint64_t x = 0; load_small(x, *this)) {
    const std::uint64_t own_bits = ~std::uint64_t{0} >> std::countl_zero(x | 1);  // zero has one
    return value_of(x ^ own_bits, 0);
  }
  const Digits digits(*this);
  const int n = significant_length(digits.text, digits.length);
  if (n == 0) return value_of(1, 0);  // none but foreign characters, which count as zeros
  for (int exponent = exponent_of(digits.text, n);; ++exponent) {
    bignum power = pow2(exponent);
    bignum rest = power - *this;
    power.set_sign(0);
    rest.set_sign(0);
    --power.vlstr[0];  // a power of two above 1 ends in 2, 4, 6 or 8
    bignum complement = power - rest;
    if (complement.negative == 0) return complement;
  }
}

}  // namespace omrel
