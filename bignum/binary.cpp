// Binary texts, bitwise operations, shifts, and dropping a digit.
//
// Only a value that is not negative and has digits has a binary form. An operand a or b without
// one leaves a bitwise operation with the other: a & b, a | b and a ^ b are all b when a has none
// (0 when b has none either), and a copy of a when only b has none.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "bignum/bignum.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"
#include "bignum/limbs.h"
#include "bignum/magnitude_power.h"
#include "bignum/radix.h"
#include "support/text.h"

namespace omrel {
namespace {

// Shifts by so few bits are doublings and halvings of the text, those by fewer than these a few
// products by one word.
constexpr int MAX_STEPS = 4;
constexpr int MAX_FACTOR_BITS = 37;
constexpr int MAX_DIVISOR_BITS = 40;

// Powers of five that are below 2^32.
constexpr int MAX_FIVES = 13;
constexpr Limb POWER_OF_FIVE[MAX_FIVES + 1] = {1,       5,        25,        125,       625,
                                               3125,    15625,    78125,     390625,    1953125,
                                               9765625, 48828125, 244140625, 1220703125};

constexpr Limb LOW_BITS = (Limb{1} << BINARY_LIMB_BITS) - 1;

bool has_binary_form(const bignum& x) { return x.negative == 0 && x.length > 0; }

void load_binary(Magnitude& binary, const bignum& x) {
  Magnitude decimal;
  load(decimal, x);
  to_binary(binary, decimal);
}

bignum value_of_binary(const Magnitude& binary) {
  Magnitude decimal;
  to_decimal(decimal, binary);
  return value_of(decimal, 0);
}

// The magnitude of a value that has a binary form, 0 of one that has none.
bignum binary_value(const bignum& x) {
  if (!has_binary_form(x)) return bignum(0);
  Magnitude m;
  load(m, x);
  return value_of(m, 0);
}

// More bits than a number of so many digits can have; and digits that decide so many bits, since n
// low digits are a value modulo 10^n, and so modulo 2^n.
int deciding_digits(int length) { return length * 10 / 3 + 1; }

void load_low_binary(Magnitude& binary, const bignum& x, int digit_count) {
  const Digits digits(x);
  Magnitude decimal;
  load(decimal, digits.text, std::min(digits.length, digit_count), 0);
  to_binary(binary, decimal);
}

// Combines two values that have binary forms, as far as the digits that are looked at reach.
template <class Combine>
bignum combined(const bignum& a, const bignum& b, int a_digits, int b_digits, Combine combine) {
  std::uint64_t short_a = 0;
  std::uint64_t short_b = 0;
  if (load_short(short_a, a) && load_short(short_b, b)) {
    return value_of_short(combine(short_a, short_b), 0);
  }
  Magnitude x;
  Magnitude y;
  load_low_binary(x, a, a_digits);
  load_low_binary(y, b, b_digits);
  const int count = std::max(x.count(), y.count());
  std::fill(x.limb() + x.count(), x.limb() + count, 0);
  std::fill(y.limb() + y.count(), y.limb() + count, 0);
  for (int i = 0; i < count; ++i) x.limb()[i] = combine(x.limb()[i], y.limb()[i]);
  x.set_count(count);
  return value_of_binary(x);
}

// Whether one value has so many more digits that their common bits are found much faster.
bool is_lopsided(const bignum& a, const bignum& b) {
  return deciding_digits(std::min(a.length, b.length)) < std::max(a.length, b.length);
}

// For each value of eight bits, their '0' and '1' characters, the lowest bit last in memory.
constexpr auto BIT_CHARACTERS = [] {
  std::array<std::uint64_t, 256> words{};
  for (unsigned bits = 0; bits < words.size(); ++bits) {
    for (unsigned i = 0; i < 8; ++i) {
      words[bits] |= std::uint64_t{'0' + (bits >> i & 1)} << (56 - 8 * i);
    }
  }
  return words;
}();

// Writes the `count` low bits of a limb as whole words of characters.
void write_limb(char* text, Limb limb, int count) {
  for (limb <<= 64 - count; count > 0; count -= 8, text += 8, limb <<= 8) {
    store_word(text, BIT_CHARACTERS[static_cast<std::size_t>(limb >> 56)]);
  }
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
void read_bits(Magnitude& binary, const char* first, std::size_t bits,
               const BitsOfWord& bits_of_word) {
  constexpr int AT_ONCE = 32;
  int count = 0;
  const char* end = first + bits;
  for (; end - first >= AT_ONCE; end -= BINARY_LIMB_BITS) {
    binary.limb()[count++] = bits_at(end - AT_ONCE, AT_ONCE, bits_of_word) & LOW_BITS;
  }
  const Limb rest = bits_at(first, static_cast<int>(end - first), bits_of_word);
  binary.limb()[count++] = rest & LOW_BITS;
  binary.limb()[count++] = rest >> BINARY_LIMB_BITS;
  binary.set_count(count);
}

// The largest e with 2^e <= x, x > 0 without leading zeros; one less, perhaps, for an x just above
// 2^e.
int exponent_of(const char* digits, int length) {
  constexpr double LOG2_10 = 3.3219280948873626;
  constexpr double MARGIN = 1e-6;  // more than what rounding and the digits left out come to
  const int left_out = std::max(length - 2 * LIMB_DIGITS, 0);
  Magnitude leading;
  load(leading, digits + left_out, length - left_out, 0);
  double value = 0;
  for (int i = leading.count() - 1; i >= 0; --i) {
    value = value * static_cast<double>(LIMB_BASE) + static_cast<double>(leading.limb()[i]);
  }
  return std::max(static_cast<int>(std::log2(value) + left_out * LOG2_10 - MARGIN), 0);
}

// Takes one from a power of two above 1; it ends in 2, 4, 6 or 8.
bignum& minus_one(bignum& power) {
  --power.vlstr[0];
  return power;
}

// Characters of a limb as they are written: whole words of them.
constexpr int LIMB_CHARACTERS = (BINARY_LIMB_BITS + 7) / 8 * 8;

// Writes the bits of a number, one at least, and a NUL; up to LIMB_CHARACTERS behind the end.
void write_binary(char* text, const Magnitude& binary, int bits) {
  const int top = std::max(binary.count() - 1, 0);
  const int top_bits = bits - top * BINARY_LIMB_BITS;
  char* end = text + top_bits;
  write_limb(text, binary.is_zero() ? 0 : binary.limb()[top], top_bits);
  for (int i = top - 1; i >= 0; --i, end += BINARY_LIMB_BITS) {
    write_limb(end, binary.limb()[i], BINARY_LIMB_BITS);
  }
  *end = '\0';
}

}  // namespace

char* bignum::inttobin(const bignum& x, const char* prefix) {
  if (!has_binary_form(x)) return nullptr;
  Magnitude binary;
  load_binary(binary, x);
  const int bits = std::max(bit_count(binary), 1);
  const std::size_t prefix_length = std::strlen(prefix);
  char* text = static_cast<char*>(
      std::malloc(prefix_length + static_cast<std::size_t>(bits) + LIMB_CHARACTERS));
  if (text == nullptr) return nullptr;
  std::copy_n(prefix, prefix_length, text);
  write_binary(text + prefix_length, binary, bits);
  return text;
}

bool bignum::write_short_binary(char* text, const bignum& x) {
  std::uint64_t magnitude = 0;
  if (!has_binary_form(x) || !load_short(magnitude, x)) return false;
  const int bits = 64 - std::countl_zero(magnitude | 1);
  write_limb(text, magnitude, bits);
  text[bits] = '\0';
  return true;
}

bignum bignum::bintoint(const char* text) {
  const char* first = text == nullptr ? nullptr : std::strchr(text, '1');
  if (first == nullptr) return value_of_short(0, 0);
  const std::size_t bits = std::strlen(first);
  if (bits > MAX_EXPONENT_OF_TWO + 1) overflow();
  if (bits < 64) return value_of_short(bits_at(first, static_cast<int>(bits), bits_of), 0);
  // As a rule there is nothing but '0' and '1', which differ in one bit.
  Magnitude binary;
  std::uint64_t marks = 0;
  read_bits(binary, first, bits, [&marks](std::uint64_t characters) {
    marks |= characters ^ ASCII_ZEROS;
    return gathered(characters);
  });
  if ((marks & 0xFEFEFEFEFEFEFEFE) != 0) read_bits(binary, first, bits, bits_of);
  return value_of_binary(binary);
}

bignum bignum::operator&(const bignum& b) const {
  if (!has_binary_form(*this)) return binary_value(b);
  if (!has_binary_form(b)) return *this;
  return combined(*this, b, deciding_digits(b.length), deciding_digits(length),
                  [](Limb x, Limb y) { return x & y; });
}

// a | b is a + (b - (a & b)), where no step is longer than the answer.
bignum bignum::operator|(const bignum& b) const {
  if (!has_binary_form(*this)) return binary_value(b);
  if (!has_binary_form(b)) return *this;
  if (is_lopsided(*this, b)) return (bignum(b) - (*this & b)) + *this;
  return combined(*this, b, length, b.length, [](Limb x, Limb y) { return x | y; });
}

// a ^ b is (a - (a & b)) + (b - (a & b)).
bignum bignum::operator^(const bignum& b) const {
  if (!has_binary_form(*this)) return binary_value(b);
  if (!has_binary_form(b)) return *this;
  if (is_lopsided(*this, b)) {
    const bignum common = *this & b;
    return (bignum(*this) - common) + (bignum(b) - common);
  }
  return combined(*this, b, length, b.length, [](Limb x, Limb y) { return x ^ y; });
}

bignum bignum::low_bits(std::int32_t width) const {
  if (width > MAX_EXPONENT_OF_TWO) overflow();
  if (!has_binary_form(*this)) {
    bignum mask = pow2(width);
    return minus_one(mask);
  }
  if (width >= deciding_digits(length)) return binary_value(*this);
  Magnitude x;
  load_low_binary(x, *this, width);
  const int whole = width / BINARY_LIMB_BITS;
  if (whole < x.count()) {
    x.limb()[whole] &= (Limb{1} << width % BINARY_LIMB_BITS) - 1;
    x.set_count(whole + 1);
  }
  return value_of_binary(x);
}

// 2^e - 1 - (x - 2^e), 2^e being the top bit of x: no number on the way is longer than x.
bignum bignum::operator~() const {
  if (!has_binary_form(*this)) return value_of_short(0, 0);
  if (std::uint64_t x = 0; load_short(x, *this)) {
    const std::uint64_t own_bits = ~std::uint64_t{0} >> std::countl_zero(x | 1);  // zero has one
    return value_of_short(x ^ own_bits, 0);
  }
  const Digits digits(*this);
  const int n = significant_length(digits.text, digits.length);
  if (n == 0) return value_of_short(1, 0);  // nothing but leading zeros, and many of them
  for (int exponent = exponent_of(digits.text, n);; ++exponent) {
    bignum power = pow2(exponent);
    bignum rest = power - *this;
    power.set_sign(0);
    rest.set_sign(0);
    bignum complement = minus_one(power) - rest;
    if (complement.negative == 0) return complement;
  }
}

bignum bignum::shift_left(std::int32_t n) const {
  if (std::uint64_t x = 0; load_short(x, *this) && n <= std::countl_zero(x)) {
    return value_of_short(n < 64 ? x << n : 0, 0);
  }
  if (n <= MAX_STEPS) {
    bignum result = mul2();
    for (int i = 1; i < n; ++i) result = result.mul2();
    return result;
  }
  Magnitude x;
  load(x, *this);
  if (x.is_zero()) return value_of_short(0, 0);
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
  if (std::uint64_t x = 0; load_short(x, *this)) return value_of_short(n < 64 ? x >> n : 0, 0);
  // 10^length < 2^(10 length / 3 + 1)
  if (n > length * 10 / 3) return value_of_short(0, 0);
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
      multiply_add(x, POWER_OF_FIVE[std::min(left, MAX_FIVES)], 0);
    }
    return value_of_shifted(x, n);
  }
  Magnitude divisor;
  if (!power_of_two(divisor, n)) return value_of_short(0, 0);
  const int shift = (LIMB_DIGITS - digit_count(divisor) % LIMB_DIGITS) % LIMB_DIGITS;
  Limb scale = 1;
  for (int i = 0; i < shift; ++i) scale *= 10;
  multiply_add(divisor, scale, 0);
  load(x, *this, shift);
  divide_quotient(q, x, divisor);
  return value_of(q, 0);
}

bignum bignum::mul2() const {
  const Digits digits(*this);
  bignum result;
  const int n = significant_length(digits.text, digits.length);
  const int sum_length = n + add_digits(result.vlstr, digits.text, n, digits.text, n);
  result.finish(std::max(sum_length, 1), 0);
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

}  // namespace omrel
