#include "bignum/digit_text.h"

#include <algorithm>
#include <bit>

namespace omrel {
namespace {

static_assert(std::endian::native == std::endian::little, "digit texts are read as words");

std::uint64_t reversed(std::uint64_t word) { return __builtin_bswap64(word); }

// The lowest eight digits of what is left of a text, '0' where fewer are.
std::uint64_t load_tail_or_word(const char* text, int count) {
  return count >= 8 ? load_word(text) : load_tail(text, count);
}

// The eight digits of the text at position i, '0' from its length on.
std::uint64_t digits_at(const char* text, int i, int length) {
  return i < length ? load_tail_or_word(text + i, length - i) : ASCII_ZEROS;
}

}  // namespace

char* write_number(char* text, std::uint64_t number) {
  constexpr std::uint64_t EIGHT = 100'000'000;
  std::uint64_t words[3];
  int last = 0;
  for (; number >= EIGHT; number /= EIGHT) words[last++] = word_of(number % EIGHT);
  words[last] = word_of(number);
  const int zeros = std::min(std::countl_zero(words[last] ^ ASCII_ZEROS) / 8, 7);
  store_word(text, reversed(words[last]) >> (8 * zeros));
  for (text += 8 - zeros; last > 0; text += 8) store_word(text, reversed(words[--last]));
  return text;
}

bool reverse_long_text(char* buffer, const char* text, int n) {
  std::uint64_t marks = 0;
  int i = 0;
#pragma GCC unroll 2
  for (; i + 8 <= n; i += 8) {
    const std::uint64_t word = reversed(load_word(text + n - i - 8));
    marks |= foreign_marks(word);
    store_word(buffer + i, word);
  }
  // The rest, without those of its word that are there already.
  const std::uint64_t word = reversed(load_word(text));
  marks |= foreign_marks(word);
  store_word(buffer + i, i == n ? 0 : word >> (8 * (8 - (n - i))));
  return are_digits(marks);
}

void reverse_from_buffer(char* text, const char* buffer, int n) {
  if (n < 8) {
    while (n > 0) *text++ = buffer[--n];
    return;
  }
  // Words are read where they were stored, so that no load waits for two stores. What is written
  // behind the highest digits is overwritten.
  const int rest = n % 8;
  n -= rest;
  reverse_few_from_buffer(text, buffer + n, rest);
#pragma GCC unroll 2
  for (text += rest; n > 0; text += 8) {
    n -= 8;
    store_word(text, reversed(load_word(buffer + n)));
  }
}

int length_without_zeros(const char* text, int length) {
  while (length >= 8 && load_word(text + length - 8) == ASCII_ZEROS) length -= 8;
  const int first = length >= 8 ? length - 8 : 0;
  const std::uint64_t top = load_tail_or_word(text + first, length - first) ^ ASCII_ZEROS;
  return top == 0 ? 0 : first + 8 - std::countl_zero(top) / 8;
}

int compare_significant(const char* x, int x_length, const char* y, int y_length) {
  if (x_length != y_length) return x_length < y_length ? -1 : 1;
  if (x_length == 0) return 0;
  // From the top; the highest digit of a word is in its highest byte, behind what the shift drops.
  int i = (x_length - 1) & ~7;
  std::uint64_t a = load_word(x + i) << (8 * (i + 8 - x_length));
  std::uint64_t b = load_word(y + i) << (8 * (i + 8 - x_length));
  while (a == b && i > 0) {
    i -= 8;
    a = load_word(x + i);
    b = load_word(y + i);
  }
  return a == b ? 0 : a < b ? -1 : 1;
}

int add_long_digits(char* sum, const char* x, int x_length, const char* y, int y_length) {
  std::uint64_t carry = 0;
  std::uint64_t ascii = 0;
  // 0 <= carry <= 1; each byte of x + bias is at most 0xCF, so adding the carry overflows none.
  const auto add_word = [&](int i, std::uint64_t x_word, std::uint64_t y_word) {
    const std::uint64_t a = x_word + CARRY_BIAS + carry;
    const std::uint64_t total = a + y_word;
    carry = total < a ? 1 : 0;
    ascii = to_ascii(total);
    store_word(sum + i, ascii);
  };
  int i = 0;
  for (; i + 8 <= y_length; i += 8) add_word(i, load_word(x + i), load_word(y + i));
  for (; i < x_length; i += 8) add_word(i, digits_at(x, i, x_length), digits_at(y, i, y_length));
  // A text that does not fill its last word carries into the word's next digit.
  const int used = x_length % 8;
  if (used != 0) return static_cast<int>((ascii >> (8 * used)) & 1);
  sum[x_length] = static_cast<char>('0' + carry);
  return static_cast<int>(carry);
}

void subtract_digits(char* difference, const char* x, int x_length, const char* y, int y_length) {
  std::uint64_t borrow = 0;
  const auto subtract_word = [&](int i, std::uint64_t x_word, std::uint64_t y_word) {
    const std::uint64_t b = y_word + borrow;  // a byte is at most 0x3A
    borrow = x_word < b ? 1 : 0;
    store_word(difference + i, to_ascii(x_word - b));
  };
  int i = 0;
  for (const int both = x_length < y_length ? x_length : y_length; i + 8 <= both; i += 8) {
    subtract_word(i, load_word(x + i), load_word(y + i));
  }
  for (; i < x_length; i += 8) {
    subtract_word(i, digits_at(x, i, x_length), digits_at(y, i, y_length));
  }
}

int halve_long_digits(char* half, const char* x, int length) {
  int i = 0;
  for (; i + 8 < length; i += 8) {
    const auto above = static_cast<std::uint64_t>(x[i + 8] & 1);
    store_word(half + i, half_of_word(load_word(x + i), above));
  }
  store_word(half + i, half_of_word(digits_at(x, i, length), 0));
  return significant_length(half, length);
}

}  // namespace omrel
