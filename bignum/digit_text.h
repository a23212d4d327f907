// Kernels on digit texts: ASCII digits, least significant first, eight to a machine word.
//
// A 64-bit word loaded from a digit text holds its lowest digit in the lowest byte (the machine is
// little-endian), so carries between digits run upwards by themselves. With a bias of 6 in every
// byte, ten becomes a full byte: 0x36 + 0x36 -> adding 7 and 8 as the bytes '7' + '8' + 0x96 =
// 0x105 leaves 5 and carries 1 into the next digit.
//
// Lengths count digits. Texts passed here hold digits only. Kernels may read and write up to
// eight bytes past the end of a text that lies in a digit buffer, which has the room. The text of
// a value is padded: from its end to the end of that word of the buffer there are NULs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace omrel {

// Capacity of every digit text in characters. A value holds one less: a text of MAX_DIGITS
// characters is refused.
#ifndef OMREL_MAX_DIGITS  // which a build may set, to see what rests on it
#define OMREL_MAX_DIGITS 6500
#endif
constexpr int MAX_DIGITS = OMREL_MAX_DIGITS;

constexpr std::uint64_t ASCII_ZEROS = 0x3030303030303030;
constexpr std::uint64_t ASCII_NINES = 0x3939393939393939;

inline std::uint64_t load_word(const char* text) {
  std::uint64_t word;
  std::memcpy(&word, text, sizeof word);
  return word;
}

inline void store_word(char* text, std::uint64_t word) { std::memcpy(text, &word, sizeof word); }

inline std::uint64_t reversed(std::uint64_t word) { return __builtin_bswap64(word); }

// The word at the end of a text, `count` digits of which are left (0 <= count < 8); zero bytes
// beyond.
inline std::uint64_t load_few(const char* text, int count) {
  return load_word(text) & ((std::uint64_t{1} << (8 * count)) - 1);
}

// Eight digits of a padded text, '0' behind its end.
inline std::uint64_t load_padded(const char* text) { return load_word(text) | ASCII_ZEROS; }

// A word whose bytes have their high bits set where the given word's are foreign or follow (in
// memory) a foreign one; so for digits alone, and only then, none is set.
inline std::uint64_t foreign_marks(std::uint64_t word) {
  const std::uint64_t value = word ^ ASCII_ZEROS;  // 0..9 in each byte of a digit
  return value | (value + 0x7676767676767676);
}

inline bool are_digits(std::uint64_t marks) { return (marks & 0x8080808080808080) == 0; }

// The number that eight digits or NULs stand for: digits, then pairs, then fours. A product by 10^k
// + 2^f holds x + 10^k y in the field of y, for neighbours x and y in fields of f bits.
inline std::uint64_t number_of(std::uint64_t word) {
  word &= 0x0F0F0F0F0F0F0F0F;
  word = (word * ((1 << 8) + 10) >> 8) & 0x00FF00FF00FF00FF;
  word = (word * ((1 << 16) + 100) >> 16) & 0x0000FFFF0000FFFF;
  return word * ((std::uint64_t{1} << 32) + 10000) >> 32;
}

// A number below 10^8 as eight digits: fours, then pairs, then digits. A field x becomes its
// quotient by 10^k in the field above and its remainder: x + (x / 10^k) * (2^f - 10^k). The
// quotients are multiplications by reciprocals, exact for fields below 10^8, 10^4 and 10^2.
inline std::uint64_t word_of(std::uint64_t number) {
  std::uint64_t word = number + ((number * 109951163) >> 40) * ((std::uint64_t{1} << 32) - 10000);
  word += (((word * 10486) >> 20) & 0x0000007F0000007F) * ((1 << 16) - 100);
  word += (((word * 103) >> 10) & 0x000F000F000F000F) * ((1 << 8) - 10);
  return word | ASCII_ZEROS;
}

// Writes a number as text, in whole words and so up to 24 bytes, and returns the end.
char* write_number(char* text, std::uint64_t number);

// As word_of for a number below 100, in a third of the steps.
inline std::uint64_t word_of_pair(std::uint64_t number) {
  return (number + ((number * 103) >> 10) * ((1 << 8) - 10)) | ASCII_ZEROS;
}

// Copies eight characters in reverse order and returns what foreign_marks makes of them.
inline std::uint64_t reverse_word(char* buffer, const char* text) {
  const std::uint64_t word = reversed(load_word(text));
  store_word(buffer, word);
  return foreign_marks(word);
}

