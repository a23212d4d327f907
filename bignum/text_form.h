// The texts that values are shown as. Each form is made of a value, which must stay as it is
// meanwhile, says how many bytes writing it may touch, and writes itself into as many.
#pragma once

#include <cstddef>
#include <cstdlib>

#include "bignum/bignum.h"
#include "bignum/digit_text.h"
#include "bignum/magnitude/binary.h"

namespace omrel {

// '-' when the sign flag is set, zero included, then the digits without leading zeros.
class DecimalText {
 public:
  explicit DecimalText(const bignum& b);
  std::size_t room() const { return static_cast<std::size_t>(digit_count) + 10; }
  void write(char* text) const;

 private:
  const bignum& value;
  const int digit_count;
};

// '-' when the sign flag is set, an integer part, '.', and a fraction padded to FIXED_PLACES
// digits.
class FixedText {
 public:
  // The value over 10^FIXED_PLACES.
  explicit FixedText(const bignum& scaled);
  // An integer part, whose sign it is, and a fraction behind so many zeros.
  FixedText(const bignum& whole, const bignum& fraction, int zeros_before = 0);
  std::size_t room() const {
    return static_cast<std::size_t>(whole.count + zero_count + fraction.count) + 4;
  }
  void write(char* text) const;

 private:
  struct Digits {
    const char* lowest;
    int count;  // without leading zeros
  };
  static Digits digits_of(const bignum& b);

  const bool is_negative;
  Digits whole;
  Digits fraction;
  int zero_count;
};

// The same for a fraction of FIXED_PLACES digits and an integer part that are machine words.
class FixedWordsText {
 public:
  FixedWordsText(const FixedWords& x, bool is_negative) : value(x), negative(is_negative) {}
  std::size_t room() const { return 48; }  // 20 digits, the point and the places, in whole words
  void write(char* text) const;

 private:
  const FixedWords value;
  const bool negative;
};

// "0b" or nothing, then the binary digits of a value that has a binary form: "0" for zero.
class BinaryText {
 public:
  BinaryText(const bignum& b, bool prefixed);
  std::size_t room() const { return static_cast<std::size_t>(bit_count) + 18; }
  void write(char* text) const;

 private:
  const bool is_prefixed;
  Binary binary;
  int bit_count;
};

// Here, since most answers are written so.
inline DecimalText::DecimalText(const bignum& b)
    : value(b),
      digit_count(b.vlstr == nullptr ? 0 : significant_length(b.vlstr, b.text_length())) {}

inline void DecimalText::write(char* text) const {
  if (value.negative != 0) *text++ = '-';
  if (digit_count == 0) {
    *text++ = '0';
  } else if (digit_count < 8) {  // in one store with the NUL
    reverse_few_from_buffer(text, value.vlstr, digit_count);
    return;
  } else {
    reverse_from_buffer(text, value.vlstr, digit_count);
    text += digit_count;
  }
  *text = '\0';
}

// The form as a new heap text; null when there is no memory.
template <class Form>
[[gnu::noinline]] char* heap_text(const Form& form) {
  char* text = static_cast<char*>(std::malloc(form.room()));
  if (text != nullptr) form.write(text);
  return text;
}

}  // namespace omrel
