#include "bignum/digit_text.h"

#include <algorithm>
#include <bit>

#include "bignum/processor.h"

namespace omrel {
namespace {

static_assert(std::endian::native == std::endian::little, "digit texts are read as words");

// The sum of two words of digits and a carry, 0 or 1, which becomes the carry out.
std::uint64_t add_words(std::uint64_t x, std::uint64_t y, std::uint64_t& carry) {
  const std::uint64_t a = x + CARRY_BIAS + carry;  // each byte is at most 0xD0: none overflows
  const std::uint64_t total = a + y;
  carry = total < a ? 1 : 0;
  return to_ascii(total);
}

// Ends a sum: the carry out of its highest digit stands behind it, and is returned.
int end_sum(char* sum, int length, std::uint64_t last_word, std::uint64_t carry) {
  // A text that does not fill its last word carries into the word's next digit.
  const int used = length & 7;
  if (used != 0) return static_cast<int>((last_word >> (8 * used)) & 1);
  sum[length] = static_cast<char>('0' + carry);
  return static_cast<int>(carry);
}

// Copies the digits from position i on, unless they are there already.
void copy_rest(char* to, const char* from, int i, int length) {
  if (to != from) std::memcpy(to + i, from + i, static_cast<std::size_t>(length - i));
}

// Goes on with a sum from position i, where one of its texts has ended.
[[gnu::noinline]] int add_carry(char* sum, const char* x, int i, int length, std::uint64_t carry) {
  std::uint64_t last = 0;
  for (; i < length && carry != 0; i += 8) {
    last = add_words(load_padded(x + i), ASCII_ZEROS, carry);
    store_word(sum + i, last);
  }
  if (i >= length) return end_sum(sum, length, last, carry);
  copy_rest(sum, x, i, length);
  return 0;
}

// Half of eight digits: digit / 2, plus 5 when the next higher digit is odd, so no carry runs
// further than one digit. `above` is 1 when the digit above the eighth is odd, else 0.
std::uint64_t half_of_word(std::uint64_t word, std::uint64_t above) {
  const std::uint64_t digits = word & 0x0F0F0F0F0F0F0F0F;
  const std::uint64_t odd = digits & 0x0101010101010101;
  const std::uint64_t next_odd = (odd >> 8) | (above << 56);
  return ((digits - odd) >> 1) + next_odd * 5 + ASCII_ZEROS;
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

namespace {

#ifdef OMREL_VECTORS

const bool HAS_AVX2 = vector_bits() >= 256;
constexpr int MANY = 64;  // characters, from which on vectors are worth a call

// As reverse_words for MANY characters, which may mark the lowest byte for any foreign one.
__attribute__((target("avx2"))) std::uint64_t reverse_vectors(char* to, const char* from, int n) {
  const __m256i backwards = _mm256_broadcastsi128_si256(
      _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
  __m256i found = _mm256_setzero_si256();
  for (; n >= 32; n -= 32, to += 32) {
    __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + n - 32));
    x = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(x, backwards), 0b01'00'11'10);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), x);
    const __m256i value = _mm256_xor_si256(x, _mm256_set1_epi8('0'));
    found = _mm256_or_si256(found, value);
    found = _mm256_or_si256(found, _mm256_add_epi8(value, _mm256_set1_epi8(0x76)));
  }
  std::uint64_t marks = _mm256_movemask_epi8(found) != 0 ? 0x80 : 0;
  for (; n > 0; n -= 8, to += 8) marks |= reverse_word(to, from + n - 8);
  return marks;
}

#else

constexpr bool HAS_AVX2 = false;
constexpr int MANY = 0;
std::uint64_t reverse_vectors(char*, const char*, int) { return 0; }

#endif

}  // namespace

std::uint64_t reverse_words(char* buffer, const char* text, int n) {
  if (n >= MANY && HAS_AVX2) return reverse_vectors(buffer, text, n);
  std::uint64_t marks = 0;
  const char* end = text + n;
  const char* first_pair = text + n % 16;
  for (; end != first_pair; end -= 16, buffer += 16) {
    marks |= reverse_word(buffer, end - 8);
    marks |= reverse_word(buffer + 8, end - 16);
  }
  if (end != text) marks |= reverse_word(buffer, text);
  return marks;
}

void reverse_words_from_buffer(char* text, const char* buffer, int n) {
  if (n >= MANY && HAS_AVX2) {
    reverse_vectors(text, buffer, n);
    return;
  }
  const char* end = buffer + n;
  const char* first_pair = buffer + n % 16;
  for (; end != first_pair; end -= 16, text += 16) {
    store_word(text, reversed(load_word(end - 8)));
    store_word(text + 8, reversed(load_word(end - 16)));
  }
  if (end != buffer) store_word(text, reversed(load_word(buffer)));
}

int length_without_zeros(const char* text, int length) {
  while (length >= 8 && load_word(text + length - 8) == ASCII_ZEROS) length -= 8;
  while (length > 0 && text[length - 1] == '0') --length;
  return length;
}

int compare_padded(const char* x, const char* y, int length) {
  // From the top; the highest digit of a word is in its highest byte, below NULs.
  for (int i = (length - 1) & ~7; i >= 0; i -= 8) {
    const std::uint64_t a = load_word(x + i);
    const std::uint64_t b = load_word(y + i);
    if (a != b) return a < b ? -1 : 1;
  }
  return 0;
}

int compare_significant(const char* x, int x_length, const char* y, int y_length) {
  if (x_length != y_length) return x_length < y_length ? -1 : 1;
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
  std::uint64_t last = 0;
  int i = 0;
  for (; i + 8 <= y_length; i += 8) {
    last = add_words(load_word(x + i), load_word(y + i), carry);
    store_word(sum + i, last);
  }
  if (i < y_length) {
    last = add_words(load_padded(x + i), load_padded(y + i), carry);
    store_word(sum + i, last);
    i += 8;
  }
  return i < x_length ? add_carry(sum, x, i, x_length, carry) : end_sum(sum, x_length, last, carry);
}

void subtract_digits(char* difference, const char* x, int x_length, const char* y, int y_length) {
  std::uint64_t borrow = 0;
  const auto subtract_word = [&](int i, std::uint64_t x_word, std::uint64_t y_word) {
    const std::uint64_t b = y_word + borrow;  // a byte is at most 0x3A
    borrow = x_word < b ? 1 : 0;
    store_word(difference + i, to_ascii(x_word - b));
  };
  const int both = std::min(x_length, y_length);
  int i = 0;
  for (; i + 8 <= both; i += 8) subtract_word(i, load_word(x + i), load_word(y + i));
  if (i < both) {
    subtract_word(i, load_padded(x + i), load_padded(y + i));
    i += 8;
  }
  for (; i < x_length && borrow != 0; i += 8) {
    subtract_word(i, load_padded(x + i), ASCII_ZEROS);
  }
  if (i < x_length) copy_rest(difference, x, i, x_length);
  if (x_length < y_length) {
    std::memset(difference + x_length, '0', static_cast<std::size_t>(y_length - x_length));
  }
}

int halve_digits(char* half, const char* x, int length) {
  int i = 0;
  for (; i + 8 < length; i += 8) {
    const auto above = static_cast<std::uint64_t>(x[i + 8] & 1);
    store_word(half + i, half_of_word(load_word(x + i), above));
  }
  store_word(half + i, half_of_word(load_padded(x + i), 0));
  return significant_length(half, length);
}

}  // namespace omrel