// The same for n characters, a multiple of eight.
[[gnu::noinline]] std::uint64_t reverse_words(char* buffer, const char* text, int n);

// Copies n characters in reverse order and pads them. The source is read within its n characters;
// the destination may be written up to eight bytes further. Returns whether all are digits.
//
// The last word and the NULs are one store, so that reading the word again does not wait for two.
inline bool reverse_into_buffer(char* buffer, const char* text, int n) {
  const int rest = n & 7;
  if (n < 8) {
    std::uint64_t word = 0;
    for (int i = 0; i < n; ++i) word = (word << 8) | static_cast<unsigned char>(text[i]);
    store_word(buffer, word);
    return are_digits(foreign_marks(word | (ASCII_ZEROS << (8 * n))));
  }
  // First the highest word, without those of its characters that come with the others; by two
  // shifts, since one by 64 bits is not defined.
  const std::uint64_t top = reversed(load_word(text));
  store_word(buffer + n - rest, top >> (4 * (8 - rest)) >> (4 * (8 - rest)));
  const std::uint64_t marks =
      n < 16 ? reverse_word(buffer, text + rest) : reverse_words(buffer, text + rest, n - rest);
  return are_digits(foreign_marks(top) | marks);
}

// Copies fewer than eight characters of a digit buffer in reverse order and ends them with a NUL;
// the text has room for eight.
inline void reverse_few_from_buffer(char* text, const char* buffer, int n) {
  // Twice, since a shift by 64 bits is not defined.
  store_word(text, reversed(load_word(buffer)) >> (4 * (8 - n)) >> (4 * (8 - n)));
}

// The same for n characters, a multiple of eight, without the NUL.
[[gnu::noinline]] void reverse_words_from_buffer(char* text, const char* buffer, int n);

// Copies n characters of a digit buffer in reverse order; writes exactly n.
inline void reverse_from_buffer(char* text, const char* buffer, int n) {
  if (n < 8) {
    while (n > 0) *text++ = buffer[--n];
    return;
  }
  // Words are read where they were stored, so that no load waits for two stores. What is written
  // behind the highest digits is overwritten.
  const int rest = n & 7;
  n -= rest;
  reverse_few_from_buffer(text, buffer + n, rest);
  if (n == 8) {
    store_word(text + rest, reversed(load_word(buffer)));
  } else {
    reverse_words_from_buffer(text + rest, buffer, n);
  }
}

// The length without leading zeros of a text that has some, 0 for a text of zeros.
int length_without_zeros(const char* text, int length);

// The length without leading zeros, 0 for a text of zeros.
inline int significant_length(const char* text, int length) {
  return length == 0 || text[length - 1] != '0' ? length : length_without_zeros(text, length);
}

// Compare two padded texts of one length, and two texts that are not empty and have no leading
// zeros: -1, 0 or 1.
int compare_padded(const char* x, const char* y, int length);
int compare_significant(const char* x, int x_length, const char* y, int y_length);

// Turns a biased sum or a difference into ASCII: a byte with its high bit set did not carry (or
// did borrow) and is six too high in its low nibble.
inline std::uint64_t to_ascii(std::uint64_t word) {
  const std::uint64_t high = word & 0x8080808080808080;
  const std::uint64_t sixes = (high >> 5) | (high >> 6);
  return ((word & 0x0F0F0F0F0F0F0F0F) - sixes) | ASCII_ZEROS;
}

// What makes a byte of two digits carry at ten: 0x100 - 10 - 2 * '0'.
constexpr std::uint64_t CARRY_BIAS = 0x9696969696969696;

// As add_digits for any length.
int add_long_digits(char* sum, const char* x, int x_length, const char* y, int y_length);

// Writes x + y, x_length >= y_length digits of padded texts, and a final carry behind them; returns
// that carry. The destination may be x or y.
inline int add_digits(char* sum, const char* x, int x_length, const char* y, int y_length) {
  if (x_length >= 8) return add_long_digits(sum, x, x_length, y, y_length);
  const std::uint64_t total = to_ascii(load_padded(x) + CARRY_BIAS + load_padded(y));
  store_word(sum, total);
  return static_cast<int>((total >> (8 * x_length)) & 1);
}

// Writes x - y for x >= y, padded texts, as many digits as the longer has. The destination may be
// x.
void subtract_digits(char* difference, const char* x, int x_length, const char* y, int y_length);

// Writes half of a padded text, truncated, and returns the significant length.
int halve_digits(char* half, const char* x, int length);

}  // namespace omrel
