#include "bignum/digit_text.h"

#include <algorithm>
#include <bit>

namespace omrel {
namespace {

static_assert(std::endian::native == std::endian::little, "digit texts are read as words");

constexpr std::uint64_t LOW_NIBBLES = 0x0F0F0F0F0F0F0F0F;
constexpr std::uint64_t HIGH_BITS = 0x8080808080808080;
constexpr std::uint64_t CARRY_BIAS = 0x9696969696969696;  // 0x100 - 10 - 2 * '0'

std::uint64_t reversed(std::uint64_t word) { return __builtin_bswap64(word); }

// Turns a biased sum or a difference into ASCII: a byte with its high bit set did not carry (or
// did borrow) and is six too high in its low nibble.
std::uint64_t to_ascii(std::uint64_t word) {
  const std::uint64_t high = word & HIGH_BITS;
  const std::uint64_t sixes = (high >> 5) | (high >> 6);
  return ((word & LOW_NIBBLES) - sixes) | ASCII_ZEROS;
}

// The eight digits of the text at position i, '0' from its length on.
std::uint64_t digits_at(const char* text, int i, int length) {
  if (i + 8 <= length) return load_word(text + i);
  return i < length ? load_tail(text + i, length - i) : ASCII_ZEROS;
}

}  // namespace

bool reverse_into_buffer(char* buffer, const char* text, int n) {
  bool digits = true;
  const char* end = text + n;
  for (; end - text >= 8; end -= 8, buffer += 8) {
    const std::uint64_t word = reversed(load_word(end - 8));
    digits &= all_digits(word);
    store_word(buffer, word);
  }
  for (; end > text; ++buffer) {
    *buffer = *--end;
    digits &= *buffer >= '0' && *buffer <= '9';
  }
  return digits;
}

void reverse_from_buffer(char* text, const char* buffer, int n) {
  for (; n >= 8; n -= 8, text += 8) store_word(text, reversed(load_word(buffer + n - 8)));
  while (n > 0) *text++ = buffer[--n];
}

int significant_length(const char* text, int length) {
  while (length >= 8 && load_word(text + length - 8) == ASCII_ZEROS) length -= 8;
  while (length > 0 && text[length - 1] == '0') --length;
  return length;
}

int compare_significant(const char* x, int x_length, const char* y, int y_length) {
  if (x_length != y_length) return x_length < y_length ? -1 : 1;
  int i = x_length;
  for (; i >= 8; i -= 8) {
    const std::uint64_t a = load_word(x + i - 8);
    const std::uint64_t b = load_word(y + i - 8);
    if (a != b) return a < b ? -1 : 1;  // the highest digit is in the highest byte
  }
  for (; i > 0; --i) {
    if (x[i - 1] != y[i - 1]) return x[i - 1] < y[i - 1] ? -1 : 1;
  }
  return 0;
}

int add_digits(char* sum, const char* x, int x_length, const char* y, int y_length) {
  std::uint64_t carry = 0;
  std::uint64_t ascii = 0;
  // 0 <= carry <= 1; each byte of x + bias is at most 0xCF, so adding the carry overflows none.
  for (int i = 0; i < x_length; i += 8) {
    const std::uint64_t a = digits_at(x, i, x_length) + CARRY_BIAS + carry;
    const std::uint64_t total = a + digits_at(y, i, y_length);
    carry = total < a;
    ascii = to_ascii(total);
    store_word(sum + i, ascii);
  }
  // A text that does not fill its last word carries into the word's next digit.
  const int used = x_length % 8;
  return static_cast<int>(used == 0 ? carry : (ascii >> (8 * used)) & 1);
}

void subtract_digits(char* difference, const char* x, int x_length, const char* y, int y_length) {
  std::uint64_t borrow = 0;
  for (int i = 0; i < x_length; i += 8) {
    const std::uint64_t a = digits_at(x, i, x_length);
    const std::uint64_t b = digits_at(y, i, y_length) + borrow;  // a byte is at most 0x3A
    borrow = a < b;
    store_word(difference + i, to_ascii(a - b));
  }
}

int halve_digits(char* half, const char* x, int length) {
  // digit / 2, plus 5 when the next higher digit is odd: no carry runs further than one digit.
  for (int i = 0; i < length; i += 8) {
    const std::uint64_t digits = digits_at(x, i, length) & LOW_NIBBLES;
    const std::uint64_t above = i + 8 < length ? static_cast<std::uint64_t>(x[i + 8] & 1) : 0;
    const std::uint64_t odd = digits & 0x0101010101010101;
    const std::uint64_t next_odd = (odd >> 8) | (above << 56);
    store_word(half + i, ((digits - odd) >> 1) + next_odd * 5 + ASCII_ZEROS);
  }
  return significant_length(half, length);
}

}  // namespace omrel
