// Construction, copy, assignment and text form of bignum, and its fatal conditions.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "bignum/bignum.h"
#include "bignum/buffers.h"
#include "bignum/digit_text.h"
#include "support/console.h"
#include "support/line_marker.h"
#include "support/text.h"

namespace omrel {
namespace {

// A copy of a remainder text, which is never given up silently: the answer of a later operation
// would be wrong.
char* owned_copy(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t length = std::strlen(text);
  char* copy = static_cast<char*>(std::malloc(length + 1));
  if (copy == nullptr) out_of_memory();
  return copy_text_n(copy, text, length);
}

// Copies a text of one buffer to another, whole words.
void copy_padded(char* buffer, const char* text, int length) {
  std::memcpy(buffer, text, (static_cast<std::size_t>(length) & ~std::size_t{7}) + 8);
}

std::uint64_t byte(char c) { return static_cast<unsigned char>(c); }

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Writes the decimal digits of a magnitude, least significant first; 0 has one digit.
int digits_of(char* digits, unsigned long magnitude) {
  int count = 0;
  do {
    digits[count++] = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  return count;
}

// Bytes of a fixed-point text: a sign, a digit at least, the point, the places and the NUL.
std::size_t fixed_text_size(int digit_count) {
  return static_cast<std::size_t>(std::max(digit_count, FIXED_PLACES + 1)) + 3;
}

}  // namespace

void overflow() {
  std::printf("ERROR Overflow in big number > %i digits\n", MAX_DIGITS);
  fatal_exit("Fatal error in big number constructor", 0);
}

bignum::bignum(const char* text, std::int16_t default_sign)
    : vlstr(acquire_digits()), length(0), negative(0), remainder_text(nullptr) {
  mark_line();
  if (text == nullptr || *text == '\0') {
    store_word(vlstr, 0);
    return;
  }
  negative = default_sign;
  // One digit or two take less time than measuring the text.
  if (is_digit(text[0]) && text[1] == '\0') {
    store_word(vlstr, byte(text[0]));
    length = 1;
  } else if (is_digit(text[0]) && text[2] == '\0' && is_digit(text[1])) {
    store_word(vlstr, byte(text[0]) << 8 | byte(text[1]));
    length = 2;
  } else {
    read(text);
  }
}

// Reads a text of any length and any characters.
void bignum::read(const char* text) {
  if (*text == '+' || *text == '-') negative = *text++ == '-' ? 1 : 0;
  const std::size_t rest = std::strlen(text);
  if (rest >= MAX_DIGITS) refuse();
  length = static_cast<int>(rest);
  plain = reverse_into_buffer(vlstr, text, length);
  if (!plain) read_up_to_point(text);
}

// Overflows, with the buffer in a value that an exception on the way out would release: it does not
// release what a constructor has not finished.
void bignum::refuse() {
  const bignum owner(std::move(*this));
  overflow();
}

void bignum::read_up_to_point(const char* text) {
  const std::size_t point = char_position(text, '.');
  if (point != 0) length = static_cast<int>(point - 1);
  plain = reverse_into_buffer(vlstr, text, length);
}

bignum::bignum(int value) : bignum(static_cast<long>(value)) {}

bignum::bignum(long value) : bignum() {
  const auto bits = static_cast<unsigned long>(value);
  const auto sign = static_cast<std::int16_t>(value < 0);
  finish(digits_of(vlstr, sign != 0 ? 0 - bits : bits), sign);
}

bignum::bignum(const bignum& b)
    : vlstr(acquire_digits()),
      length(b.length),
      negative(b.negative),
      remainder_text(owned_copy(b.remainder_text)),
      plain(b.plain) {
  copy_padded(vlstr, b.vlstr, b.text_length());
}

bignum bignum::operator=(const bignum& b) {
  if (this != &b) {
    const int b_length = b.text_length();
    if (b_length > 0) copy_padded(vlstr, b.vlstr, b_length);
    plain = b.plain && (b_length > 0 || text_length() == 0);
    set_remainder(b.remainder_text);
    negative = b.negative;
    length = b.length;
  }
  return *this;
}

void bignum::operator=(bignum&& b) noexcept {
  std::swap(vlstr, b.vlstr);
  std::swap(length, b.length);
  std::swap(negative, b.negative);
  std::swap(remainder_text, b.remainder_text);
  std::swap(plain, b.plain);
}

int bignum::text_length() const { return plain ? length : static_cast<int>(std::strlen(vlstr)); }

char* bignum::to_string() const {
  const int digit_count = vlstr == nullptr ? 0 : significant_length(vlstr, text_length());
  char* text = static_cast<char*>(std::malloc(static_cast<std::size_t>(digit_count) + 3));
  if (text != nullptr) write_digits(text, digit_count);
  return text;
}

char* bignum::to_fixed_string() const {
  const int digit_count = significant_length(vlstr, text_length());
  char* text = static_cast<char*>(std::malloc(fixed_text_size(digit_count)));
  if (text != nullptr) write_fixed_digits(text, digit_count);
  return text;
}

bool bignum::write_short_fixed(char* text, std::size_t room) const {
  const int digit_count = significant_length(vlstr, text_length());
  if (fixed_text_size(digit_count) > room) return false;
  write_fixed_digits(text, digit_count);
  return true;
}

void bignum::write_fixed_digits(char* text, int digit_count) const {
  constexpr int PLACES = FIXED_PLACES;
  const int whole = std::max(digit_count - PLACES, 0);
  if (negative != 0) *text++ = '-';
  *text = '0';
  reverse_from_buffer(text, vlstr + PLACES, whole);
  text += std::max(whole, 1);
  *text++ = '.';
  const int written = std::min(digit_count, PLACES);
  std::memset(text, '0', static_cast<std::size_t>(PLACES - written));
  reverse_from_buffer(text + PLACES - written, vlstr, written);
  text[PLACES] = '\0';
}

void bignum::write_fixed_text(char* text, const FixedPoint& x, bool is_negative) {
  constexpr std::uint64_t EIGHT = 100'000'000;
  const auto write_eight = [](char* to, std::uint64_t number) {
    store_word(to, reversed(word_of(number)));
  };
  if (is_negative) *text++ = '-';
  text = write_number(text, x.whole);
  // The point and the two places that eights leave over, then the eights.
  const std::uint64_t first_places = word_of(x.places / (EIGHT * EIGHT));
  store_word(text, '.' | (first_places & 0xFF00) | (first_places & 0xFF) << 16);
  write_eight(text + 3, x.places / EIGHT % EIGHT);
  write_eight(text + 11, x.places % EIGHT);
  text[19] = '\0';
}

bool bignum::write_short_text(char* text, int room) const {
  const int digit_count = significant_length(vlstr, text_length());
  if (digit_count + 10 > room) return false;
  if (digit_count > 0 && digit_count < 8) {
    if (negative != 0) *text++ = '-';
    reverse_few_from_buffer(text, vlstr, digit_count);
  } else {
    write_digits(text, digit_count);
  }
  return true;
}

void bignum::write_digits(char* text, int digit_count) const {
  if (negative != 0) *text++ = '-';
  if (digit_count == 0) {
    *text++ = '0';
  } else {
    reverse_from_buffer(text, vlstr, digit_count);
    text += digit_count;
  }
  *text = '\0';
}

void bignum::set_remainder(const char* text) {
  char* copy = owned_copy(text);
  free_and_null(&remainder_text);
  remainder_text = copy;
}

bignum bignum::get_remainder() const {
  if (remainder_text == nullptr || *remainder_text == '\0') return bignum(0);
  return bignum(remainder_text, 0);
}

Digits::Digits(const bignum& b) : text(b.vlstr), length(b.length) {
  if (!b.plain) clean();
}

void Digits::clean() {
  cleaned = acquire_digits();
  store_word(cleaned + length / 8 * 8, 0);
  for (int i = 0; i < length; ++i) {
    const char c = text[i];
    cleaned[i] = is_digit(c) ? c : '0';
  }
  text = cleaned;
}

Digits::~Digits() {
  if (cleaned != nullptr) release_digits(cleaned);
}

}  // namespace omrel
