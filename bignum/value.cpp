// Construction, copy and assignment of bignum, and its fatal conditions.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "bignum/bignum.h"
#include "bignum/buffers.h"
#include "bignum/convert.h"
#include "bignum/digit_text.h"
#include "bignum/text_form.h"
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
  if (rest >= MAX_DIGITS) {
    release_digits(vlstr);  // what a constructor has not finished nobody releases
    overflow();
  }
  length = static_cast<int>(rest);
  plain = reverse_into_buffer(vlstr, text, length);
  if (!plain) read_up_to_point(text);
}

void bignum::read_up_to_point(const char* text) {
  const std::size_t point = char_position(text, '.');
  if (point != 0) length = static_cast<int>(point - 1);
  plain = reverse_into_buffer(vlstr, text, length);
}

bignum::bignum(int value) : bignum(static_cast<long>(value)) {}

bignum::bignum(long value) : bignum() {
  const auto bits = static_cast<unsigned long>(value);
  set(*this, value < 0 ? 0 - bits : bits);
  negative = static_cast<std::int16_t>(value < 0);
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

char* bignum::to_string() const { return heap_text(DecimalText(*this)); }

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
  for (int i = 0; i < length; ++i) cleaned[i] = is_digit(text[i]) ? text[i] : '0';
  text = cleaned;
}

Digits::~Digits() { release_digits(cleaned); }

}  // namespace omrel
