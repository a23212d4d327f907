#include "bignum/text_form.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "bignum/convert.h"
#include "bignum/digit_text.h"

namespace omrel {
namespace {

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
  for (limb <<= BINARY_LIMB_BITS - count; count > 0; count -= 8, text += 8, limb <<= 8) {
    store_word(text, BIT_CHARACTERS[static_cast<std::size_t>(limb >> 56)]);
  }
}

}  // namespace

FixedText::Digits FixedText::digits_of(const bignum& b) {
  return {b.vlstr, significant_length(b.vlstr, b.text_length())};
}

FixedText::FixedText(const bignum& scaled)
    : is_negative(scaled.negative != 0), whole(digits_of(scaled)), fraction(whole) {
  fraction.count = std::min(whole.count, FIXED_PLACES);
  whole = {whole.lowest + fraction.count, whole.count - fraction.count};
  zero_count = FIXED_PLACES - fraction.count;
}

FixedText::FixedText(const bignum& whole_value, const bignum& fraction_value, int zeros_before)
    : is_negative(whole_value.negative != 0),
      whole(digits_of(whole_value)),
      fraction(digits_of(fraction_value)),
      zero_count(zeros_before + std::max(FIXED_PLACES - fraction.count, 0)) {}

void FixedText::write(char* text) const {
  if (is_negative) *text++ = '-';
  *text = '0';
  reverse_from_buffer(text, whole.lowest, whole.count);
  text += std::max(whole.count, 1);
  *text++ = '.';
  std::memset(text, '0', static_cast<std::size_t>(zero_count));
  text += zero_count;
  reverse_from_buffer(text, fraction.lowest, fraction.count);
  text[fraction.count] = '\0';
}

void FixedWordsText::write(char* text) const {
  if (negative) *text++ = '-';
  text = write_number(text, value.whole);
  // The point and the two places that eights leave over, then the eights.
  const std::uint64_t first_places = word_of(value.places / (LIMB_BASE * LIMB_BASE));
  store_word(text, '.' | (first_places & 0xFF00) | (first_places & 0xFF) << 16);
  store_word(text + 3, reversed(word_of(value.places / LIMB_BASE % LIMB_BASE)));
  store_word(text + 11, reversed(word_of(value.places % LIMB_BASE)));
  text[19] = '\0';
}

BinaryText::BinaryText(const bignum& b, bool prefixed) : is_prefixed(prefixed) {
  load_binary(binary, b);
  bit_count = std::max(omrel::bit_count(binary), 1);
}

void BinaryText::write(char* text) const {
  text[0] = '0';
  text[1] = 'b';
  if (is_prefixed) text += 2;
  *text = '0';
  char* end = text + bit_count;
  // From the top, since whole words are written.
  int count = (bit_count - 1) % BINARY_LIMB_BITS + 1;
  for (int i = binary.count() - 1; i >= 0; --i) {
    write_limb(text, binary.limb()[i], count);
    text += count;
    count = BINARY_LIMB_BITS;
  }
  *end = '\0';
}

}  // namespace omrel
