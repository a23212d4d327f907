// Binary texts, bitwise operations, shifts, and dropping a digit.
//
// Only a value that is not negative and has digits has a binary form. An operand a or b without
// one leaves a bitwise operation with the other: a & b, a | b and a ^ b are all b when a has none
// (0 when b has none either), and a copy of a when only b has none.
#include <algorithm>
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

// 2^MAX_BITS has more digits than a value may have.
constexpr int MAX_BITS = 21'600;

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

template <class Combine>
bignum bitwise(const bignum& a, const bignum& b, Combine combine) {
  if (!has_binary_form(a)) return binary_value(b);
  if (!has_binary_form(b)) return a;
  Magnitude x;
  Magnitude y;
  load_binary(x, a);
  load_binary(y, b);
  const int count = std::max(x.count(), y.count());
  std::fill(x.limb() + x.count(), x.limb() + count, 0);
  std::fill(y.limb() + y.count(), y.limb() + count, 0);
  for (int i = 0; i < count; ++i) x.limb()[i] = combine(x.limb()[i], y.limb()[i]);
  x.set_count(count);
  return value_of_binary(x);
}

// The eight low bits as '0' and '1' characters, the lowest bit last in memory.
std::uint64_t bit_characters(Limb bits) {
  const std::uint64_t copies = (bits & 0xFF) * 0x0101010101010101;
  const std::uint64_t one_each = copies & 0x0102040810204080;  // byte k keeps bit 7 - k
  return (((one_each + 0x7F7F7F7F7F7F7F7F) >> 7) & 0x0101010101010101) | ASCII_ZEROS;
}

// Writes the characters of a limb, BINARY_LIMB_BITS of them and five more that the next limb (or
// nothing) overwrites.
void write_bits(char* text, Limb limb) {
  for (int i = 0; i < 4; ++i) store_word(text + 8 * i, bit_characters(limb << 5 >> (24 - 8 * i)));
}

// 2^e for the largest e with 2^e <= m, m > 0.
Magnitude top_bit(const Magnitude& m) {
  const int top = m.count() - 1;
  double leading = static_cast<double>(m.limb()[top]);
  if (top > 0) leading += static_cast<double>(m.limb()[top - 1]) / static_cast<double>(LIMB_BASE);
  const double exponent = std::log2(leading) + top * std::log2(static_cast<double>(LIMB_BASE));
  // Rounding may be off by one next to a power of two: start no higher, and double once at most.
  const int low = static_cast<int>(exponent - 1e-6);
  Magnitude bit(1);
  if (low > 0) power(bit, Magnitude(2), low);
  Magnitude twice = bit;
  multiply_add(twice, 2, 0);
  return compare(twice, m) <= 0 ? twice : bit;
}

}  // namespace

char* bignum::inttobin(const bignum& x) {
  if (!has_binary_form(x)) return nullptr;
  Magnitude binary;
  load_binary(binary, x);
  const int bits = std::max(bit_count(binary), 1);
  char* text = static_cast<char*>(std::malloc(static_cast<std::size_t>(bits) + 1));
  if (text == nullptr) return nullptr;
  // Whole limbs are written; the leading zeros of the top one are left behind.
  char limbs[(MAX_LIMBS + 1) * BINARY_LIMB_BITS];
  char* end = limbs;
  for (int i = std::max(binary.count(), 1) - 1; i >= 0; --i, end += BINARY_LIMB_BITS) {
    write_bits(end, binary.limb()[i]);
  }
  return copy_text_n(text, end - bits, static_cast<std::size_t>(bits));
}

bignum bignum::bintoint(const char* text) {
  const char* first = text == nullptr ? nullptr : std::strchr(text, '1');
  if (first == nullptr) return bignum(0);
  const std::size_t bits = std::strlen(first);
  if (bits > MAX_BITS) overflow();
  Magnitude binary;
  const char* end = first + bits;
  int count = 0;
  while (end > first) {
    const char* begin = end - std::min<std::ptrdiff_t>(BINARY_LIMB_BITS, end - first);
    Limb limb = 0;
    for (const char* c = begin; c < end; ++c) limb = 2 * limb + (*c == '1' ? 1 : 0);
    binary.limb()[count++] = limb;
    end = begin;
  }
  binary.set_count(count);
  return value_of_binary(binary);
}

bignum bignum::operator|(const bignum& b) const {
  return bitwise(*this, b, [](Limb x, Limb y) { return x | y; });
}

bignum bignum::operator&(const bignum& b) const {
  return bitwise(*this, b, [](Limb x, Limb y) { return x & y; });
}

bignum bignum::operator^(const bignum& b) const {
  return bitwise(*this, b, [](Limb x, Limb y) { return x ^ y; });
}

// 2^(e + 1) - 1 - x, 2^e being the top bit of x, without a number longer than x.
bignum bignum::operator~() const {
  if (!has_binary_form(*this)) return bignum(0);
  Magnitude x;
  load(x, *this);
  if (x.is_zero()) return bignum(1);  // zero has one bit
  Magnitude complement = top_bit(x);
  subtract(x, complement);
  subtract(complement, Magnitude(1));
  subtract(complement, x);
  return value_of(complement, 0);
}

bignum bignum::shift_left(std::int32_t n) const {
  Magnitude x;
  load(x, *this);
  if (x.is_zero()) return bignum(0);
  Magnitude factor;
  Magnitude product;
  if (!power(factor, Magnitude(2), n) || !multiply(product, x, factor)) overflow();
  return value_of(product, 0);
}

bignum bignum::shift_right(std::int32_t n) const {
  Magnitude divisor;
  if (n >= MAX_BITS || !power(divisor, Magnitude(2), n)) return bignum(0);
  const int shift = (LIMB_DIGITS - digit_count(divisor) % LIMB_DIGITS) % LIMB_DIGITS;
  Limb scale = 1;
  for (int i = 0; i < shift; ++i) scale *= 10;
  multiply_add(divisor, scale, 0);
  Magnitude x;
  Magnitude q;
  load(x, *this, shift);
  divide_quotient(q, x, divisor);
  return value_of(q, 0);
}

bignum bignum::mul2() const {
  const Digits digits(*this);
  bignum result;
  int n = significant_length(digits.text, digits.length);
  if (n == 0) return bignum(0);
  if (add_digits(result.vlstr, digits.text, n, digits.text, n) != 0) result.vlstr[n++] = '1';
  result.finish(n, 0);
  return result;
}

bignum bignum::div10() {
  remove_leading(vlstr, 1, '\0');
  length = static_cast<int>(std::strlen(vlstr));
  return *this;
}

}  // namespace omrel
